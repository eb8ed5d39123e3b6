// SPDX-License-Identifier: Apache-2.0
#include "adverts/PacketJoiner.h"

#include <algorithm>
#include <utility>

namespace lyn::linux_platform {

namespace {

Advert Alone(AdvertPacket packet)
{
    return {TextOf(packet.device), packet.rssi, std::move(packet.data), std::nullopt};
}

}  // namespace

std::vector<Advert> PacketJoiner::Take(AdvertPacket packet, Moment now)
{
    if (packet.kind == PacketKind::scanResponse) {
        return TakeResponse(std::move(packet), now);
    }
    if (!MayBeAPhone(packet.data)) {
        return {};
    }
    if (packet.kind == PacketKind::scannable) {
        return TakeScannable(std::move(packet), now);
    }
    std::vector<Advert> results;
    results.push_back(Alone(std::move(packet)));
    return results;
}

std::vector<Advert> PacketJoiner::TakeScannable(AdvertPacket packet, Moment now)
{
    std::vector<Advert> results;
    Moment deadline = now + kResponseWait;
    auto old = Find(packet.device);
    if (old == m_heard.end() && m_heard.size() == kMostDevices) {
        old = m_heard.begin();
    }
    if (old != m_heard.end()) {
        if (old->deadline && old->packet.device == packet.device && old->packet.data == packet.data) {
            deadline = *old->deadline;  // or a phone that repeats quickly would wait for ever
        } else if (old->deadline) {
            results.push_back(Alone(std::move(old->packet)));
        }
        m_heard.erase(old);
    }
    m_heard.push_back({std::move(packet), now, deadline});
    return results;
}

std::vector<Advert> PacketJoiner::TakeResponse(AdvertPacket response, Moment now)
{
    const auto heard = Find(response.device);
    if (heard == m_heard.end() || now - heard->when > kRemembered) {
        return {};
    }
    heard->deadline.reset();
    std::vector<Advert> results;
    results.push_back(
        {TextOf(response.device), response.rssi, heard->packet.data, std::optional(std::move(response.data))});
    return results;
}

std::vector<Advert> PacketJoiner::TakeOverdue(Moment now)
{
    std::vector<Advert> results;
    for (Heard& heard : m_heard) {
        if (heard.deadline && *heard.deadline <= now) {
            heard.deadline.reset();
            results.push_back(Alone(heard.packet));
        }
    }
    return results;
}

std::optional<Moment> PacketJoiner::NextDeadline() const
{
    std::optional<Moment> next;
    for (const Heard& heard : m_heard) {
        if (heard.deadline && (!next || *heard.deadline < *next)) {
            next = heard.deadline;
        }
    }
    return next;
}

std::vector<PacketJoiner::Heard>::iterator PacketJoiner::Find(const DeviceAddress& device)
{
    return std::find_if(m_heard.begin(), m_heard.end(),
                        [&](const Heard& heard) { return heard.packet.device == device; });
}

}  // namespace lyn::linux_platform
