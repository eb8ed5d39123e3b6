// SPDX-License-Identifier: Apache-2.0
//
// Plays schedules in a process of its own, which may die or stand still.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "schedules/Script.h"

namespace lyn::schedules {

/// What a process is to play.
struct Task {
    std::uint64_t firstSeed = 1;
    std::uint64_t count = 1;
    const Script* script = nullptr;  ///< instead of seeds
    int workers = -1;                ///< threads beside the main loop, or -1: as the seed says
    bool endsProcess = false;        ///< the schedule ends the process
    bool isTraced = false;
    bool isQuiet = false;  ///< a sanitizer's words are not wanted
};

/// As many as one process plays, for a process takes longer to begin and end than a schedule.
inline constexpr std::uint64_t kSeedsPerProcess = 1000;

struct Ending {
    bool isGood = true;
    std::string kind;  ///< of the broken promise, or "crash", "stands still"
    std::string text;
    std::uint64_t seed = 0;
    std::string script;
};

/// Plays and waits for the end. @param onTick called several times a second
Ending PlayInProcess(const Task& task, const std::function<void()>& onTick);

}  // namespace lyn::schedules
