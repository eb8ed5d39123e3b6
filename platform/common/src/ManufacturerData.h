// SPDX-License-Identifier: Apache-2.0
//
// Manufacturer-specific data in an advertising packet or a scan response. Anybody nearby chooses these bytes:
// nothing in them is trusted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

// Visible, whoever includes it first: a platform exports what these headers declare.
#pragma GCC visibility push(default)
#include "lyn_platform/bluetooth.h"
#pragma GCC visibility pop

namespace lyn::platform {

inline constexpr std::uint8_t kManufacturerDataType = 0xFF;
/// Company of every phone that a TV looks for.
inline constexpr std::uint16_t kPhoneCompany = 117;

struct ManufacturerDataView {
    std::uint16_t company;
    std::span<const std::uint8_t> data;  ///< behind the company identifier
};

/// The first manufacturer-specific data of a packet. None when there is none, when it is too short for
/// a company identifier, or when a structure on the way to it claims more bytes than the packet has.
std::optional<ManufacturerDataView> FindManufacturerData(std::span<const std::uint8_t> packet);

/// The bytes of one packet of a scan result; empty when it is missing.
std::span<const std::uint8_t> PacketOf(const bt_adapter_le_device_scan_result_info_s& info,
                                       bt_adapter_le_packet_type_e type);

/// A malloc'ed copy with one NUL behind the last byte; null when there is no memory for it.
char* CopyWithNul(std::span<const std::uint8_t> bytes);

}  // namespace lyn::platform
