// SPDX-License-Identifier: Apache-2.0
//
// Scans and advertisements that the platform refuses, through the C interface.
#include "service/AppTest.h"

namespace lyn::test {
namespace {

constexpr int kNoScanRunning = static_cast<int>(0xFE400105);

class FailingScan : public AppTest, public ::testing::WithParamInterface<std::string> {
protected:
    FailingScan() { Begin(GetParam()); }
};

TEST_P(FailingScan, ThatDoesNotStartLeavesTheServiceReady)
{
    simulator::FailCall("bt_adapter_le_start_scan", -7);
    EXPECT_EQ(app.StartScan(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_TRUE(app.states.empty());
    EXPECT_TRUE(LogsInOrder({{ERROR, "fail to start scan"}, {ERROR, "exception: fail to start scan"}}));
    EXPECT_FALSE(simulator::Alive().boosted);
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_SCANNING}));
}

TEST_P(FailingScan, ThatDoesNotStopLeavesTheServiceScanning)
{
    app.StartScan();
    Forget();
    simulator::FailCall("bt_adapter_le_stop_scan", -7);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_TRUE(app.states.empty());
    EXPECT_TRUE(LogsInOrder({{ERROR, "fail to stop scan"}, {ERROR, "exception: fail to stop scan"}}));
    EXPECT_EQ(app.StartScan(), LYN_ERROR_INVALID_STATE);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_READY}));
}

TEST_P(FailingScan, ThatDidNotRunIsStopped)
{
    simulator::FailCall("bt_adapter_le_stop_scan", kNoScanRunning);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_READY}));
    EXPECT_FALSE(HasLog(ERROR, "fail to stop scan"));
}

TEST_P(FailingScan, DuringARequestReportsNothing)
{
    simulator::AddPhone(PhoneFor(GetParam(), ""));
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    Forget();
    simulator::FailCall("bt_adapter_le_stop_scan", -7);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_TRUE(app.states.empty());
    EXPECT_EQ(CountCalls("bt_adapter_le_stop_scan"), 2);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_INVALID_STATE) << "the request runs";
}

INSTANTIATE_TEST_SUITE_P(Of, FailingScan, ::testing::Values("mirroring", "nodlink", "kov"),
                         [](const auto& test) { return test.param; });

struct Advertiser {
    const char* service;
    const char* key;
};

class AdvertisementOf : public AppTest, public ::testing::WithParamInterface<Advertiser> {
protected:
    AdvertisementOf() { Begin(GetParam().service); }

    lyn_error_e Start(int interval)
    {
        return lyn_start_advertise(app.handle, static_cast<lyn_adv_interval_e>(interval));
    }

    static std::string Write(int interval)
    {
        return "vconf_set_int(\"" + std::string(GetParam().key) + "\", " + std::to_string(interval) + ")";
    }
};

TEST_P(AdvertisementOf, HasTheIntervalOfItsEnumerator)
{
    Texts writes;
    for (const auto& [interval, value] : std::vector<std::pair<int, int>>{{LYN_ADV_INTERVAL_50, 50},
                                                                          {LYN_ADV_INTERVAL_100, 100},
                                                                          {LYN_ADV_INTERVAL_150, 150},
                                                                          {LYN_ADV_INTERVAL_200, 200},
                                                                          {LYN_ADV_INTERVAL_300, 300}}) {
        EXPECT_EQ(Start(interval), LYN_ERROR_NONE);
        writes.push_back(Write(value));
        EXPECT_EQ(simulator::IntSetting(GetParam().key), value);
    }
    EXPECT_EQ(simulator::JournalText(), writes);
    EXPECT_TRUE(app.states.empty());
}

TEST_P(AdvertisementOf, IsStoppedOnce)
{
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::JournalText().empty());
    Start(0);
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::JournalText(), Texts({Write(50), Write(0)}));
    EXPECT_TRUE(app.states.empty());
}

TEST_P(AdvertisementOf, FailsWithTheSetting)
{
    simulator::FailCall("vconf_set_int", -7);
    EXPECT_EQ(Start(1), LYN_ERROR_OPERATION_FAILED);
    EXPECT_TRUE(HasLog(ERROR, "exception: Failed to set ble adv interval"));
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::JournalText(), Texts({Write(100)})) << "it was never begun";
    Start(1);
    simulator::FailCall("vconf_set_int", -7);
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_OPERATION_FAILED);
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::IntSetting(GetParam().key), 0);
    EXPECT_TRUE(app.states.empty());
}

TEST_P(AdvertisementOf, GoesOnDuringAScan)
{
    app.StartScan();
    Forget();
    EXPECT_EQ(Start(4), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::JournalText(), Texts({Write(300), Write(0)}));
    EXPECT_TRUE(app.states.empty());
    EXPECT_TRUE(simulator::Alive().scanning);
}

INSTANTIATE_TEST_SUITE_P(Each, AdvertisementOf,
                         ::testing::Values(Advertiser{"mirroring", kMirroringTrigger},
                                           Advertiser{"kov", kKovTrigger}),
                         [](const auto& test) { return std::string(test.param.service); });

using NodLinkAdvertisement = AppTest;

TEST_F(NodLinkAdvertisement, IsNotSupportedAndNoFailure)
{
    Begin("nodlink");
    EXPECT_EQ(lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_EQ(CountLog(WARN, "Not supported"), 2);
    EXPECT_TRUE(simulator::JournalText().empty());
}

}  // namespace
}  // namespace lyn::test
