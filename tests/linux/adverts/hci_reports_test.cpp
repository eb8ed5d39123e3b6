// SPDX-License-Identifier: Apache-2.0
#include "Packets.h"

namespace lyn::linux_platform::test {
namespace {

Bytes DataOf(const AdvertReport& report)
{
    return {report.data.begin(), report.data.end()};
}

TEST(HciReports, ALegacyReportIsReadAsItIs)
{
    const Bytes packet = LegacyEvent({{.eventType = 0, .device = 7, .data = {1, 2, 3}, .rssi = -71}});
    const auto reports = ParseReports(packet);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(TextOf(reports[0].device), "C0:00:00:00:00:07");
    EXPECT_EQ(reports[0].device.type, 1);
    EXPECT_EQ(reports[0].kind, PacketKind::scannable);
    EXPECT_EQ(reports[0].status, DataStatus::complete);
    EXPECT_EQ(reports[0].rssi, -71);
    EXPECT_EQ(DataOf(reports[0]), (Bytes{1, 2, 3}));
}

TEST(HciReports, AnExtendedReportIsReadAsItIs)
{
    const Bytes packet = ExtendedEvent(
        {{.eventType = kLegacyInd, .device = 7, .data = {1, 2, 3}, .rssi = -71, .addressType = 0, .set = 5}});
    const auto reports = ParseReports(packet);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(TextOf(reports[0].device), "C0:00:00:00:00:07");
    EXPECT_EQ(reports[0].device.type, 0);
    EXPECT_EQ(reports[0].set, 5);
    EXPECT_EQ(reports[0].kind, PacketKind::scannable);
    EXPECT_EQ(reports[0].rssi, -71);
    EXPECT_EQ(DataOf(reports[0]), (Bytes{1, 2, 3}));
}

TEST(HciReports, TheSignalStrengthHasItsSign)
{
    for (const int rssi : {-128, -127, -1, 0, 20, 127}) {
        const Bytes packet = LegacyEvent({{.rssi = rssi}});
        const auto reports = ParseReports(packet);
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].rssi, rssi);
    }
}

TEST(HciReports, AddressesAreWrittenInUpperCase)
{
    EXPECT_EQ(TextOf({0, {0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0xFF}}), "FF:4E:3D:2C:1B:0A");
}

struct KindCase {
    unsigned eventType;
    PacketKind kind;
};

TEST(HciReports, LegacyEventTypesTellTheKindOfPacket)
{
    const KindCase cases[] = {
        {0x00, PacketKind::scannable}, {0x01, PacketKind::plain},        {0x02, PacketKind::scannable},
        {0x03, PacketKind::plain},     {0x04, PacketKind::scanResponse},
    };
    for (const KindCase& each : cases) {
        const Bytes packet = LegacyEvent({{.eventType = each.eventType}});
        const auto reports = ParseReports(packet);
        ASSERT_EQ(reports.size(), 1U) << each.eventType;
        EXPECT_EQ(reports[0].kind, each.kind) << each.eventType;
    }
}

TEST(HciReports, ExtendedEventTypesTellTheKindOfPacket)
{
    const KindCase cases[] = {
        {0x13, PacketKind::scannable},    {0x12, PacketKind::scannable},    {0x15, PacketKind::plain},
        {0x10, PacketKind::plain},        {0x00, PacketKind::plain},        {0x01, PacketKind::plain},
        {0x02, PacketKind::scannable},    {0x08, PacketKind::scanResponse}, {0x1A, PacketKind::scanResponse},
        {0x1B, PacketKind::scanResponse},
    };
    for (const KindCase& each : cases) {
        const Bytes packet = ExtendedEvent({{.eventType = each.eventType}});
        const auto reports = ParseReports(packet);
        ASSERT_EQ(reports.size(), 1U) << each.eventType;
        EXPECT_EQ(reports[0].kind, each.kind) << each.eventType;
    }
}

TEST(HciReports, ExtendedEventTypesTellWhetherMoreFollows)
{
    const Bytes packet = ExtendedEvent({{.eventType = 0x00}, {.eventType = 0x20}, {.eventType = 0x40}});
    const auto reports = ParseReports(packet);
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_EQ(reports[0].status, DataStatus::complete);
    EXPECT_EQ(reports[1].status, DataStatus::unfinished);
    EXPECT_EQ(reports[2].status, DataStatus::truncated);
}

TEST(HciReports, SeveralReportsOfOneEventKeepTheirOrder)
{
    for (const Bytes& packet :
         {LegacyEvent({{.device = 1, .data = {1}}, {.device = 2}, {.device = 3, .data = {3}}}),
          ExtendedEvent({{.device = 1, .data = {1}}, {.device = 2}, {.device = 3, .data = {3}}})}) {
        const auto reports = ParseReports(packet);
        ASSERT_EQ(reports.size(), 3U);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(reports[static_cast<std::size_t>(i)].device, Device(i + 1));
        }
        EXPECT_EQ(DataOf(reports[0]), Bytes{1});
        EXPECT_EQ(DataOf(reports[1]), Bytes{});
        EXPECT_EQ(DataOf(reports[2]), Bytes{3});
    }
}

TEST(HciReports, UnknownKindsAreLeftOutAndTheOthersKept)
{
    const Bytes legacy = LegacyEvent({{.eventType = 5}, {.device = 2}, {.eventType = 0xFF}});
    ASSERT_EQ(ParseReports(legacy).size(), 1U);
    EXPECT_EQ(ParseReports(legacy)[0].device, Device(2));
    const Bytes extended = ExtendedEvent({{.eventType = 0x60}, {.device = 2}, {.addressType = 0xFF}});
    ASSERT_EQ(ParseReports(extended).size(), 1U);
    EXPECT_EQ(ParseReports(extended)[0].device, Device(2));
}

TEST(HciReports, OtherPacketsHaveNone)
{
    const Bytes good = LegacyEvent({{}});
    ASSERT_EQ(ParseReports(good).size(), 1U);
    for (const std::size_t place : {0U, 1U, 3U}) {
        Bytes other = good;
        other[place] ^= 0x40U;
        EXPECT_TRUE(ParseReports(other).empty()) << place;
    }
}

TEST(HciReports, EveryCutPacketHasOnlyItsWholeReports)
{
    for (const Bytes& whole : {LegacyEvent({{.device = 1, .data = {1, 2}}, {.device = 2, .data = {3}}}),
                               ExtendedEvent({{.device = 1, .data = {1, 2}}, {.device = 2, .data = {3}}})}) {
        const std::size_t first = whole[3] == kAdvertisingReport ? 5 + 12 : 5 + 26;
        for (std::size_t size = 0; size < whole.size(); ++size) {
            // Once as it came, and once with a length that fits: both are short of what they announce.
            Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_TRUE(ParseReports(cut).empty()) << size;
            if (size >= 5) {
                cut[2] = static_cast<std::uint8_t>(size - 3);
                EXPECT_EQ(ParseReports(cut).size(), size >= first ? 1U : 0U) << size;
            }
        }
    }
}

TEST(HciReports, ADataLengthBeyondThePacketEndsTheList)
{
    Bytes packet = LegacyEvent({{.device = 1, .data = {1, 2}}, {.device = 2, .data = {3}}});
    packet[5 + 12 + 8] = 2;  // the second report's data reach into its signal strength, which is missing then
    ASSERT_EQ(ParseReports(packet).size(), 1U);
    packet[5 + 8] = 0xFF;
    EXPECT_TRUE(ParseReports(packet).empty());
}

TEST(HciReports, ACountBeyondThePacketEndsTheList)
{
    Bytes packet = LegacyEvent({{.device = 1}});
    packet[4] = 0xFF;
    EXPECT_EQ(ParseReports(packet).size(), 1U);
    packet[4] = 0;
    EXPECT_TRUE(ParseReports(packet).empty());
}

TEST(HciReports, BytesBehindTheEventAreNotRead)
{
    Bytes packet = LegacyEvent({{.device = 1}, {.device = 2}});
    packet[2] = 2 + 10;  // the event ends behind the first report
    EXPECT_EQ(ParseReports(packet).size(), 1U);
}

}  // namespace
}  // namespace lyn::linux_platform::test
