// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "adverts/HciSocket.h"
#include "adverts/PacketJoiner.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

/// Adverts of one adapter from its raw HCI socket, as long as this object lives. Everything on the main context.
/// Whoever handles an advert may destroy this object.
class HciAdverts : public std::enable_shared_from_this<HciAdverts> {
public:
    /// Listens to the socket; adverts go to the handler.
    static std::shared_ptr<HciAdverts> Begin(HciSocket socket, AdvertHandler handler);

    HciAdverts(HciSocket socket, AdvertHandler handler);
    ~HciAdverts();
    HciAdverts(const HciAdverts&) = delete;
    HciAdverts& operator=(const HciAdverts&) = delete;

    /// The adapter went away: nothing comes any more.
    bool HasEnded() const { return m_ended; }

private:
    void Watch();
    /// Reads what there is. @return false when there may be more
    bool ReadAll();
    void TakePacket(std::span<const std::uint8_t> packet);
    void OnTime();
    void AwaitDeadline();
    void Deliver(const std::vector<Advert>& adverts) const;

    HciSocket m_socket;
    AdvertHandler m_handler;
    ReportChains m_chains;
    PacketJoiner m_joiner;
    GSource* m_source = nullptr;
    Timer m_timer;
    std::optional<Moment> m_awaited;  ///< when the timer runs
    bool m_ended = false;
};

}  // namespace lyn::linux_platform
