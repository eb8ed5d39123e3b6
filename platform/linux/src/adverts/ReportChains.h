// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <vector>

#include "adverts/HciReports.h"

namespace lyn::linux_platform {

/// One whole packet of a device.
struct AdvertPacket {
    DeviceAddress device;
    PacketKind kind = PacketKind::plain;
    int rssi = 0;
    Bytes data;
};

/// Puts the data of extended advertising together, which come in several reports when they are long. Few chains
/// are open at a time, and none for long: the oldest gives way, and a chain whose end was lost is not taken for
/// the beginning of the next one.
class ReportChains {
public:
    static constexpr std::size_t kLongestData = 1650;  ///< of one packet, by the Bluetooth standard
    static constexpr std::size_t kMostChains = 16;
    static constexpr Moment kLongestChain{1000};

    /// @return the packet that the report is, or is the end of. A truncated one counts as far as it was received:
    /// whoever reads it trusts no length, and what phones say stands at the beginning. A chain that grows longer
    /// than data can be is dropped.
    std::optional<AdvertPacket> Take(const AdvertReport& report, Moment now);

private:
    struct Chain {
        AdvertPacket packet;
        std::uint8_t set;
        Moment begun;
        bool tooLong;
    };

    std::vector<Chain>::iterator Find(const AdvertReport& report);

    std::vector<Chain> m_chains;  ///< in the order of their beginning
};

}  // namespace lyn::linux_platform
