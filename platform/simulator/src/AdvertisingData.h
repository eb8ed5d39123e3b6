// SPDX-License-Identifier: Apache-2.0
//
// Bytes of advertising packets: writing the layouts of the phones that a TV looks for.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "ManufacturerData.h"
#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

using platform::kManufacturerDataType;
using platform::kPhoneCompany;

inline constexpr std::size_t kUniqueIdLength = 22;
inline constexpr std::size_t kMaxStructureValue = 254;

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
