// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <variant>

namespace lyn::simulator {

using SettingValue = std::variant<int, std::string>;

/// The settings store and the feature values of a TV fresh from the box.
std::map<std::string, SettingValue> DefaultSettings();
std::map<std::string, int> DefaultSystemInfo();

}  // namespace lyn::simulator
