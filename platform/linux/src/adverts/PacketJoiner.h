// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <vector>

#include "adverts/ReportChains.h"

namespace lyn::linux_platform {

/// Joins the advertising packet of a phone and its scan response into one scan result.
///
/// A scannable packet waits a short time for its response, and is delivered alone when none comes. While it
/// waits, the same packet again counts as the same advert: it brings nothing but a newer signal strength, and to
/// deliver the first one alone would call a phone silent that is about to answer. Other data of the same phone
/// are another advert, and the one that waits is delivered alone before them.
///
/// A response that no packet waits for belongs to the last packet of that phone. Controllers suppress duplicates:
/// within one stretch of scanning they tell an advertising packet once, and its response when they first get
/// one, which may be much later. Without such a packet it is dropped, as nobody can tell whose phone it is.
///
/// Only packets that a phone may have sent are kept or delivered, and of few devices at a time. When there are
/// more, the one that was heard longest ago gives way, and is delivered alone if it waits.
class PacketJoiner {
public:
    static constexpr Moment kResponseWait{30};
    /// The kernel scans in stretches of 10.24 s.
    static constexpr Moment kRemembered{11'000};
    static constexpr std::size_t kMostDevices = 256;

    /// @return the scan results that are complete now, in their order
    std::vector<Advert> Take(AdvertPacket packet, Moment now);

    /// @return the scan results whose wait is over
    std::vector<Advert> TakeOverdue(Moment now);

    /// When the next wait is over; none when nothing waits.
    std::optional<Moment> NextDeadline() const;

private:
    /// The last scannable packet of a device.
    struct Heard {
        AdvertPacket packet;
        Moment when;
        std::optional<Moment> deadline;  ///< while it waits for its response
    };

    std::vector<Advert> TakeScannable(AdvertPacket packet, Moment now);
    std::vector<Advert> TakeResponse(AdvertPacket response, Moment now);
    std::vector<Heard>::iterator Find(const DeviceAddress& device);

    std::vector<Heard> m_heard;  ///< the one heard longest ago first
};

}  // namespace lyn::linux_platform
