// SPDX-License-Identifier: Apache-2.0
//
// The stories of the sweep. Each is told once as it should go, and then again and again with one thing going
// wrong.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "faults/Application.h"

namespace lyn::test {

/// What may be left on the TV when a story has ended.
enum Left : unsigned {
    kNothing = 0,
    kScan = 1U << 0U,
    kBoost = 1U << 1U,
    kLink = 1U << 2U,
    kClient = 1U << 3U,
    kRegistration = 1U << 4U,
    kBluetooth = 1U << 5U,
    kWifi = 1U << 6U,
    kWifiDirect = 1U << 7U
};

using SetUp = std::function<void()>;
using Story = std::function<void(Application&)>;

struct Scenario {
    std::string service;
    std::string name;
    SetUp setUp;  ///< of a TV just reset
    Story story;
    unsigned leaves = kNothing;
    std::string result = {};  ///< what the step "result" says when nothing fails; "" where there is none
    std::string alike = {};   ///< scenarios that differ in nothing but a text have the same
};

/// Every scenario, service by service.
std::vector<Scenario> AllScenarios();

/// The scenario that must work after each run: created, scanned, found, asked, agreed, destroyed.
Scenario PlainScenario(const std::string& service);

}  // namespace lyn::test
