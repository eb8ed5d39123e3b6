// SPDX-License-Identifier: Apache-2.0
//
// MTU reports and write completions as no platform should make them, and all reports that come too late.
#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

bt_gatt_client_att_mtu_info_s MtuInfo()
{
    return {kPhone, 256, 0};
}

/// Connected; the MTU has been asked for and is not known yet.
class AskingForTheMtu : public MirroringRequest {
protected:
    AskingForTheMtu()
    {
        phone.mtuDelayMs = 40;
        simulator::AddPhone(phone);
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(RunUntilCalled("bt_gatt_client_request_att_mtu_change"));
        m_registration = simulator::MtuRegistration();
        m_client = simulator::ClientHandle();
        simulator::ClearJournal();
        simulator::ClearLog();
    }

    void Report(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* info)
    {
        m_registration.callback(client, info, m_registration.userData);
    }

    void ExpectNothingHappened() { EXPECT_EQ(simulator::JournalText(), Texts{}); }

    void ExpectSuccessAfterAll()
    {
        simulator::Settle();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        EXPECT_EQ(MessagesToPhone().size(), 1U);
    }

    simulator::Registration<bt_gatt_client_att_mtu_changed_cb> m_registration;
    bt_gatt_client_h m_client = nullptr;
};

TEST_F(AskingForTheMtu, SaysAndForgetsAReportWithoutUserData)
{
    const auto info = MtuInfo();
    m_registration.callback(m_client, &info, nullptr);
    EXPECT_EQ(Messages(ERROR), Texts{"userData is nullptr"});
    ExpectNothingHappened();
    ExpectSuccessAfterAll();
}

TEST_F(AskingForTheMtu, SaysAndForgetsAReportWithoutAClient)
{
    const auto info = MtuInfo();
    Report(nullptr, &info);
    EXPECT_EQ(Messages(ERROR), Texts{"client handle is nullptr"});
    ExpectNothingHappened();
    ExpectSuccessAfterAll();
}

TEST_F(AskingForTheMtu, SaysAndForgetsAReportThatTellsNothing)
{
    Report(m_client, nullptr);
    EXPECT_EQ(Messages(ERROR), Texts{"client handle is nullptr"}) << "kept: the same text as without a client";
    ExpectNothingHappened();
    ExpectSuccessAfterAll();
}

TEST_F(AskingForTheMtu, SaysAndForgetsAReportOfAnotherClient)
{
    const auto info = MtuInfo();
    int other = 0;
    Report(&other, &info);
    EXPECT_EQ(Messages(ERROR), Texts{"mtu changed for other client"});
    ExpectNothingHappened();
    ExpectSuccessAfterAll();
}

TEST_F(AskingForTheMtu, WritesOnceWhenTheMtuIsReportedTwice)
{
    const auto info = MtuInfo();
    Report(m_client, &info);
    EXPECT_EQ(CountCalls("bt_gatt_client_write_value"), 1);
    EXPECT_EQ(simulator::JournalText().back(), "bt_gatt_client_unset_att_mtu_changed_cb()");
    EXPECT_EQ(simulator::MtuRegistration().callback, nullptr);
    simulator::ClearJournal();
    Report(m_client, &info);
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_EQ(Messages(ERROR).size(), 1U) << "nobody waits for a second one";
    ExpectSuccessAfterAll();
}

TEST_F(AskingForTheMtu, ForgetsAReportThatComesAfterTheDisconnect)
{
    const auto info = MtuInfo();
    simulator::Settle();
    simulator::ClearJournal();
    simulator::ClearLog();
    Report(m_client, &info);
    ExpectNothingHappened();
    EXPECT_EQ(Messages(ERROR), Texts{});
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

/// The message has been written; the phone thinks, and the test speaks for the platform.
class Writing : public MirroringRequest {
protected:
    Writing()
    {
        PhoneAnswers({StaysSilent()});
        Ask();
        m_registration = simulator::WriteRegistration(feature.characteristicUuid);
        m_handle = simulator::CharacteristicHandle(feature.characteristicUuid);
        simulator::ClearJournal();
        simulator::ClearLog();
    }

    void Complete(int result, bt_gatt_h handle)
    {
        m_registration.callback(result, handle, m_registration.userData);
    }

    simulator::Registration<bt_gatt_client_request_completed_cb> m_registration;
    bt_gatt_h m_handle = nullptr;
};

TEST_F(Writing, SaysAndForgetsACompletionWithoutUserData)
{
    m_registration.callback(5, m_handle, nullptr);
    EXPECT_EQ(Messages(ERROR), Texts{"userData is nullptr"});
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
}

TEST_F(Writing, SaysAndForgetsACompletionOfAnotherCharacteristic)
{
    int other = 0;
    Complete(5, &other);
    Complete(5, nullptr);
    EXPECT_EQ(Messages(ERROR), (Texts{"handle is invalid", "handle is invalid"}));
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
}

TEST_F(Writing, TakesASecondCompletion)
{
    Complete(0, m_handle);
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_EQ(CountLog(INFO, "result : 0"), 2) << "the callback stays";
    Complete(5, m_handle);
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(Writing, ForgetsACompletionThatComesAfterTheEnd)
{
    LetTimeOut();
    simulator::ClearJournal();
    simulator::ClearLog();
    Complete(5, m_handle);
    simulator::Settle();
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_EQ(Messages(ERROR), Texts{});
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

// Requests out of the result callback, and services that go while they ask.

TEST_P(FeatureRequest, CanBeMadeAgainFromInsideTheResultHundredsOfTimes)
{
    constexpr std::size_t rounds = 300;
    PhoneAnswers({Says("Success"), Drops(0), Says("NotTap"), RefusesWrite(5)});
    phone.services[0].characteristics[0].answersPerLink = false;
    simulator::SetJournal(false);
    simulator::SetLogCapture(7);
    app.onResult = [&](lyn_request_initiating_result_e) {
        if (app.results.size() < rounds) {
            EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        }
    };
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([&] { return app.results.size() >= rounds; }, 60000));
    simulator::Settle();
    EXPECT_EQ(app.results.size(), rounds);
    EXPECT_EQ(simulator::Alive().clients, 0);
    EXPECT_EQ(simulator::Alive().links, 0);
    EXPECT_TRUE(ArmedTimeouts().empty());
}

TEST_P(FeatureRequest, CanBeMadeByANewServiceFromInsideTheResultHundredsOfTimes)
{
    constexpr std::size_t rounds = 300;
    simulator::SetJournal(false);
    simulator::SetLogCapture(7);
    app.onResult = [&](lyn_request_initiating_result_e) {
        if (app.results.size() < rounds) {
            EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
            EXPECT_EQ(app.Create(feature.service), LYN_ERROR_NONE);
            EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        }
    };
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([&] { return app.results.size() >= rounds; }, 60000));
    EXPECT_EQ(app.results,
              std::vector<lyn_request_initiating_result_e>(rounds, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
}

TEST_P(FeatureRequest, IsForgottenWhenItsServiceGoesAtAnyStep)
{
    for (int steps = 0; steps < 12; ++steps) {
        SCOPED_TRACE(steps);
        PhoneAnswers({StaysSilent()});
        if (app.handle == nullptr) {
            ASSERT_EQ(app.Create(feature.service), LYN_ERROR_NONE);
        }
        app.results.clear();
        ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        for (int step = 0; step < steps; ++step) {
            g_main_context_iteration(nullptr, FALSE);
        }
        const SourceCallback timeout = LastTimeout();
        ASSERT_EQ(app.Destroy(), LYN_ERROR_NONE);
        EXPECT_EQ(simulator::Alive().clients, 0);
        EXPECT_EQ(simulator::Alive().registrations, 0);
        simulator::ClearJournal();
        while (ElapseTimeout()) {
            simulator::Settle();
        }
        if (timeout.function != nullptr) {
            EXPECT_EQ(timeout.function(timeout.data), FALSE);
        }
        simulator::Settle();
        EXPECT_EQ(simulator::JournalText(), Texts{});
        EXPECT_TRUE(app.results.empty());
        simulator::RemovePhone(kPhone);  // Ends a link that the service has left up.
        simulator::Settle();
    }
}

TEST_P(FeatureRequest, ReleasesItsClientWithTheService)
{
    PhoneAnswers({StaysSilent()});
    Ask();
    simulator::ClearJournal();
    simulator::ClearLog();
    ASSERT_EQ(app.Destroy(), LYN_ERROR_NONE);
    const Texts release = {"bt_gatt_unset_connection_state_changed_cb()",
                           "bt_gatt_client_unset_characteristic_value_changed_cb()", "bt_gatt_client_destroy()"};
    EXPECT_EQ(Calls("bt_gatt"), release) << "and no disconnect";
    EXPECT_TRUE(HasLog(INFO, "in custom deleter of m_GattClient"));
    EXPECT_TRUE(app.results.empty());
}

}  // namespace
}  // namespace lyn::test
