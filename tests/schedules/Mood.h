// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <vector>

#include "schedules/Move.h"

namespace lyn::schedules {

struct Weight {
    What what;
    int weight;
};

/// What is likely in a schedule.
struct Mood {
    std::array<Weight, kCalls> calls;  ///< while there is a service
    std::vector<int> services;         ///< that are created, each as often as it is named
    std::vector<What> events;          ///< of the TV, in the same way
    int leastEvents;
    int mostEvents;
};

/// A little of everything.
const Mood& Everything();
/// One "nodlink" after the other, asked again and again, while Bluetooth and power come and go: exchanges that are
/// left in the middle, and others that follow.
const Mood& Unrest();

}  // namespace lyn::schedules
