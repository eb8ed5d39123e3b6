// SPDX-License-Identifier: Apache-2.0
//
// A schedule as text, which is what a failure prints and what is kept:
//
//   room 0 3 1 5           how the phones behave (Room.h)
//   workers 2              threads beside the main loop
//   stops locks logs       also stops before each lock that the library takes, and at each of its log lines
//   story kov              which service is tried afterwards, by one thread
//   A create nodlink       the thread A, between its calls or in a callback, begins a call
//   A 3                    three times: A goes on to its next stop
//   M                      the main loop goes on; when it is idle, its next turn begins
//   B request 2            asks phone 2
//   B stop old             with the handle of the service before the last; "null": with none
//   M iterate              in a callback: a turn of the main loop inside of it
//   TV bluetooth-off       something happens on the TV
//
// A move that does not fit when its turn comes (its thread waits or has ended, a call inside of a call) is left
// out, so that any part of a script is a script. At the end of the script all threads go on to their ends.
#pragma once

#include <string>
#include <vector>

#include "schedules/Move.h"

namespace lyn::schedules {

inline constexpr int kMostWorkers = 3;

struct Script {
    std::vector<int> room;
    int workers = 2;
    int story = 0;
    bool stopsAtLocks = false;
    bool stopsAtLogs = false;
    std::vector<Move> moves;
};

/// Everything but the moves.
std::string HeaderOf(const Script& script);
std::string ToText(const Script& script);
/// @throw std::runtime_error that names the line
Script ParseScript(const std::string& text);

}  // namespace lyn::schedules
