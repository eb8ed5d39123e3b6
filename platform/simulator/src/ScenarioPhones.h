// SPDX-License-Identifier: Apache-2.0
//
// The phones of a scenario, for those who need no TV.
#pragma once

#include <string>
#include <vector>

#include "JsonField.h"
#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

/// Fails unless these are a scenario's members; their values are not looked at.
void CheckScenarioMembers(const JsonField& root);

std::vector<Phone> ParsePhones(const JsonField& root);

/// The whole file. Throws ScenarioError when it cannot be read.
std::string ScenarioText(const std::string& path);

/// The phones of a scenario file. Throws ScenarioError, which names the place.
std::vector<Phone> ReadPhones(const std::string& path);

}  // namespace lyn::simulator
