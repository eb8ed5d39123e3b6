// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Settings.h"
#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

class Simulator;

/// Something that happens to the TV by itself, some time after the scenario began.
struct TimelineEvent {
    int atMs = 0;
    std::function<void(Simulator&)> happen;  ///< called with the simulator's lock
};

/// A TV as a scenario describes it; as it stands here it is the TV that every scenario begins with.
struct TvScript {
    bool bluetoothOn = true;
    std::optional<std::string> bluetoothAddress = "02:00:00:00:00:01";
    std::map<std::string, SettingValue> settings = DefaultSettings();
    std::map<std::string, int> systemInfo = DefaultSystemInfo();
    std::optional<AccessPoint> accessPoint = AccessPoint{"02:00:00:00:00:FE", 2437};
    std::optional<std::string> wifiDirectAddress = "02:00:00:00:00:02";
    int powerState = 1;
    std::map<std::string, std::string> files;
    std::vector<TimelineEvent> timeline;
};

struct Scenario {
    TvScript tv;
    std::vector<Phone> phones;
};

/// Reads a scenario. Throws ScenarioError, which names the place.
Scenario ParseScenario(const std::string& json, const std::string& nameForErrors);
/// Reads a scenario file. Throws ScenarioError, also for a file that cannot be read.
Scenario ReadScenarioFile(const std::string& path);

/// The built-in scenario's text; its definition is made from default_scenario.json by the build.
extern const char* const kDefaultScenarioText;

}  // namespace lyn::simulator
