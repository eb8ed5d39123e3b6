// SPDX-License-Identifier: Apache-2.0
//
// "dummy": one fixed phone that agrees to everything, and no radio.
#include "service/AppTest.h"

namespace lyn::test {
namespace {

class DummyService : public AppTest {
protected:
    DummyService() { Begin("dummy"); }
};

TEST_F(DummyService, ReportsItsPhoneOnceBeforeTheStartOfTheScanReturns)
{
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    ASSERT_EQ(app.phones.size(), 1U);
    EXPECT_EQ(app.phones[0],
              (FoundPhone{true, "myDevice", "11:22:33:44:55:66", "q1w2e3r4t5y6", R"({"appid":"music"})", -48}));
    simulator::Settle();
    EXPECT_EQ(app.phones.size(), 1U);
}

TEST_F(DummyService, ReportsItsPhoneBeforeItIsScanning)
{
    app.StartScan();
    EXPECT_EQ(app.events, Texts({"phone 11:22:33:44:55:66", "state 1"}));
}

TEST_F(DummyService, RefusesASecondStartAndReportsNothingForIt)
{
    app.StartScan();
    Forget();
    EXPECT_EQ(app.StartScan(), LYN_ERROR_INVALID_STATE);
    EXPECT_TRUE(app.events.empty());
    EXPECT_EQ(Messages(ERROR), Texts({"Invalid State", "exception: Invalid State"}));
}

TEST_F(DummyService, ReportsItsPhoneAgainAfterAStop)
{
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
        EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    }
    ASSERT_EQ(app.phones.size(), 3U);
    EXPECT_EQ(app.phones[0], app.phones[1]);
    EXPECT_EQ(app.phones[0], app.phones[2]);
}

TEST_F(DummyService, ReportsReadyTwiceWhenAScanIsStopped)
{
    app.StartScan();
    Forget();
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_READY, LYN_STATE_READY}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(DummyService, ReportsReadyOnceWhenNoScanIsStopped)
{
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_READY}));
    EXPECT_TRUE(HasLog(ERROR, "Invalid State")) << "the scanner's report of the stop is refused and swallowed";
    EXPECT_FALSE(HasLogWith(ERROR, "exception: "));
}

TEST_F(DummyService, ReportsReadyReadyRequestingForARequestWhileScanning)
{
    app.StartScan();
    Forget();
    EXPECT_EQ(app.Request("11:22:33:44:55:66"), LYN_ERROR_NONE);
    EXPECT_EQ(app.events, Texts({"state 0", "state 0", "state 2"})) << "the result comes through the main loop";
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.events, Texts({"state 0", "state 0", "state 2", "state 0", "result 0"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(DummyService, ReportsReadyRequestingForARequestWhileReady)
{
    EXPECT_EQ(app.Request("11:22:33:44:55:66"), LYN_ERROR_NONE);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.events, Texts({"state 0", "state 2", "state 0", "result 0"}));
}

TEST_F(DummyService, CanBeAskedFromInsideTheReportOfItsPhone)
{
    app.onPhone = [&](const FoundPhone& phone) { EXPECT_EQ(app.Request(phone.address), LYN_ERROR_NONE); };
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.events, Texts({"phone 11:22:33:44:55:66", "state 0", "state 2", "state 0", "result 0"}));
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
}

TEST_F(DummyService, AgreesToARequestForWhateverPhone)
{
    for (const std::string address : {"", "nothing like an address", "11:22:33:44:55:66"}) {
        EXPECT_EQ(app.Request(address), LYN_ERROR_NONE);
        ASSERT_TRUE(app.WaitForResult());
        EXPECT_EQ(app.Request(address, "no JSON"), LYN_ERROR_NONE);
        ASSERT_TRUE(app.WaitForResult());
    }
    EXPECT_EQ(app.results, Results(6, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
}

TEST_F(DummyService, GivesOneResultForEachRequest)
{
    app.Request("id");
    ASSERT_TRUE(app.WaitForResult());
    simulator::Settle();
    EXPECT_EQ(app.results.size(), 1U);
}

TEST_F(DummyService, RefusesARequestDuringARequest)
{
    app.Request("id");
    Forget();
    EXPECT_EQ(app.Request("id"), LYN_ERROR_INVALID_STATE);
    EXPECT_TRUE(app.events.empty());
    ASSERT_TRUE(app.WaitForResult());
    simulator::Settle();
    EXPECT_EQ(app.events, Texts({"state 0", "result 0"}));
}

TEST_F(DummyService, AcceptsAdvertisingAndDoesNothing)
{
    for (int interval = 0; interval <= 4; ++interval) {
        EXPECT_EQ(lyn_start_advertise(app.handle, static_cast<lyn_adv_interval_e>(interval)), LYN_ERROR_NONE);
    }
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_TRUE(app.events.empty());
}

TEST_F(DummyService, HasNoNodlinkControls)
{
    nod_link_type type = 77;
    EXPECT_EQ(lyn_get_nodlink_type(app.handle, &type), LYN_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(type, 77);
    EXPECT_EQ(lyn_set_nodlink_version(app.handle, "2.0"), LYN_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(Messages(ERROR),
              Texts({"Not supported api for this service", "exception: Not supported api for this service",
                     "Not supported api for this service", "exception: Not supported api for this service"}));
}

TEST_F(DummyService, TouchesNoRadioAndNoSetting)
{
    app.StartScan();
    lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_100);
    app.Request("11:22:33:44:55:66");
    ASSERT_TRUE(app.WaitForResult());
    lyn_stop_advertise(app.handle);
    app.StopScan();
    EXPECT_TRUE(simulator::JournalText().empty()) << ::testing::PrintToString(simulator::JournalText());
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::JournalText(), Texts({"bt_product_deinit()"}));
}

TEST_F(DummyService, WorksWithBluetoothOff)
{
    SetBluetooth(BT_ADAPTER_DISABLED);
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.Request("id"), LYN_ERROR_NONE);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.results, Results({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
}

TEST_F(DummyService, PrintsTheLegendInTheMachinesTwoLinesOnly)
{
    app.StartScan();
    app.Request("id");
    ASSERT_TRUE(app.WaitForResult());
    int lines = 0;
    for (const Line& line : LogLines()) {
        if (line.message.find("0: READY") == std::string::npos) {
            continue;
        }
        ++lines;
        EXPECT_EQ(line.priority, WARN);
        EXPECT_TRUE(line.message.starts_with("current state : ") || line.message.starts_with("transit to "))
            << line.message;
        EXPECT_TRUE(line.message.ends_with(" (0: READY, 1: SCANNING, 2: REQUESTING, 3: NOT_READY)"))
            << line.message;
    }
    EXPECT_GT(lines, 8);
}

}  // namespace
}  // namespace lyn::test
