// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace lyn::advertiser {

/// What an advertisement of the TV says. The fields are those of BlueZ's LEAdvertisement1.
struct Payload {
    bool connectable = true;
    std::map<std::uint16_t, std::vector<std::uint8_t>> manufacturerData;  ///< by company identifier
    std::vector<std::string> serviceUuids;
    std::string localName;  ///< empty: none
};

/// Payloads by the feature whose trigger switches them: "mirroring", "kov".
using Config = std::map<std::string, Payload>;

class ConfigError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a configuration file. Throws ConfigError: one line, "FILE: FIELD: what is wrong".
Config ReadConfig(const std::string& file);

/// The same, of the text of a file.
Config ParseConfig(const std::string& text, const std::string& file);

}  // namespace lyn::advertiser
