// SPDX-License-Identifier: Apache-2.0
//
// A second opinion about advertisements, written from docs/behaviour.md ("What a phone advertises") and
// sharing no code with the scanners.
#pragma once

#include <optional>
#include <string>

#include "lyn_simulator/simulator.h"

namespace lyn::fuzz {

/// What an application is to be told, address and RSSI left out.
struct ExpectedPhone {
    std::string name;  ///< empty: none
    std::string uniqueId;
    std::string extraData;
};

/// Nothing when the advertisement is to be dropped. `service`: "mirroring", "kov" or "nodlink".
std::optional<ExpectedPhone> ExpectPhone(const std::string& service,
                                         const std::optional<simulator::Bytes>& advertising,
                                         const std::optional<simulator::Bytes>& scanResponse);

/// Whether a text is valid UTF-8.
bool IsUtf8(const std::string& text);

}  // namespace lyn::fuzz
