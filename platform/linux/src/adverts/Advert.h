// SPDX-License-Identifier: Apache-2.0
//
// What was heard on the air.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ManufacturerData.h"

namespace lyn::linux_platform {

using Bytes = std::vector<std::uint8_t>;
/// A time of the monotonic clock. It is handed in, so that a test need not wait.
using Moment = std::chrono::milliseconds;

/// Who advertises: the address, least significant byte first as on the air, and its type.
struct DeviceAddress {
    std::uint8_t type = 0;
    std::array<std::uint8_t, 6> bytes{};

    bool operator==(const DeviceAddress&) const = default;
};

/// Six upper-case pairs.
std::string TextOf(const DeviceAddress& address);

/// One scan result: an advertising packet, and the scan response to it when one was received.
struct Advert {
    std::string address;
    int rssi = 0;
    Bytes advertising;
    std::optional<Bytes> response;
};

using AdvertHandler = std::function<void(const Advert& advert)>;

/// Whether a phone that a TV looks for may have sent this advertising packet. A scan response says nothing about
/// that: its company is not looked at.
inline bool MayBeAPhone(std::span<const std::uint8_t> advertising)
{
    const auto found = platform::FindManufacturerData(advertising);
    return found && found->company == platform::kPhoneCompany;
}

}  // namespace lyn::linux_platform
