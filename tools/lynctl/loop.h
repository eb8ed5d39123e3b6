// SPDX-License-Identifier: Apache-2.0
//
// The GLib main loop of a command, ended by a call, by time, or by a signal.
#pragma once

#include <glib.h>

#include <functional>

namespace lynctl {

enum class LoopEnd { quit, time, interrupted, terminated };

/// A timer of the default main context that ends with this object.
class Timer {
public:
    /// Calls `tick` every `milliseconds` as long as it returns true.
    Timer(unsigned milliseconds, std::function<bool()> tick);
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer();

private:
    std::function<bool()> m_tick;
    unsigned m_source = 0;
};

/// Ctrl-C and SIGTERM end Run() once an object of this class lives; a second one ends the process, as if
/// this class was not there.
class Loop {
public:
    Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    ~Loop();

    /// Runs until Quit(), a signal, or `milliseconds` (0: no limit). Returns at once when one of the first
    /// two came before.
    LoopEnd Run(unsigned milliseconds);
    /// Ends Run(); may be called from any callback, and before Run().
    void Quit() { End(LoopEnd::quit); }
    /// Seconds since this object was made.
    double Seconds() const;

private:
    void End(LoopEnd reason);
    static gboolean OnInterrupt(gpointer self);
    static gboolean OnTerminate(gpointer self);

    GMainLoop* m_loop;
    gint64 m_begin;
    unsigned m_interrupt;
    unsigned m_terminate;
    bool m_ended = false;
    LoopEnd m_reason = LoopEnd::quit;
};

}  // namespace lynctl
