// SPDX-License-Identifier: Apache-2.0
//
// The stories whose places are found. Each begins with a TV just reset and an application without a service.
// Together they do everything that a service does, once. A step with the same name is the same step.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "holding/Guest.h"
#include "lyn_simulator/simulator.h"

namespace lyn::test {

/// What one thread does: the application's, which calls one function, or the main loop's, which delivers
/// something to its end.
struct Step {
    std::string name;
    bool isOnLoop = false;
    std::function<std::string(Guest&)> work;  ///< returns what the function returned; "" for the main loop
};

struct Scene {
    std::function<void(Guest&)> setUp;
    std::vector<Step> steps;
};

/// The scenes of one service.
std::vector<Scene> ScenesOf(const std::string& service);

/// The phone of a service at this address; it agrees, and advertises once in each scan.
simulator::Phone AgreeingPhone(const std::string& service, const std::string& address);

}  // namespace lyn::test
