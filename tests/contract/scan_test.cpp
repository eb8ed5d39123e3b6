// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <thread>

#include "ContractTest.h"

namespace lyn::contract {
namespace {

/// Reads manufacturer data of one packet and checks what every reader may rely on.
void CheckManufacturerData(const bt_adapter_le_device_scan_result_info_s& info, bt_adapter_le_packet_type_e type)
{
    const bool advertising = type == BT_ADAPTER_LE_PACKET_ADVERTISING;
    const char* packet = advertising ? info.adv_data : info.scan_data;
    const int size = advertising ? info.adv_data_len : info.scan_data_len;
    int company = -1;
    int length = -1;
    char* data = nullptr;
    if (bt_adapter_le_get_scan_result_manufacturer_data(&info, type, &company, &data, &length) != 0) {
        EXPECT_EQ(company, -1);
        EXPECT_EQ(length, -1);
        EXPECT_EQ(data, nullptr);
        return;
    }
    ASSERT_NE(packet, nullptr);
    ASSERT_NE(data, nullptr);
    EXPECT_GE(company, 0);
    EXPECT_LE(company, 0xFFFF);
    ASSERT_GE(length, 0);
    EXPECT_LE(length + 4, size) << "more bytes than the packet holds";
    EXPECT_EQ(data[length], '\0');
    const char* end = packet + size;
    EXPECT_NE(std::search(packet, end, data, data + length), length > 0 ? end : nullptr) << "bytes as received";
    std::free(data);
}

class ScanTest : public BluetoothTest {
protected:
    void TearDown() override
    {
        bt_adapter_le_stop_scan();
        BluetoothTest::TearDown();
    }

    int Start()
    {
        return Call([this] { return bt_adapter_le_start_scan(&ScanTest::OnResult, this); });
    }

    static void OnResult(int result, bt_adapter_le_device_scan_result_info_s* info, void* userData)
    {
        const InCallback scope;
        ASSERT_EQ(result, 0);
        ASSERT_NE(info, nullptr);
        ASSERT_NE(info->remote_address, nullptr);
        EXPECT_EQ(std::strlen(info->remote_address), 17U);
        EXPECT_TRUE(info->adv_data != nullptr || info->adv_data_len == 0);
        EXPECT_TRUE(info->scan_data != nullptr || info->scan_data_len == 0);
        CheckManufacturerData(*info, BT_ADAPTER_LE_PACKET_ADVERTISING);
        CheckManufacturerData(*info, BT_ADAPTER_LE_PACKET_SCAN_RESPONSE);
        auto* self = static_cast<ScanTest*>(userData);
        ++self->m_results;
        self->m_addresses.insert(info->remote_address);
        if (const auto react = self->m_onResult) {
            react();
        }
    }

    int m_results = 0;
    std::set<std::string> m_addresses;
    std::function<void()> m_onResult;
};

TEST_F(ScanTest, AStopWithoutAScanSaysSo)
{
    EXPECT_EQ(Call([] { return bt_adapter_le_stop_scan(); }), kScanNotRunning);
    ASSERT_EQ(Start(), 0);
    EXPECT_EQ(Call([] { return bt_adapter_le_stop_scan(); }), 0);
    EXPECT_EQ(bt_adapter_le_stop_scan(), kScanNotRunning);
}

TEST_F(ScanTest, ModesAreAcceptedBeforeAScan)
{
    EXPECT_EQ(bt_adapter_le_set_scan_mode(0), 0);
    EXPECT_EQ(bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 1000.0F, 500.0F), 0);
    EXPECT_EQ(bt_adapter_le_enable_le_scan_performance_boost(true), 0);
    EXPECT_EQ(bt_adapter_le_enable_le_scan_performance_boost(false), 0);
}

TEST_F(ScanTest, NothingComesAfterTheStop)
{
    ASSERT_EQ(Start(), 0);
    RunQuietly();
    ASSERT_EQ(bt_adapter_le_stop_scan(), 0);
    const int before = m_results;
    RunQuietly();
    EXPECT_EQ(m_results, before);
}

TEST_F(ScanTest, NothingComesAfterAStopOnAnotherThread)
{
    ASSERT_EQ(Start(), 0);
    std::thread([] { bt_adapter_le_stop_scan(); }).join();
    const int before = m_results;
    RunQuietly();
    EXPECT_EQ(m_results, before);
}

class PhoneScanTest : public ScanTest {
protected:
    void SetUp() override
    {
        ScanTest::SetUp();
        const auto phone = Environment("LYN_CONTRACT_PHONE");
        if (!phone) {
            GTEST_SKIP() << "LYN_CONTRACT_PHONE names no phone";
        }
        m_phone = *phone;
    }

    std::string m_phone;
};

TEST_F(PhoneScanTest, ThePhoneIsHeardAgainAndAgain)
{
    int heard = 0;
    m_onResult = [&] { heard += m_addresses.count(m_phone) > 0 ? 1 : 0; };
    ASSERT_EQ(Start(), 0);
    EXPECT_TRUE(RunUntil([&] { return heard >= 2; }));
}

TEST_F(PhoneScanTest, AScanMayBeStoppedAndStartedFromInsideItsCallback)
{
    bool restarted = false;
    m_onResult = [&] {
        m_onResult = nullptr;
        EXPECT_EQ(Call([] { return bt_adapter_le_stop_scan(); }), 0);
        EXPECT_EQ(Start(), 0);
        restarted = true;
        m_results = 0;
    };
    ASSERT_EQ(Start(), 0);
    EXPECT_TRUE(RunUntil([&] { return restarted && m_results > 0; }));
}

TEST_F(PhoneScanTest, ASecondStartTakesThePlaceOfTheFirst)
{
    int old = 0;
    const auto count = [](int, bt_adapter_le_device_scan_result_info_s*, void* data) {
        ++*static_cast<int*>(data);
    };
    ASSERT_EQ(bt_adapter_le_start_scan(count, &old), 0);
    ASSERT_EQ(Start(), 0);
    const int before = old;
    EXPECT_TRUE(RunUntil([&] { return m_results >= 2; }));
    EXPECT_EQ(old, before);
}

TEST(ManufacturerData, NeverClaimsMoreBytesThanExist)
{
    const std::vector<std::vector<unsigned char>> packets = {
        {},
        {0x00},
        {0xFF},
        {0x01, 0xFF},
        {0x02, 0xFF, 0x75},
        {0x03, 0xFF, 0x75},
        {0x04, 0xFF, 0x75, 0x00},
        {0xFF, 0xFF, 0x75, 0x00, 0x01},
        {0x02, 0x01, 0x06, 0x1E, 0xFF, 0x75, 0x00},
        {0x05, 0x09, 'a', 'b', 0x03, 0xFF, 0x75, 0x00},
        {0x02, 0x01, 0x06, 0x05, 0xFF, 0x75, 0x00, 'h', 'i'},
    };
    for (const auto& packet : packets) {
        const std::unique_ptr<char[]> exact(new char[packet.size()]);
        std::copy(packet.begin(), packet.end(), exact.get());
        bt_adapter_le_device_scan_result_info_s info{};
        info.adv_data = exact.get();
        info.adv_data_len = static_cast<int>(packet.size());
        CheckManufacturerData(info, BT_ADAPTER_LE_PACKET_ADVERTISING);
        CheckManufacturerData(info, BT_ADAPTER_LE_PACKET_SCAN_RESPONSE);
    }
}

TEST(ManufacturerData, IsWhatThePacketHolds)
{
    char packet[] = {0x02, 0x01, 0x06, 0x05, static_cast<char>(0xFF), 0x75, 0x00, 'h', 'i'};
    bt_adapter_le_device_scan_result_info_s info{};
    info.scan_data = packet;
    info.scan_data_len = sizeof packet;
    int company = 0;
    int length = 0;
    char* data = nullptr;
    ASSERT_EQ(bt_adapter_le_get_scan_result_manufacturer_data(&info, BT_ADAPTER_LE_PACKET_SCAN_RESPONSE, &company,
                                                              &data, &length),
              0);
    EXPECT_EQ(company, 117);
    EXPECT_EQ(length, 2);
    EXPECT_STREQ(data, "hi");
    std::free(data);
}

}  // namespace
}  // namespace lyn::contract
