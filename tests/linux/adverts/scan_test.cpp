// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "ScanTest.h"

namespace lyn::linux_tests {
namespace {

using Calls = std::vector<std::string>;
const std::string kFilter = "SetDiscoveryFilter ({'Transport': <'le'>, 'DuplicateData': <true>},)";

class DiscoveryTest : public ScanTest {
protected:
    DiscoveryTest() : adapter(std::make_unique<FakeAdapter>())
    {
        EXPECT_EQ(bt_product_init(), 0);
        RunQuietly(20);  // the adapter is watched from the main context
    }

    bool WaitFor(const Calls& expected)
    {
        Calls seen;
        return RunUntil([&] {
            for (auto& call : adapter->TakeCalls()) {
                seen.push_back(call);
            }
            return seen == expected;
        });
    }

    std::unique_ptr<FakeAdapter> adapter;
};

TEST_F(DiscoveryTest, AScanDiscoversLeDevicesWithDuplicates)
{
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(adapter->TakeCalls(), (Calls{kFilter, "StartDiscovery"}));
    EXPECT_TRUE(adapter->IsDiscovering());
}

TEST_F(DiscoveryTest, AStopEndsTheDiscoveryAndIsNotWaitedFor)
{
    ASSERT_EQ(Start(), 0);
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_EQ(bt_adapter_le_stop_scan(), kScanNotRunning);
    EXPECT_TRUE(WaitFor({kFilter, "StartDiscovery", "StopDiscovery"}));
}

TEST_F(DiscoveryTest, AStopWithoutAScanAsksNobody)
{
    EXPECT_EQ(bt_adapter_le_stop_scan(), kScanNotRunning);
    RunQuietly();
    EXPECT_EQ(adapter->TakeCalls(), Calls{});
}

TEST_F(DiscoveryTest, ASecondStartGoesOnWithTheDiscovery)
{
    ASSERT_EQ(Start(), 0);
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(adapter->TakeCalls(), (Calls{kFilter, "StartDiscovery"}));
}

TEST_F(DiscoveryTest, AnAdapterThatIsOffIsAFailure)
{
    adapter->SetPower(FakeAdapter::Power::off);
    EXPECT_EQ(Start(), -ENODEV);
    EXPECT_EQ(bt_adapter_le_stop_scan(), kScanNotRunning);
    adapter->TakeCalls();
    adapter->SetPower(FakeAdapter::Power::on);
    RunQuietly();
    EXPECT_EQ(adapter->TakeCalls(), Calls{}) << "a scan that failed is not wanted";
}

TEST_F(DiscoveryTest, WithoutBluetoothdAStartFails)
{
    adapter.reset();
    EXPECT_EQ(Start(), -ENODEV);
    EXPECT_EQ(bt_adapter_le_stop_scan(), kScanNotRunning);
}

TEST_F(DiscoveryTest, AStartIsRepeatedUntilTheEarlierStopIsDone)
{
    adapter->SetRefusalsAfterStop(3);
    ASSERT_EQ(Start(), 0);
    ASSERT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_EQ(Start(), 0);
    EXPECT_TRUE(adapter->IsDiscovering());
    RunQuietly();
    EXPECT_TRUE(adapter->IsDiscovering());
}

TEST_F(DiscoveryTest, AStartThatNobodyAnswersFailsInTimeAndIsTakenBack)
{
    adapter->SetMute(true);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(Start(), -ETIMEDOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - begun, std::chrono::milliseconds(1900));
    EXPECT_TRUE(WaitFor({kFilter, "StartDiscovery", "StopDiscovery"}));
    EXPECT_EQ(bt_adapter_le_stop_scan(), kScanNotRunning);
}

TEST_F(DiscoveryTest, AnAdapterThatComesBackIsScannedAgain)
{
    ASSERT_EQ(Start(), 0);
    adapter->TakeCalls();
    adapter->SetPower(FakeAdapter::Power::off);
    RunQuietly();
    EXPECT_EQ(adapter->TakeCalls(), Calls{});
    adapter->SetPower(FakeAdapter::Power::on);
    EXPECT_TRUE(WaitFor({kFilter, "StartDiscovery"}));
    EXPECT_TRUE(RunUntil([&] { return adapter->IsDiscovering(); }));
    RunQuietly();
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_TRUE(WaitFor({"StopDiscovery"}));
}

TEST_F(DiscoveryTest, AnAdapterThatWasOffForAMomentIsScannedAgain)
{
    ASSERT_EQ(Start(), 0);
    adapter->TakeCalls();
    adapter->SetPower(FakeAdapter::Power::off);
    adapter->SetPower(FakeAdapter::Power::on);
    EXPECT_TRUE(WaitFor({kFilter, "StartDiscovery"})) << "bluetoothd has forgotten the discovery";
}

TEST_F(DiscoveryTest, ANewStartThatNobodyAnswersIsTakenBackWhenTheScanHasBeenStopped)
{
    ASSERT_EQ(Start(), 0);
    adapter->SetPower(FakeAdapter::Power::off);
    RunQuietly();
    adapter->TakeCalls();
    adapter->SetMute(true);
    adapter->SetPower(FakeAdapter::Power::on);
    ASSERT_TRUE(WaitFor({kFilter, "StartDiscovery"}));
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_TRUE(WaitFor({"StopDiscovery"})) << "it may still begin";
}

TEST_F(DiscoveryTest, ABluetoothdThatComesBackIsAskedAgain)
{
    ASSERT_EQ(Start(), 0);
    adapter.reset();
    RunQuietly();
    adapter = std::make_unique<FakeAdapter>();
    EXPECT_TRUE(WaitFor({kFilter, "StartDiscovery"}));
}

TEST_F(DiscoveryTest, WhatWasStoppedMeanwhileStaysStopped)
{
    ASSERT_EQ(Start(), 0);
    adapter.reset();
    RunQuietly();
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    adapter = std::make_unique<FakeAdapter>();
    RunQuietly();
    EXPECT_EQ(adapter->TakeCalls(), Calls{});
}

TEST_F(DiscoveryTest, ScansMayBeStartedAndStoppedFromSeveralThreads)
{
    const auto work = [this] {
        for (int i = 0; i < 20; ++i) {
            Start();
            bt_adapter_le_stop_scan();
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    RunQuietly();
    bt_adapter_le_stop_scan();
    EXPECT_TRUE(RunUntil([&] { return !adapter->IsDiscovering(); }));
}

TEST(ScanSettings, AreCheckedAndAccepted)
{
    EXPECT_EQ(bt_adapter_le_set_scan_mode(0), 0);
    EXPECT_EQ(bt_adapter_le_set_scan_mode(-1), -EINVAL);
    EXPECT_EQ(bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 1000.0F, 500.0F), 0);
    EXPECT_EQ(bt_adapter_le_set_customized_scan_mode_with_scan_type(1, 10.0F, 10.0F), 0);
    EXPECT_EQ(bt_adapter_le_set_customized_scan_mode_with_scan_type(2, 1000.0F, 500.0F), -EINVAL);
    EXPECT_EQ(bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 500.0F, 1000.0F), -EINVAL);
    EXPECT_EQ(bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 500.0F, 0.0F), -EINVAL);
    EXPECT_EQ(bt_adapter_le_enable_le_scan_performance_boost(true), 0);
    EXPECT_EQ(bt_adapter_le_enable_le_scan_performance_boost(false), 0);
    EXPECT_EQ(bt_adapter_le_start_scan(nullptr, nullptr), -EINVAL);
}

TEST(ScanManufacturerData, IsCopiedWithANulBehindIt)
{
    char packet[] = {0x02, 0x01, 0x06, 0x05, static_cast<char>(0xFF), 0x75, 0x00, 'h', 'i'};
    bt_adapter_le_device_scan_result_info_s info{};
    info.adv_data = packet;
    info.adv_data_len = sizeof packet;
    int company = -1;
    int length = -1;
    char* data = nullptr;
    const auto read = [&](bt_adapter_le_packet_type_e type) {
        return bt_adapter_le_get_scan_result_manufacturer_data(&info, type, &company, &data, &length);
    };
    EXPECT_EQ(read(BT_ADAPTER_LE_PACKET_SCAN_RESPONSE), -EBADMSG);
    EXPECT_EQ(company, -1);
    ASSERT_EQ(read(BT_ADAPTER_LE_PACKET_ADVERTISING), 0);
    EXPECT_EQ(company, 117);
    EXPECT_EQ(length, 2);
    EXPECT_STREQ(data, "hi");
    std::free(data);
}

}  // namespace
}  // namespace lyn::linux_tests
