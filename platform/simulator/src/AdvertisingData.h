// SPDX-License-Identifier: Apache-2.0
//
// Bytes of advertising packets: reading them with no trust in them, and writing the layouts of the
// phones that a TV looks for.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

inline constexpr std::uint8_t kManufacturerDataType = 0xFF;
inline constexpr std::uint16_t kPhoneCompany = 117;
inline constexpr std::size_t kUniqueIdLength = 22;
inline constexpr std::size_t kMaxStructureValue = 254;

struct ManufacturerDataView {
    std::uint16_t company;
    std::span<const std::uint8_t> data;  ///< behind the company identifier
};

/// The first manufacturer-specific data of a packet. None when there is none, when it is too short for
/// a company identifier, or when a structure on the way to it claims more bytes than the packet has.
std::optional<ManufacturerDataView> FindManufacturerData(std::span<const std::uint8_t> packet);

enum class Feature { mirroring, kov, nodLink };

std::optional<Feature> FeatureNamed(const std::string& name);

/// Flags and manufacturer data of a mirroring or Kov phone. Throws std::invalid_argument unless uniqueId
/// has 22 bytes.
Bytes PhoneAdvertising(Feature feature, const std::string& uniqueId);
/// Manufacturer data with the name of a mirroring or Kov phone.
Bytes PhoneScanResponse(Feature feature, const std::string& name);
Bytes NodLinkPhoneAdvertising(bool mirroringAvailable, bool version3);
Bytes NodLinkAvAdvertising();

/// The service over which a feature's phones take their control message, silent until it gets answers.
Service FeatureService(Feature feature);

}  // namespace lyn::simulator
