// SPDX-License-Identifier: Apache-2.0
#include "adverts/ReportChains.h"

#include <algorithm>
#include <utility>

namespace lyn::linux_platform {

std::vector<ReportChains::Chain>::iterator ReportChains::Find(const AdvertReport& report)
{
    return std::find_if(m_chains.begin(), m_chains.end(), [&](const Chain& chain) {
        return chain.set == report.set && chain.packet.kind == report.kind && chain.packet.device == report.device;
    });
}

std::optional<AdvertPacket> ReportChains::Take(const AdvertReport& report, Moment now)
{
    std::erase_if(m_chains, [&](const Chain& chain) { return now - chain.begun > kLongestChain; });
    auto chain = Find(report);
    if (chain == m_chains.end()) {
        AdvertPacket packet{report.device, report.kind, report.rssi,
                            Bytes(report.data.begin(), report.data.end())};
        if (report.status != DataStatus::unfinished) {
            return packet;
        }
        if (m_chains.size() == kMostChains) {
            m_chains.erase(m_chains.begin());
        }
        m_chains.push_back({std::move(packet), report.set, now, false});
        return std::nullopt;
    }
    AdvertPacket& packet = chain->packet;
    // A chain that is too long stays, without its data, so that its end is not taken for a packet.
    chain->tooLong = chain->tooLong || packet.data.size() + report.data.size() > kLongestData;
    if (chain->tooLong) {
        packet.data.clear();
    } else {
        packet.data.insert(packet.data.end(), report.data.begin(), report.data.end());
    }
    packet.rssi = report.rssi;
    if (report.status == DataStatus::unfinished) {
        return std::nullopt;
    }
    std::optional<AdvertPacket> whole;
    if (!chain->tooLong) {
        whole = std::move(packet);
    }
    m_chains.erase(chain);
    return whole;
}

}  // namespace lyn::linux_platform
