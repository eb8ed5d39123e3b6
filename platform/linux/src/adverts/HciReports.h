// SPDX-License-Identifier: Apache-2.0
//
// Advertising reports of a Bluetooth controller, as a raw HCI socket gives them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "adverts/Advert.h"

namespace lyn::linux_platform {

// The first bytes of a packet that carries reports: its type, the event's code, its length, what the event is.
inline constexpr std::uint8_t kHciEventPacket = 0x04;
inline constexpr std::uint8_t kLeMetaEvent = 0x3E;
inline constexpr std::uint8_t kAdvertisingReport = 0x02;
inline constexpr std::uint8_t kExtendedAdvertisingReport = 0x0D;

enum class PacketKind {
    plain,         ///< an advertising packet that nobody answers
    scannable,     ///< an advertising packet; a scan response may follow
    scanResponse,  ///< the answer to a scan request
};

enum class DataStatus {
    complete,    ///< all of the data, or the end of it
    unfinished,  ///< more follows in another report
    truncated,   ///< the end of what the controller has; there was more on the air
};

/// One report. The data are those of the packet that was parsed.
struct AdvertReport {
    DeviceAddress device;
    std::uint8_t set = 0;  ///< which of its advertising sets; 0xFF when it has none
    PacketKind kind = PacketKind::plain;
    DataStatus status = DataStatus::complete;
    int rssi = 0;  ///< dBm; 127 when the controller does not know it
    std::span<const std::uint8_t> data;
};

/// The reports of one packet of a raw HCI socket, in their order. A report that claims more bytes than the packet
/// has ends the list, as nothing behind it can be told from it. Left out are reports of unknown kind, and those
/// of devices that do not say who they are. Another packet has no reports.
std::vector<AdvertReport> ParseReports(std::span<const std::uint8_t> packet);

}  // namespace lyn::linux_platform
