// SPDX-License-Identifier: Apache-2.0
#include "Packets.h"
#include "adverts/ReportChains.h"

namespace lyn::linux_platform::test {
namespace {

using std::chrono::milliseconds;

class ReportChainsTest : public ::testing::Test {
protected:
    std::optional<AdvertPacket> Take(const Bytes& data, DataStatus status, int device = 1, std::uint8_t set = 0,
                                     PacketKind kind = PacketKind::plain)
    {
        AdvertReport report;
        report.device = Device(device);
        report.set = set;
        report.kind = kind;
        report.status = status;
        report.rssi = -40 - static_cast<int>(data.size());
        report.data = data;
        return chains.Take(report, now);
    }

    ReportChains chains;
    Moment now{0};
};

TEST_F(ReportChainsTest, AWholeReportPassesAsItIs)
{
    const auto packet = Take({1, 2}, DataStatus::complete);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->data, (Bytes{1, 2}));
    EXPECT_EQ(packet->device, Device(1));
    EXPECT_EQ(packet->rssi, -42);
}

TEST_F(ReportChainsTest, PartsBecomeOnePacket)
{
    EXPECT_FALSE(Take({1, 2}, DataStatus::unfinished));
    EXPECT_FALSE(Take({3}, DataStatus::unfinished));
    const auto packet = Take({4, 5}, DataStatus::complete);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->data, (Bytes{1, 2, 3, 4, 5}));
    const auto next = Take({6}, DataStatus::complete);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->data, Bytes{6});
}

TEST_F(ReportChainsTest, PartsOfDifferentDevicesSetsAndKindsAreKeptApart)
{
    Take({1}, DataStatus::unfinished, 1, 0);
    Take({2}, DataStatus::unfinished, 2, 0);
    Take({3}, DataStatus::unfinished, 1, 1);
    Take({4}, DataStatus::unfinished, 1, 0, PacketKind::scanResponse);
    EXPECT_EQ(Take({9}, DataStatus::complete, 1, 0, PacketKind::scanResponse)->data, (Bytes{4, 9}));
    EXPECT_EQ(Take({9}, DataStatus::complete, 1, 1)->data, (Bytes{3, 9}));
    EXPECT_EQ(Take({9}, DataStatus::complete, 2, 0)->data, (Bytes{2, 9}));
    EXPECT_EQ(Take({9}, DataStatus::complete, 1, 0)->data, (Bytes{1, 9}));
}

TEST_F(ReportChainsTest, ATruncatedPacketCountsAsFarAsItGoes)
{
    EXPECT_EQ(Take({1}, DataStatus::truncated)->data, Bytes{1});
    EXPECT_FALSE(Take({1, 2}, DataStatus::unfinished));
    EXPECT_EQ(Take({3}, DataStatus::truncated)->data, (Bytes{1, 2, 3}));
}

TEST_F(ReportChainsTest, TheLongestDataPassAndOneByteMoreIsDropped)
{
    const Bytes part(165, 0xAA);
    for (int i = 0; i < 9; ++i) {
        EXPECT_FALSE(Take(part, DataStatus::unfinished));
    }
    EXPECT_EQ(Take(part, DataStatus::complete)->data.size(), ReportChains::kLongestData);
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(Take(part, DataStatus::unfinished));
    }
    EXPECT_FALSE(Take({1}, DataStatus::unfinished));
    EXPECT_FALSE(Take({2}, DataStatus::complete)) << "the end of a chain that is too long is no packet";
    EXPECT_EQ(Take({3}, DataStatus::complete)->data, Bytes{3});
}

TEST_F(ReportChainsTest, AChainWhoseEndWasLostIsForgotten)
{
    Take({1}, DataStatus::unfinished);
    now += ReportChains::kLongestChain;
    EXPECT_EQ(Take({2}, DataStatus::complete)->data, (Bytes{1, 2}));
    Take({1}, DataStatus::unfinished);
    now += ReportChains::kLongestChain + milliseconds(1);
    EXPECT_EQ(Take({2}, DataStatus::complete)->data, Bytes{2});
}

TEST_F(ReportChainsTest, TheOldestChainGivesWay)
{
    const int most = static_cast<int>(ReportChains::kMostChains);
    for (int device = 1; device <= most + 1; ++device) {
        Take({1}, DataStatus::unfinished, device);
    }
    EXPECT_EQ(Take({2}, DataStatus::complete, 2)->data, (Bytes{1, 2}));
    EXPECT_EQ(Take({2}, DataStatus::complete, most + 1)->data, (Bytes{1, 2}));
    EXPECT_EQ(Take({2}, DataStatus::complete, 1)->data, Bytes{2});
}

}  // namespace
}  // namespace lyn::linux_platform::test
