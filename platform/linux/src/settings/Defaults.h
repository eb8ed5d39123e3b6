// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "settings/SettingsStore.h"

namespace lyn::linux_platform {

/// What a key holds before anybody has set it; none for most.
std::optional<Setting> DefaultOf(const std::string& key);

/// The key under which a feature value of the product is kept.
std::string SystemInfoKey(const std::string& feature);

}  // namespace lyn::linux_platform
