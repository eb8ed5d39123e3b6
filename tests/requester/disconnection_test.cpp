// SPDX-License-Identifier: Apache-2.0
//
// Links that are lost at each step of the exchange, and the reports that follow the TV's own disconnect.
#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

constexpr const char* kTooEarly = "GATT disconnected before requesting is done";
constexpr const char* kPrompt = "HCI_disconnection_complted, prompt 133 error";

class Lost : public MirroringRequest {
protected:
    /// The TV has been asked, the link is up, and the phone says nothing.
    void BeConnected()
    {
        PhoneAnswers({StaysSilent()});
        Ask();
        ASSERT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
        simulator::ClearJournal();
        simulator::ClearLog();
    }

    void ReportDisconnection(int code)
    {
        const auto registration = simulator::ConnectionRegistration();
        ASSERT_NE(registration.callback, nullptr);
        registration.callback(code, false, kPhone, registration.userData);
        simulator::Settle();
    }
};

TEST_F(Lost, EndsInGattFailAtOnceWithAnyNormalCode)
{
    struct Case {
        int code;
        Texts errors;
    };
    const std::vector<Case> cases = {
        {0, {kTooEarly}},
        {kReportedAsSuccess, {kTooEarly}},
        {kHciDisconnection, {"error case", kPrompt, kTooEarly}},
    };
    for (const Case& tested : cases) {
        SCOPED_TRACE(tested.code);
        PhoneAnswers({Drops(tested.code)});
        app.results.clear();
        AskFromHere();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_EQ(Messages(ERROR), tested.errors);
        EXPECT_TRUE(HasLog(INFO, "disconnected gatt [AA:BB:CC:DD:EE:01]"));
        EXPECT_TRUE(ArmedTimeouts().empty());
        EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 0) << "it is gone already";
        EXPECT_EQ(simulator::Alive().clients, 0);
        EXPECT_FALSE(simulator::Alive().boosted);
        EXPECT_EQ(simulator::ConnectionRegistration().callback, nullptr);
    }
}

TEST_F(Lost, MakesThesePlatformCalls)
{
    BeConnected();
    ReportDisconnection(0);
    EXPECT_EQ(simulator::JournalText(),
              Join({{"bt_gatt_client_unset_characteristic_value_changed_cb()", "bt_gatt_client_destroy()",
                     "bt_gatt_unset_connection_state_changed_cb()"},
                    BoostOff(),
                    {"bt_gatt_unset_connection_state_changed_cb()"}}));
    EXPECT_TRUE(LogsInOrder({{INFO, "AA:BB:CC:DD:EE:01 is disconnected"},
                             {INFO, "forward callback to user"},
                             {INFO, "disconnected gatt [AA:BB:CC:DD:EE:01]"},
                             {ERROR, kTooEarly},
                             {INFO, "in custom deleter of m_GattClient"}}));
}

TEST_F(Lost, ReleasesTheClientAfterAnHciDisconnection)
{
    BeConnected();
    ReportDisconnection(kHciDisconnection);
    // The client takes the report for an error and keeps its state; the requester lets it go.
    EXPECT_EQ(simulator::JournalText(),
              Join({BoostOff(),
                    {"bt_gatt_unset_connection_state_changed_cb()",
                     "bt_gatt_client_unset_characteristic_value_changed_cb()", "bt_gatt_client_destroy()"}}));
    EXPECT_TRUE(LogsInOrder({{ERROR, "error case"},
                             {INFO, "forward callback to user"},
                             {ERROR, kPrompt},
                             {INFO, "disconnected gatt [AA:BB:CC:DD:EE:01]"},
                             {ERROR, kTooEarly},
                             {INFO, "in custom deleter of m_GattClient"}}));
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(Lost, OnlySpeaksOfAnyOtherCode)
{
    for (const int code : {1, -1, 133, kConnectTimedOut, static_cast<int>(0xFE400105)}) {
        SCOPED_TRACE(code);
        BeConnected();
        ReportDisconnection(code);
        EXPECT_EQ(Messages(ERROR), (Texts{"error case", "disconnection fail"}));
        EXPECT_EQ(simulator::JournalText(), Texts{}) << "the client is kept";
        EXPECT_FALSE(HasLog(INFO, "disconnected gatt [AA:BB:CC:DD:EE:01]"));
        EXPECT_TRUE(app.results.empty());
        LetTimeOut();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        app.results.clear();
    }
}

TEST_F(Lost, TimesOutAfterALossWithAnotherCode)
{
    PhoneAnswers({Drops(-8)});
    Ask();
    EXPECT_TRUE(app.results.empty());
    simulator::ClearJournal();
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(simulator::JournalText(), Join({BoostOff(), Disconnect()})) << "and no report comes any more";
    EXPECT_FALSE(HasLog(INFO, "in custom deleter of m_GattClient"));

    // The client that was kept goes when the next request makes its own.
    PhoneAnswers({Says("Success")});
    AskFromHere();
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    const Texts begin = Join({{"bt_adapter_le_stop_scan()", "bt_gatt_unset_connection_state_changed_cb()"},
                              BoostOn(),
                              Connect(),
                              SetUpLink()});
    const Texts calls = simulator::JournalText();
    ASSERT_GE(calls.size(), begin.size());
    EXPECT_EQ(Texts(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(begin.size())), begin);
    EXPECT_EQ(CountLog(INFO, "in custom deleter of m_GattClient"), 2);
}

TEST_F(Lost, IsAFailureAgainInTheExchangeAfterAKeptClient)
{
    PhoneAnswers({Drops(-8), Drops(0)});
    Ask();
    LetTimeOut();
    AskFromHere();
    ASSERT_EQ(app.results.size(), 2U) << "that the exchange before was done says nothing about this one";
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(Messages(ERROR), Texts{kTooEarly});
}

TEST_F(Lost, EndsInGattFailBeforeItWasEverUp)
{
    phone.connects = {{0, 60}};
    simulator::AddPhone(phone);
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ReportDisconnection(0);
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(Messages(ERROR), Texts{kTooEarly});
}

TEST_F(Lost, EndsInGattFailBeforeItWasEverUpAfterAKeptClient)
{
    PhoneAnswers({Drops(-8)});
    Ask();
    LetTimeOut();
    phone.connects = {{0, 60}};
    simulator::AddPhone(phone);
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ReportDisconnection(0);
    EXPECT_EQ(app.results.size(), 2U) << "or the service would wait for ever";
}

TEST_F(Lost, EndsInGattFailBeforeTheMtuIsKnown)
{
    phone.mtuDelayMs = 60;
    phone.dropAfterConnectMs = 20;
    simulator::AddPhone(phone);
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(MessagesToPhone(), Texts{});
}

TEST_F(Lost, EndsInGattFailDuringTheWrite)
{
    for (const bool beforeCompletion : {true, false}) {
        SCOPED_TRACE(beforeCompletion);
        simulator::Answer answer = Drops(0);
        answer.beforeCompletion = beforeCompletion;
        PhoneAnswers({answer});
        app.results.clear();
        Ask();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_EQ(simulator::Alive().registrations, 0);
    }
}

TEST_F(Lost, EndsInGattFailWhenBluetoothIsSwitchedOff)
{
    BeConnected();
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    simulator::Settle();
    if (app.results.empty()) {
        LetTimeOut();
    }
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(Lost, EndsInGattFailWhenThePhoneGoesAway)
{
    BeConnected();
    simulator::RemovePhone(kPhone);
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_TRUE(ArmedTimeouts().empty());
}

struct ReportAfterTheAnswer {
    const char* name;
    int code;
    Texts errors;
    bool released;
};

class AfterTheAnswer : public MirroringRequest, public ::testing::WithParamInterface<ReportAfterTheAnswer> {};

TEST_P(AfterTheAnswer, ADisconnectionMakesNoSecondResult)
{
    phone.disconnectCode = GetParam().code;
    simulator::AddPhone(phone);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(Messages(ERROR), GetParam().errors);
    EXPECT_EQ(CountLog(INFO, "in custom deleter of m_GattClient"), GetParam().released ? 1 : 0);
    EXPECT_EQ(simulator::Alive().clients, 0);
    Ask();
    EXPECT_EQ(app.results.size(), 2U);
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, AfterTheAnswer,
    ::testing::Values(ReportAfterTheAnswer{"None", 0, {}, true},
                      ReportAfterTheAnswer{"ReportedAsSuccess", kReportedAsSuccess, {}, true},
                      ReportAfterTheAnswer{"Hci", kHciDisconnection, {"error case", kPrompt}, true},
                      ReportAfterTheAnswer{"Other", -6, {"error case", "disconnection fail"}, false}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(FeatureRequest, EndsInGattFailWhenThePhoneHangsUp)
{
    PhoneAnswers({Drops(0)});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(CountLog(ERROR, kTooEarly), 1);
}

TEST_F(NodLinkRequest, EndsInGattFailWhenThePhoneHangsUpInTheSecondStep)
{
    simulator::WriteFile("/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json", "{}");
    PhoneAnswers({Says(R"({"type":"fgApp","packageName":"a"})"), Drops(0)});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(MessagesToPhone().size(), 2U);
    EXPECT_TRUE(HasLog(ERROR, kTooEarly));
}

}  // namespace
}  // namespace lyn::test
