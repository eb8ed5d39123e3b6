// SPDX-License-Identifier: Apache-2.0
//
// Packets of a raw HCI socket, as a controller or the air may spoil them, from the parser to the scan results.
// Input: packets, each with the milliseconds since the one before (a byte) and its length (a byte) in front.
#include <chrono>

#include "Room.h"
#include "adverts/HciReports.h"
#include "adverts/PacketJoiner.h"
#include "adverts/ReportChains.h"

namespace {

using lyn::fuzz::Require;
using lyn::linux_platform::Advert;
using lyn::linux_platform::AdvertReport;
using lyn::linux_platform::Bytes;
using lyn::linux_platform::Moment;
using lyn::linux_platform::PacketJoiner;
using lyn::linux_platform::ReportChains;

/// What the platform does with the packets of a socket, in a time of its own.
class Listener {
public:
    void Wait(Moment time)
    {
        m_now += time;
        Check(m_joiner.TakeOverdue(m_now));
        const auto next = m_joiner.NextDeadline();
        Require(!next || (*next > m_now && *next <= m_now + PacketJoiner::kResponseWait), "no packet waits long");
    }

    void Take(const Bytes& packet)
    {
        for (const AdvertReport& report : lyn::linux_platform::ParseReports(packet)) {
            Require(report.data.empty() ||
                        (report.data.data() >= packet.data() &&
                         report.data.data() + report.data.size() <= packet.data() + packet.size()),
                    "data are within their packet");
            if (auto whole = m_chains.Take(report, m_now)) {
                Require(whole->data.size() <= ReportChains::kLongestData, "data are not too long");
                ++m_packets;
                Check(m_joiner.Take(std::move(*whole), m_now));
            }
        }
    }

    void Finish()
    {
        Wait(PacketJoiner::kResponseWait);
        Require(!m_joiner.NextDeadline(), "nothing waits at the end");
        Require(m_results <= m_packets, "a packet is one result at most");
    }

private:
    void Check(const std::vector<Advert>& adverts)
    {
        m_results += adverts.size();
        for (const Advert& advert : adverts) {
            Require(advert.address.size() == sizeof "00:11:22:33:44:55" - 1, "an address is whole");
            Require(lyn::linux_platform::MayBeAPhone(advert.advertising), "foreign packets are dropped");
        }
    }

    ReportChains m_chains;
    PacketJoiner m_joiner;
    Moment m_now{0};
    std::size_t m_packets = 0;
    std::size_t m_results = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    lyn::fuzz::Input input(data, size);
    Listener listener;
    while (!input.IsEmpty()) {
        listener.Wait(Moment(input.TakeByte()));
        const auto packet = input.TakeBytes();
        listener.Take(Bytes(packet.begin(), packet.end()));
    }
    listener.Finish();
    return 0;
}
