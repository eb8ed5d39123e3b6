// SPDX-License-Identifier: Apache-2.0
//
// From the request to the link: refused connects, attempts that fail, and how often they are repeated.
#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

std::string TryAgain(int count)
{
    return "133 error, try again, m_GattRetryCount : " + std::to_string(count) + ", address : AA:BB:CC:DD:EE:01 ";
}

class Connecting : public MirroringRequest {
protected:
    void PhoneConnects(const std::vector<int>& codes)
    {
        phone.connects.clear();
        for (const int code : codes) {
            phone.connects.push_back({code, 0});
        }
        simulator::AddPhone(phone);
    }

    static int Attempts() { return CountCalls("bt_gatt_connect"); }
};

TEST_F(Connecting, IsTriedSixTimesAtMost)
{
    PhoneConnects({133});
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(Attempts(), 6);
    EXPECT_EQ(Messages(ERROR),
              (Texts{TryAgain(1), "133 error, try again", TryAgain(2), "133 error, try again", TryAgain(3),
                     "133 error, try again", TryAgain(4), "133 error, try again", TryAgain(5),
                     "133 error, try again", "Connection Error", "connection fail"}));
    EXPECT_EQ(CountLog(INFO, "forward callback to user"), 1) << "the retries are nobody's business";
    EXPECT_TRUE(ArmedTimeouts().empty());
    EXPECT_EQ(CountCalls("bt_gatt_client_create"), 0);
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 0);
}

TEST_F(Connecting, TakesADeviceIdInLowerCase)
{
    PhoneAnswers({Says("Success")});
    EXPECT_EQ(app.Request("aa:bb:cc:dd:ee:01"), LYN_ERROR_NONE);
    EXPECT_TRUE(app.WaitForResult());
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(Calls("bt_gatt_connect"), (Texts{"bt_gatt_connect(\"aa:bb:cc:dd:ee:01\", false)"})) << "as given";
}

TEST_F(Connecting, MakesThesePlatformCallsWhenEveryAttemptFails)
{
    PhoneConnects({-1});
    AskFromHere();
    const Texts connect = {"bt_gatt_connect(\"AA:BB:CC:DD:EE:01\", false)"};
    EXPECT_EQ(simulator::JournalText(), Join({{"bt_adapter_le_stop_scan()"},
                                              BoostOn(),
                                              Connect(),
                                              connect,
                                              connect,
                                              connect,
                                              connect,
                                              connect,
                                              BoostOff(),
                                              {"bt_gatt_unset_connection_state_changed_cb()"}}));
}

TEST_F(Connecting, IsRepeatedUntilItSucceeds)
{
    for (int failures = 1; failures <= 5; ++failures) {
        SCOPED_TRACE(failures);
        std::vector<int> codes(static_cast<std::size_t>(failures), 133);
        codes.push_back(0);
        PhoneConnects(codes);
        AskFromHere();
        ASSERT_FALSE(app.results.empty());
        EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        EXPECT_EQ(Attempts(), failures + 1);
        EXPECT_EQ(CountLog(ERROR, "133 error, try again"), failures);
        EXPECT_TRUE(HasLog(ERROR, TryAgain(failures)));
        EXPECT_FALSE(HasLog(ERROR, TryAgain(failures + 1)));
        EXPECT_EQ(CountCalls("bt_gatt_set_connection_state_changed_cb"), 1) << "registered once for all attempts";
    }
}

TEST_F(Connecting, IsRepeatedWhateverTheFailuresCode)
{
    for (const int code : {1, -1, 133, -110, kHciDisconnection, static_cast<int>(0xC0000002)}) {
        SCOPED_TRACE(code);
        PhoneConnects({code, 0});
        AskFromHere();
        EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        EXPECT_EQ(Attempts(), 2);
    }
}

TEST_F(Connecting, BeginsToCountAnewWithTheNextRequest)
{
    PhoneConnects({133});
    AskFromHere();
    EXPECT_EQ(Attempts(), 6);
    AskFromHere();
    EXPECT_EQ(Attempts(), 6);
    EXPECT_EQ(app.results,
              (std::vector{LYN_REQUEST_INITIATING_RESULT_GATT_FAIL, LYN_REQUEST_INITIATING_RESULT_GATT_FAIL}));
}

TEST_F(Connecting, IsNotRepeatedAfterTheTimeOutCode)
{
    PhoneConnects({kConnectTimedOut, 0});
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(Attempts(), 1);
    EXPECT_EQ(Messages(ERROR), (Texts{"connection timeout", "connection timeout", "connection fail"}));
    EXPECT_FALSE(simulator::Alive().boosted);
}

TEST_F(Connecting, EndsAtTheTimeOutCodeOfALaterAttempt)
{
    PhoneConnects({133, 133, kConnectTimedOut, 0});
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(Attempts(), 3);
}

TEST_F(Connecting, EndsWhenAPhoneIsNotThere)
{
    simulator::RemovePhone(kPhone);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(Attempts(), 1) << "the platform has given up waiting";
}

TEST_F(Connecting, EndsWhenARepetitionIsRefused)
{
    PhoneConnects({133});
    simulator::FailCall("bt_gatt_connect", -5, 3);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(Attempts(), 3);
    EXPECT_EQ(Messages(ERROR),
              (Texts{TryAgain(1), "133 error, try again", "Connection Error", "connection fail"}));
}

TEST_F(Connecting, TakesThisReportForSuccess)
{
    PhoneConnects({kReportedAsSuccess});
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(Attempts(), 1);
    EXPECT_EQ(Messages(ERROR), Texts{});
    EXPECT_TRUE(HasLog(INFO, "AA:BB:CC:DD:EE:01 is connected"));
}

TEST_F(Connecting, ReturnsAFailureWhenTheRegistrationIsRefused)
{
    simulator::FailCall("bt_gatt_set_connection_state_changed_cb", -3, 1);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_OPERATION_FAILED);
    simulator::Settle();
    EXPECT_EQ(simulator::JournalText().back(), "bt_gatt_unset_connection_state_changed_cb()");
    EXPECT_EQ(Messages(ERROR),
              (Texts{"fail to bt_gatt_set_connection_state_changed_cb", "Fail to connect gatt AA:BB:CC:DD:EE:01",
                     "fail to RequestInitiating", "exception: fail to RequestInitiating"}));
    EXPECT_TRUE(HasLog(INFO, "in custom deleter of m_GattClient"));
    EXPECT_EQ(Attempts(), 0);
    EXPECT_TRUE(app.results.empty()) << "the caller knows already";
    EXPECT_FALSE(simulator::Alive().boosted);
}

TEST_F(Connecting, ReturnsAFailureWhenTheConnectIsRefused)
{
    simulator::FailCall("bt_gatt_connect", -3, 1);
    app.events.clear();
    simulator::ClearJournal();
    simulator::ClearLog();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_OPERATION_FAILED);
    simulator::Settle();
    // Un-registered by the refused connect and by the client's release.
    EXPECT_EQ(simulator::JournalText(), Join({{"bt_adapter_le_stop_scan()"},
                                              BoostOn(),
                                              Connect(),
                                              {"bt_gatt_unset_connection_state_changed_cb()"},
                                              BoostOff(),
                                              {"bt_gatt_unset_connection_state_changed_cb()"}}));
    EXPECT_EQ(Messages(ERROR),
              (Texts{"fail to bt_gatt_connect to AA:BB:CC:DD:EE:01", "Fail to connect gatt AA:BB:CC:DD:EE:01",
                     "fail to RequestInitiating", "exception: fail to RequestInitiating"}));
    EXPECT_TRUE(app.results.empty());
    EXPECT_EQ(app.events, Texts{"state 0"}) << "the stop of the scan, no request";
}

TEST_F(Connecting, WorksAgainAfterARefusal)
{
    simulator::FailCall("bt_gatt_connect", -3, 1);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_OPERATION_FAILED);
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(Connecting, RefusesWhatIsNoAddress)
{
    for (const char* address : {"", "Kitchen", "AA:BB:CC:DD:EE", "AA:BB:CC:DD:EE:01:02"}) {
        SCOPED_TRACE(address);
        EXPECT_EQ(app.Request(address), LYN_ERROR_OPERATION_FAILED);
    }
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
}

TEST_F(Connecting, IsRefusedWhileBluetoothIsOff)
{
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_OPERATION_FAILED);
    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(Connecting, SaysAndForgetsAReportWithoutAnAddress)
{
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    const auto registration = simulator::ConnectionRegistration();
    ASSERT_NE(registration.callback, nullptr);
    registration.callback(0, true, nullptr, registration.userData);
    registration.callback(0, true, nullptr, nullptr);
    EXPECT_EQ(CountLog(ERROR, "remote_address is nullptr"), 2) << "the address is looked at first";
    EXPECT_FALSE(HasLog(ERROR, "userData is nullptr"));
    EXPECT_EQ(CountCalls("bt_gatt_client_create"), 0);
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(Connecting, SaysAndForgetsAReportWithoutUserData)
{
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    simulator::ConnectionRegistration().callback(0, true, kPhone, nullptr);
    EXPECT_EQ(Messages(ERROR), Texts{"userData is nullptr"});
    EXPECT_EQ(CountCalls("bt_gatt_client_create"), 0);
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(Connecting, IgnoresReportsAboutOtherPhones)
{
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    const auto registration = simulator::ConnectionRegistration();
    simulator::ClearJournal();
    registration.callback(0, true, kOtherPhone, registration.userData);
    registration.callback(133, true, kOtherPhone, registration.userData);
    registration.callback(0, false, kOtherPhone, registration.userData);
    registration.callback(0, true, "", registration.userData);
    EXPECT_EQ(Messages(ERROR), (Texts{"other device", "other device", "other device", "other device"}));
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_FALSE(HasLog(INFO, "forward callback to user"));
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(Connecting, KeepsOneTimeOutWhenTheConnectionIsReportedTwice)
{
    phone.mtuDelayMs = 20;
    PhoneAnswers({StaysSilent()});
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    const auto registration = simulator::ConnectionRegistration();
    ASSERT_TRUE(RunUntilCalled("bt_gatt_client_request_att_mtu_change"));
    registration.callback(0, true, kPhone, registration.userData);
    EXPECT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    EXPECT_EQ(simulator::Alive().clients, 1);
    simulator::Settle();
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(Connecting, ForgetsReportsThatComeAfterTheEnd)
{
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    const auto registration = simulator::ConnectionRegistration();
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    simulator::ClearJournal();
    simulator::ClearLog();
    for (const bool connected : {true, false}) {
        registration.callback(0, connected, kPhone, registration.userData);
        registration.callback(133, connected, kPhone, registration.userData);
    }
    simulator::Settle();
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_EQ(Messages(ERROR), Texts{});
    EXPECT_EQ(app.results.size(), 1U);
}

}  // namespace
}  // namespace lyn::test
