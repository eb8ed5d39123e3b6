// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>
#include <memory>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

struct Found {
    int result = 0;
    int company = -1;
    int length = -1;
    std::string data;
    bool isNull = true;
};

/// Reads manufacturer data out of a buffer that ends where the packet ends.
Found Read(const Bytes& packet, bt_adapter_le_packet_type_e type = BT_ADAPTER_LE_PACKET_ADVERTISING)
{
    const std::unique_ptr<char[]> exact(new char[packet.size()]);
    std::copy(packet.begin(), packet.end(), exact.get());
    bt_adapter_le_device_scan_result_info_s info{};
    const bool advertising = type == BT_ADAPTER_LE_PACKET_ADVERTISING;
    (advertising ? info.adv_data : info.scan_data) = exact.get();
    (advertising ? info.adv_data_len : info.scan_data_len) = static_cast<int>(packet.size());
    Found found;
    char* data = nullptr;
    found.result =
        bt_adapter_le_get_scan_result_manufacturer_data(&info, type, &found.company, &data, &found.length);
    if (data != nullptr) {
        found.isNull = false;
        EXPECT_EQ(data[found.length], '\0');
        found.data.assign(data, static_cast<std::size_t>(found.length));
        std::free(data);
    }
    return found;
}

class AdvertisingData : public SimulatorTest {};

TEST_F(AdvertisingData, IsFoundBehindOtherStructures)
{
    const Found found = Read({0x02, 0x01, 0x06, 0x05, 0xFF, 0x75, 0x00, 'h', 'i'});
    EXPECT_EQ(found.result, 0);
    EXPECT_EQ(found.company, 117);
    EXPECT_EQ(found.data, "hi");
}

TEST_F(AdvertisingData, IsReadFromTheScanResponseWhenAskedFor)
{
    const Found found = Read({0x04, 0xFF, 0x34, 0x12, 'x'}, BT_ADAPTER_LE_PACKET_SCAN_RESPONSE);
    EXPECT_EQ(found.result, 0);
    EXPECT_EQ(found.company, 0x1234);
    EXPECT_EQ(found.data, "x");
}

TEST_F(AdvertisingData, MayBeEmptyBehindTheCompany)
{
    const Found found = Read({0x03, 0xFF, 0x75, 0x00});
    EXPECT_EQ(found.result, 0);
    EXPECT_EQ(found.length, 0);
    EXPECT_FALSE(found.isNull);
}

TEST_F(AdvertisingData, TheFirstOfTwoCounts)
{
    EXPECT_EQ(Read({0x03, 0xFF, 0x01, 0x00, 0x03, 0xFF, 0x02, 0x00}).company, 1);
}

TEST_F(AdvertisingData, MayReachUpToTheLastByte)
{
    Bytes packet = ManufacturerData(117, Bytes(252, 0x41));
    EXPECT_EQ(Read(packet).length, 252);
    packet.pop_back();
    EXPECT_NE(Read(packet).result, 0);
}

TEST_F(AdvertisingData, LeavesEverythingAsItWasWhenThereIsNone)
{
    const Found found = Read({0x02, 0x01, 0x06});
    EXPECT_NE(found.result, 0);
    EXPECT_EQ(found.company, -1);
    EXPECT_EQ(found.length, -1);
    EXPECT_TRUE(found.isNull);
}

TEST_F(AdvertisingData, NeverTrustsALength)
{
    const std::vector<Bytes> hostile = {
        {},
        {0x00},
        {0xFF},
        {0x01},
        {0x01, 0xFF},
        {0x02, 0xFF, 0x75},
        {0x03, 0xFF, 0x75},
        {0x04, 0xFF, 0x75, 0x00},
        {0xFF, 0xFF, 0x75, 0x00, 0x01},
        {0x00, 0x03, 0xFF, 0x75, 0x00},
        {0x02, 0x01, 0x06, 0x1E, 0xFF, 0x75, 0x00},
        {0x05, 0x09, 'a', 'b', 0x03, 0xFF, 0x75, 0x00},
        {0x02, 0x01, 0x06, 0x00, 0x03, 0xFF, 0x75, 0x00},
    };
    for (const Bytes& packet : hostile) {
        EXPECT_NE(Read(packet).result, 0) << ::testing::PrintToString(packet);
    }
}

TEST_F(AdvertisingData, EveryCutOfAGoodPacketIsRefusedOrWithinIt)
{
    Bytes packet = MirroringPhone(kPhone, "Kitchen", kUniqueId).advertising;
    ASSERT_EQ(packet.size(), 31U);
    while (packet.size() > 1) {
        packet.pop_back();
        EXPECT_NE(Read(packet).result, 0);
    }
}

TEST_F(AdvertisingData, RefusesArgumentsThatAreNotThere)
{
    bt_adapter_le_device_scan_result_info_s info{};
    int company = 5;
    int length = 5;
    char* data = nullptr;
    const auto type = BT_ADAPTER_LE_PACKET_ADVERTISING;
    EXPECT_NE(bt_adapter_le_get_scan_result_manufacturer_data(nullptr, type, &company, &data, &length), 0);
    EXPECT_NE(bt_adapter_le_get_scan_result_manufacturer_data(&info, type, nullptr, &data, &length), 0);
    EXPECT_NE(bt_adapter_le_get_scan_result_manufacturer_data(&info, type, &company, nullptr, &length), 0);
    EXPECT_NE(bt_adapter_le_get_scan_result_manufacturer_data(&info, type, &company, &data, nullptr), 0);
    EXPECT_NE(bt_adapter_le_get_scan_result_manufacturer_data(&info, type, &company, &data, &length), 0)
        << "a missing packet";
    char byte = 3;
    info.adv_data = &byte;
    info.adv_data_len = -1;
    EXPECT_NE(bt_adapter_le_get_scan_result_manufacturer_data(&info, type, &company, &data, &length), 0)
        << "a negative length";
    EXPECT_EQ(company, 5);
    EXPECT_EQ(length, 5);
    EXPECT_EQ(data, nullptr);
}

TEST_F(AdvertisingData, IsWrittenAsItIsRead)
{
    EXPECT_EQ(AdStructure(0x09, {'a', 'b'}), (Bytes{3, 9, 'a', 'b'}));
    EXPECT_EQ(AdStructure(0x09, {}), (Bytes{1, 9}));
    EXPECT_EQ(ManufacturerData(0x1234, {7}), (Bytes{4, 0xFF, 0x34, 0x12, 7}));
    EXPECT_EQ(AdStructure(0xFF, Bytes(254, 0)).size(), 256U);
    EXPECT_THROW(AdStructure(0xFF, Bytes(255, 0)), std::invalid_argument);
    EXPECT_THROW(ManufacturerData(1, Bytes(253, 0)), std::invalid_argument);
}

TEST_F(AdvertisingData, OfAMirroringPhoneHasMarkerIdAndName)
{
    const Phone phone = MirroringPhone(kPhone, "Kitchen", kUniqueId);
    const Found id = Read(phone.advertising);
    EXPECT_EQ(id.company, 117);
    ASSERT_EQ(id.length, 24);
    EXPECT_EQ(id.data[1], 25);
    EXPECT_EQ(id.data.substr(2), kUniqueId);
    ASSERT_TRUE(phone.scanResponse);
    const Found name = Read(*phone.scanResponse);
    EXPECT_EQ(name.company, 117);
    EXPECT_EQ(name.data.substr(2), "Kitchen");
}

TEST_F(AdvertisingData, OfAKovPhoneHasItsOwnMarker)
{
    EXPECT_EQ(Read(KovPhone(kPhone, "Kitchen", kUniqueId).advertising).data[1], 23);
}

TEST_F(AdvertisingData, OfNodLinkDevicesTellsWhatTheyAre)
{
    const Found phone = Read(NodLinkPhone(kPhone, true, true).advertising);
    ASSERT_EQ(phone.length, 14);
    EXPECT_EQ(phone.data[1], 13);
    EXPECT_EQ(phone.data[5] & 0x04, 0x04);
    EXPECT_EQ(phone.data[6] & 0x01, 0x01);
    EXPECT_NE(phone.data[13], 0);
    const Found older = Read(NodLinkPhone(kPhone, false, false).advertising);
    EXPECT_EQ(older.data[6] & 0x01, 0);
    EXPECT_EQ(older.data[13], 0);
    const Found speaker = Read(NodLinkAvDevice(kPhone).advertising);
    EXPECT_EQ(speaker.data[1], 4);
    EXPECT_EQ(speaker.data[2] & 0x03, 0x03);
    EXPECT_EQ(speaker.data[4] & 0x20, 0x20);
}

TEST_F(AdvertisingData, WantsAUniqueIdOf22Bytes)
{
    EXPECT_THROW(MirroringPhone(kPhone, "Kitchen", "short"), std::invalid_argument);
    EXPECT_THROW(KovPhone(kPhone, "Kitchen", std::string(23, 'x')), std::invalid_argument);
    EXPECT_THROW(MirroringPhone(kPhone, std::string(251, 'x'), kUniqueId), std::invalid_argument);
}

}  // namespace
}  // namespace lyn::simulator::test
