// SPDX-License-Identifier: Apache-2.0
//
// Time in the tests' hands: linked into a test, these definitions take the place of g_timeout_add_seconds
// and usleep for the whole process, so that ten seconds pass when the test says so.
#pragma once

#include <glib.h>

#include <functional>
#include <vector>

namespace lyn::test {

/// Seconds of every time-out armed and not yet fired or removed, in the order of arming.
std::vector<unsigned> ArmedTimeouts();
/// Lets the oldest armed time-out elapse; it is delivered when the main loop runs next. False without one.
bool ElapseTimeout();
/// What the time-out armed last calls, to be called with other data.
struct SourceCallback {
    GSourceFunc function = nullptr;
    gpointer data = nullptr;
};
SourceCallback LastTimeout();
/// Microseconds of every sleep since the last ForgetSleeps(). No time is spent in them.
std::vector<unsigned> Sleeps();
void ForgetSleeps();
/// Lets a signal end this many sleeps that begin from now on.
void InterruptSleeps(int count);
/// Runs inside every sleep that begins from now on; empty for nothing.
void OnSleep(std::function<void()> work);

}  // namespace lyn::test
