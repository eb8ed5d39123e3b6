// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace lyn::linux_platform {

/// The access point that the machine is connected to.
struct AccessPoint {
    std::string bssid;  ///< six lower-case pairs
    int frequency;      ///< MHz

    bool operator==(const AccessPoint&) const = default;
};

/// Asks wpa_supplicant on the bus, waiting for at most kCallLimitMs in all; none when no interface is connected.
std::optional<AccessPoint> FindConnectedAccessPoint();

}  // namespace lyn::linux_platform
