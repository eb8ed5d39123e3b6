// SPDX-License-Identifier: Apache-2.0
//
// Packets as a controller sends them, written for reading in a test.
#pragma once

#include <string>
#include <vector>

#include "adverts/HciReports.h"

namespace lyn::linux_platform::test {

inline constexpr unsigned kLegacyInd = 0x13;  // extended event types of legacy packets
inline constexpr unsigned kLegacyResponseToInd = 0x1B;

/// One report as a test writes it. The address is that of phone number `device`.
struct Report {
    unsigned eventType = 0;
    int device = 1;
    Bytes data = {};
    int rssi = -50;
    std::uint8_t addressType = 1;
    std::uint8_t set = 0xFF;
};

/// "C0:00:00:00:00:01" for 1.
std::string Address(int device);
DeviceAddress Device(int device, std::uint8_t type = 1);

Bytes LegacyEvent(const std::vector<Report>& reports);
Bytes ExtendedEvent(const std::vector<Report>& reports);

/// One advertising structure of manufacturer data.
Bytes Manufacturer(unsigned company, const Bytes& data);
Bytes Joined(Bytes head, const Bytes& tail);

/// What a mirroring phone sends: flags, and marker and id of 22 letters; and its name.
Bytes PhoneData(char letter = 'i');
Bytes NameData(const std::string& name = "Phone");

}  // namespace lyn::linux_platform::test
