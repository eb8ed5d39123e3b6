// SPDX-License-Identifier: Apache-2.0
//
// One move of a schedule: a thread goes on from where it has stopped to its next stop, or something happens on the
// TV. Script.h shows moves as text.
#pragma once

#include <string>
#include <vector>

namespace lyn::schedules {

enum class What {
    goOn,
    // Calls.
    create,
    destroy,
    scan,
    scanJson,
    stop,
    request,
    requestExtra,
    advertise,
    unadvertise,
    version,
    type,
    text,
    // What else a thread of the main loop may do.
    iterate,
    exit,
    // The TV.
    bluetoothOff,
    bluetoothOn,
    suspend,
    ambient,
    elapse,
    loseLink,
    channel,
    fail
};
inline constexpr int kCalls = 12;  ///< from create to text

/// Which handle a call is given.
enum class Handle { current, old, null };

struct Move {
    char who = 'M';  ///< 'M' the main loop, 'A' 'B' 'C' the workers, 'T' the TV
    What what = What::goOn;
    int number = 0;  ///< the verb's argument: which service, phone, interval ...
    Handle handle = Handle::current;

    bool operator==(const Move&) const = default;
};

bool IsCall(What what);
bool IsTvMove(What what);
/// Start scan, stop scan and request: those that the library lets in one after the other.
bool IsWork(What what);
/// The C function behind a call.
const char* FunctionOf(What what);

/// "A request 2", "TV fail bt_gatt_connect"; "A" for going on.
std::string ToText(const Move& move);
/// @param words the move without who it is for @throw std::runtime_error
Move ParseMove(char who, const std::vector<std::string>& words);

/// The platform functions that "TV fail" makes fail.
const std::vector<std::string>& FallibleFunctions();
const std::vector<std::string>& ServiceNames();
/// @throw std::runtime_error
int ServiceNumber(const std::string& name);

}  // namespace lyn::schedules
