// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "lyn_platform/wifi.h"
#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

/// Wi-Fi and Wi-Fi Direct. The caller holds the simulator's lock.
class Wifi {
public:
    /// Closes whatever is open.
    void Reset();

    /// A handle of the connected access point, good until Wi-Fi is closed or the access point changes.
    wifi_ap_h Handle() const;
    bool IsHandle(wifi_ap_h handle) const;
    void SetAccessPoint(const std::optional<AccessPoint>& ap);

    std::optional<AccessPoint> accessPoint;
    std::optional<std::string> directAddress;
    int inits = 0;
    int directInits = 0;

private:
    std::uintptr_t m_handle = 16;
};

}  // namespace lyn::simulator
