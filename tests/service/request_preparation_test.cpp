// SPDX-License-Identifier: Apache-2.0
//
// A request through the C interface: what it stops on the platform before it connects, and what becomes of
// it when that fails.
#include <algorithm>
#include <set>

#include "service/AppTest.h"

namespace lyn::test {
namespace {

// The services that advertise, with the key that they write.
struct Advertiser {
    const char* service;
    const char* key;
};

class RequestPreparation : public AppTest, public ::testing::WithParamInterface<Advertiser> {
protected:
    RequestPreparation()
    {
        simulator::AddPhone(PhoneFor(GetParam().service, "Success"));
        Begin(GetParam().service);
    }

    // What the preparation and the begin of the request do.
    static Texts Steps()
    {
        const std::set<std::string> steps = {"vconf_set_int", "bt_adapter_le_stop_scan", "bt_gatt_connect"};
        Texts calls;
        for (const simulator::Call& call : simulator::Journal()) {
            if (steps.count(call.function) > 0) {
                calls.push_back(call.function + "(" + call.arguments + ")");
            }
        }
        return calls;
    }

    static std::string WriteInterval(int interval)
    {
        return "vconf_set_int(\"" + std::string(GetParam().key) + "\", " + std::to_string(interval) + ")";
    }

    static std::string Connect()
    {
        const Texts calls = Calls("bt_gatt_connect");
        return calls.size() == 1 ? calls[0] : "not one connect";
    }

    static int AlreadyStoppedLines()
    {
        const Texts errors = Messages(ERROR);
        return static_cast<int>(std::count_if(errors.begin(), errors.end(), [](const std::string& line) {
            return line.starts_with("Current time : ") && line.ends_with(", Already stoppted");
        }));
    }

    void ExpectSuccess()
    {
        ASSERT_TRUE(app.WaitForResult());
        simulator::Settle();
        EXPECT_EQ(app.results, Results({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
    }
};

TEST_P(RequestPreparation, StopsTheScanAlsoWhenNoneRuns)
{
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_READY, LYN_STATE_REQUESTING}));
    EXPECT_EQ(Steps(), Texts({"bt_adapter_le_stop_scan()", Connect()}));
    EXPECT_EQ(AlreadyStoppedLines(), 0);
    ExpectSuccess();
}

TEST_P(RequestPreparation, StopsTheAdvertisementThenTheScan)
{
    lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_100);
    app.StartScan();
    Forget();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_READY, LYN_STATE_REQUESTING}));
    EXPECT_EQ(Steps(), Texts({WriteInterval(0), "bt_adapter_le_stop_scan()", Connect()}));
    EXPECT_FALSE(simulator::Alive().scanning);
    ExpectSuccess();
}

TEST_P(RequestPreparation, GoesOnWhenTheScanCannotBeStopped)
{
    app.StartScan();
    Forget();
    simulator::FailCall("bt_adapter_le_stop_scan", -7);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_REQUESTING}));
    EXPECT_TRUE(HasLog(ERROR, "fail to stop scan"));
    EXPECT_EQ(AlreadyStoppedLines(), 1);
    EXPECT_FALSE(HasLogWith(ERROR, "exception:"));
    EXPECT_TRUE(simulator::Alive().scanning);
    ExpectSuccess();
    EXPECT_EQ(app.states, States({LYN_STATE_REQUESTING, LYN_STATE_READY}));
}

TEST_P(RequestPreparation, GoesOnFromReadyWhenTheScanCannotBeStopped)
{
    simulator::FailCall("bt_adapter_le_stop_scan", -7);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_REQUESTING}));
    EXPECT_EQ(AlreadyStoppedLines(), 1);
    ExpectSuccess();
}

TEST_P(RequestPreparation, SkipsTheScanWhenTheAdvertisementCannotBeStopped)
{
    lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_100);
    app.StartScan();
    Forget();
    simulator::FailCall("vconf_set_int", -7);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_REQUESTING}));
    EXPECT_EQ(Steps(), Texts({WriteInterval(0), Connect()}));
    EXPECT_TRUE(simulator::Alive().scanning);
    EXPECT_EQ(AlreadyStoppedLines(), 1);
    ExpectSuccess();
}

TEST_P(RequestPreparation, TriesAgainToStopTheAdvertisementWithTheNextRequest)
{
    lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_100);
    simulator::FailCall("vconf_set_int", -7);
    app.Request(kPhone);
    ExpectSuccess();
    Forget();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(Steps(), Texts({WriteInterval(0), "bt_adapter_le_stop_scan()", Connect()}));
}

TEST_P(RequestPreparation, IsAllThatIsDoneWhenThePlatformRefusesToConnect)
{
    app.StartScan();
    Forget();
    simulator::FailCall("bt_gatt_connect", -7);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_OPERATION_FAILED);
    EXPECT_EQ(app.states, States({LYN_STATE_READY}));
    EXPECT_EQ(CountCalls("bt_gatt_connect"), 1);
    EXPECT_EQ(Calls("bt_adapter_le_enable"), Texts({"bt_adapter_le_enable_le_scan_performance_boost(false)",
                                                    "bt_adapter_le_enable_le_scan_performance_boost(true)",
                                                    "bt_adapter_le_enable_le_scan_performance_boost(false)"}));
    EXPECT_TRUE(
        LogsInOrder({{ERROR, "fail to RequestInitiating"}, {ERROR, "exception: fail to RequestInitiating"}}));
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ExpectSuccess();
}

TEST_P(RequestPreparation, IsRefusedDuringARequestAndStopsNothing)
{
    app.Request(kPhone);
    Forget();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_INVALID_STATE);
    EXPECT_TRUE(simulator::JournalText().empty());
    EXPECT_TRUE(app.states.empty());
    EXPECT_EQ(AlreadyStoppedLines(), 1);
    ExpectSuccess();
}

TEST_P(RequestPreparation, LogsTheRequestWithTheTime)
{
    app.Request(kPhone, "{\"a\":1}");
    const Texts lines = Messages(INFO);
    const auto isOurs = [](const std::string& line) {
        return line.starts_with("Current time : ") &&
               line.ends_with(", device address : AA:BB:CC:DD:EE:01, extra data : {\"a\":1}");
    };
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(), isOurs), 1);
    ASSERT_TRUE(app.WaitForResult());
}

INSTANTIATE_TEST_SUITE_P(Of, RequestPreparation,
                         ::testing::Values(Advertiser{"mirroring", kMirroringTrigger},
                                           Advertiser{"kov", kKovTrigger}),
                         [](const auto& test) { return std::string(test.param.service); });

using NodLinkRequestPreparation = AppTest;

TEST_F(NodLinkRequestPreparation, HasNoAdvertisementToStop)
{
    simulator::AddPhone(PhoneFor("nodlink", "Success"));
    Begin("nodlink");
    app.StartScan();
    Forget();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(CountLog(WARN, "Not supported"), 1);
    EXPECT_EQ(CountCalls("bt_adapter_le_stop_scan"), 1);
    EXPECT_TRUE(Calls("vconf_set_int").empty());
    EXPECT_EQ(app.states, States({LYN_STATE_READY, LYN_STATE_REQUESTING}));
    ASSERT_TRUE(app.WaitForResult());
}

}  // namespace
}  // namespace lyn::test
