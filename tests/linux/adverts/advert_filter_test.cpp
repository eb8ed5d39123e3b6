// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>

#include <array>
#include <random>

#include "Packets.h"
#include "adverts/AdvertFilter.h"
#include "adverts/HciSocket.h"

namespace lyn::linux_platform::test {
namespace {

/// The program in the kernel, on a socket that takes any packet.
class AdvertFilterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends.data()), 0);
        m_receiver = HciSocket(ends[0]);
        m_sender = HciSocket(ends[1]);
        auto program = AdvertFilter();
        const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
        ASSERT_EQ(::setsockopt(ends[0], SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter), 0);
    }

    /// Whether the packet comes through, whole.
    bool Keeps(const Bytes& packet) const
    {
        // A packet that is dropped is an error for its sender on this kind of socket, or is not; either will do.
        (void)::send(m_sender.Descriptor(), packet.data(), packet.size(), 0);
        std::array<std::uint8_t, 512> buffer{};
        std::size_t length = 0;
        const bool came = m_receiver.Read(buffer, length) == HciSocket::Got::packet;
        EXPECT_TRUE(!came || length == packet.size());
        return came;
    }

    HciSocket m_receiver{-1};
    HciSocket m_sender{-1};
};

/// What the process makes of the packet when there is no filter.
bool Matters(const Bytes& packet)
{
    for (const AdvertReport& report : ParseReports(packet)) {
        if (report.kind == PacketKind::scanResponse || MayBeAPhone(report.data)) {
            return true;
        }
    }
    return false;
}

TEST_F(AdvertFilterTest, KeepsPhones)
{
    EXPECT_TRUE(Keeps(LegacyEvent({{.eventType = 0, .data = PhoneData()}})));
    EXPECT_TRUE(Keeps(LegacyEvent({{.eventType = 3, .data = Manufacturer(117, {})}})));
    EXPECT_TRUE(Keeps(ExtendedEvent({{.eventType = kLegacyInd, .data = PhoneData()}})));
}

TEST_F(AdvertFilterTest, KeepsEveryScanResponse)
{
    EXPECT_TRUE(Keeps(LegacyEvent({{.eventType = 4, .data = Manufacturer(76, {1})}})));
    EXPECT_TRUE(Keeps(LegacyEvent({{.eventType = 4}})));
    EXPECT_TRUE(Keeps(ExtendedEvent({{.eventType = kLegacyResponseToInd, .data = Manufacturer(76, {1})}})));
    EXPECT_TRUE(Keeps(ExtendedEvent({{.eventType = 0x1A}})));
}

TEST_F(AdvertFilterTest, DropsForeignAdverts)
{
    const Bytes flags{0x02, 0x01, 0x06};
    const Bytes foreign[] = {
        {},
        flags,
        Bytes(31, 0),
        Manufacturer(76, {1, 2, 3}),
        Manufacturer(0x7500, {1}),
        Joined(flags, Manufacturer(76, {1, 2, 3})),
        Joined(Manufacturer(76, {1}), Manufacturer(117, {1})),  // the first one counts
        {0x03, 0xFF, 0x75},
        {0x02, 0xFF, 0x75},
        Joined({0x00}, Manufacturer(117, {1})),
    };
    for (const Bytes& data : foreign) {
        EXPECT_FALSE(Keeps(LegacyEvent({{.eventType = 0, .data = data}}))) << ::testing::PrintToString(data);
        EXPECT_FALSE(Keeps(ExtendedEvent({{.eventType = kLegacyInd, .data = data}})))
            << ::testing::PrintToString(data);
    }
}

TEST_F(AdvertFilterTest, DropsOtherPackets)
{
    const Bytes good = LegacyEvent({{.data = PhoneData()}});
    for (const std::size_t place : {0U, 1U, 3U}) {
        Bytes other = good;
        other[place] ^= 0x20U;
        EXPECT_FALSE(Keeps(other)) << place;
    }
    EXPECT_FALSE(Keeps({kHciEventPacket}));
    EXPECT_FALSE(Keeps({kHciEventPacket, kLeMetaEvent, 1}));
}

TEST_F(AdvertFilterTest, KeepsWhatItCannotSeeThrough)
{
    const Bytes foreign = Manufacturer(76, {1});
    EXPECT_TRUE(Keeps(LegacyEvent({{.data = foreign}, {.data = PhoneData()}})));
    EXPECT_TRUE(Keeps(ExtendedEvent({{.eventType = kLegacyInd, .data = foreign}, {.data = foreign}})));
    EXPECT_TRUE(Keeps(ExtendedEvent({{.eventType = 0x00, .data = foreign}}))) << "the end of a chain, maybe";
    EXPECT_TRUE(Keeps(ExtendedEvent({{.eventType = 0x20, .data = foreign}})));
}

TEST_F(AdvertFilterTest, FindsAPhoneBehindAsManyStructuresAsFit)
{
    Bytes data;
    for (int i = 0; i < 13; ++i) {
        data = Joined(data, {0x01, 0x0A});
    }
    EXPECT_TRUE(Keeps(LegacyEvent({{.data = Joined(data, Manufacturer(117, {1}))}})));
    EXPECT_FALSE(Keeps(LegacyEvent({{.data = Joined(data, Manufacturer(118, {1}))}})));
}

/// Packets that look like real ones, but for what a random byte or two have become.
Bytes AlmostGoodPacket(std::mt19937& random)
{
    const auto upTo = [&](unsigned most) { return static_cast<unsigned>(random() % (most + 1)); };
    const bool legacy = upTo(1) == 0;
    std::vector<Report> reports(1 + (upTo(9) == 0 ? upTo(2) : 0));
    for (Report& report : reports) {
        const unsigned extendedTypes[] = {0x13, 0x12, 0x10, 0x1A, 0x1B, 0x00, 0x20, 0x40};
        report.eventType = legacy ? upTo(5) : extendedTypes[upTo(7)];
        while (report.data.size() < 20 && upTo(3) != 0) {
            report.data = Joined(report.data, upTo(1) == 0 ? Bytes{0x02, 0x01, 0x06}
                                                           : Manufacturer(117 + upTo(1), Bytes(upTo(4), 0xFF)));
        }
    }
    Bytes packet = legacy ? LegacyEvent(reports) : ExtendedEvent(reports);
    for (unsigned changes = upTo(2); changes > 0; --changes) {
        packet[upTo(static_cast<unsigned>(packet.size()) - 1)] = static_cast<std::uint8_t>(upTo(31));
    }
    packet.resize(packet.size() - (upTo(9) == 0 ? upTo(6) : 0));
    return packet;
}

TEST_F(AdvertFilterTest, NeverDropsWhatMatters)
{
    std::mt19937 random(1);
    int mattered = 0;
    int dropped = 0;
    for (int i = 0; i < 50'000; ++i) {
        const Bytes packet = AlmostGoodPacket(random);
        const bool keeps = Keeps(packet);
        const bool matters = Matters(packet);
        ASSERT_TRUE(keeps || !matters) << ::testing::PrintToString(packet);
        mattered += matters ? 1 : 0;
        dropped += keeps ? 0 : 1;
    }
    // The packets were worth looking at.
    EXPECT_GT(mattered, 10'000);
    EXPECT_GT(dropped, 10'000);
}

}  // namespace
}  // namespace lyn::linux_platform::test
