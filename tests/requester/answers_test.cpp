// SPDX-License-Identifier: Apache-2.0
//
// What phones say, and what the application is told of it.
#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

struct AnswerCase {
    std::string name;
    std::string answer;
    lyn_request_initiating_result_e result;
};

const std::vector<AnswerCase>& AnswerCases()
{
    static const std::vector<AnswerCase> cases = {
        {"Success", "Success", LYN_REQUEST_INITIATING_RESULT_SUCCESS},
        {"GattFail", "GattFail", LYN_REQUEST_INITIATING_RESULT_GATT_FAIL},
        {"NotRegisteredDevice", "NotRegisteredDevice", LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE},
        {"UnknownErr", "UnknownErr", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"CommandErr", "CommandErr", LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR},
        {"NotSupported", "NotSupported", LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED},
        {"Connected", "Connected", LYN_REQUEST_INITIATING_RESULT_CONNECTED},
        {"NotTap", "NotTap", LYN_REQUEST_INITIATING_RESULT_NOT_TAP},
        {"NotStartedKov", "NotStartedKov", LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_KOV},
        {"NotStartedMirroring", "NotStartedMirroring", LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING},
        {"GattDisconnected", "GattDisconnected", LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED},
        {"AnotherCase", "success", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"ABlankBehind", "Success ", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"ANewlineBehind", "Success\n", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"OneByte", "S", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"TextBehindANul", std::string("Success\0junk", 12), LYN_REQUEST_INITIATING_RESULT_SUCCESS},
        {"ANulAlone", std::string("\0", 1), LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"ANulInFront", std::string("\0Success", 8), LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"BytesThatAreNoText", "\xff\xfe\x01\x80%s%n", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"ALongText", std::string(512, 'A'), LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
    };
    return cases;
}

class Answers : public MirroringRequest, public ::testing::WithParamInterface<AnswerCase> {};

TEST_P(Answers, BecomeOneResult)
{
    PhoneAnswers({Says(GetParam().answer)});
    AskFromHere();
    EXPECT_EQ(Result(), GetParam().result);
    EXPECT_TRUE(HasLog(INFO, std::string("data : ") + GetParam().answer.c_str()));
    EXPECT_TRUE(HasLog(INFO, std::string("value : ") + GetParam().answer.c_str() +
                                 ", len : " + std::to_string(GetParam().answer.size())));
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 1);
    EXPECT_TRUE(ArmedTimeouts().empty());
}

INSTANTIATE_TEST_SUITE_P(Texts, Answers, ::testing::ValuesIn(AnswerCases()),
                         [](const auto& tested) { return tested.param.name; });

// The other features take plain answers in the same way; those of Kov are never read as JSON either.
TEST_F(KovRequest, TakesJsonForAPlainAnswer)
{
    PhoneAnswers({Says(R"({"type":"fgApp","packageName":"a"})")});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR);
    EXPECT_EQ(MessagesToPhone().size(), 1U);
}

TEST_F(MirroringRequest, TakesJsonForAPlainAnswerHoweverDeep)
{
    PhoneAnswers({Says(std::string(5000, '['))});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR);
}

TEST_P(FeatureRequest, IgnoresEmptyNotifications)
{
    PhoneAnswers({Says("")});
    Ask();
    EXPECT_TRUE(app.results.empty());
    EXPECT_EQ(CountLog(ERROR, "wrong data"), 1);
    EXPECT_EQ(ArmedTimeouts(), std::vector<unsigned>{10}) << "still waiting";
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

/// The phone has the message and thinks; the test speaks in its place.
class Notified : public MirroringRequest {
protected:
    Notified()
    {
        PhoneAnswers({StaysSilent()});
        Ask();
        m_registration = simulator::ValueRegistration(feature.characteristicUuid);
        m_handle = simulator::CharacteristicHandle(feature.characteristicUuid);
        simulator::ClearJournal();
        simulator::ClearLog();
    }

    void Notify(std::string value) { Notify(m_handle, value.data(), static_cast<int>(value.size())); }

    void Notify(bt_gatt_h handle, char* value, int length)
    {
        m_registration.callback(handle, value, length, m_registration.userData);
    }

    simulator::Registration<bt_gatt_client_characteristic_value_changed_cb> m_registration;
    bt_gatt_h m_handle = nullptr;
};

TEST_F(Notified, TakesAnAnswerAfterAnEmptyNotification)
{
    Notify("");
    std::string value = "Success";
    Notify(m_handle, value.data(), 0);
    Notify(m_handle, value.data(), -1);
    EXPECT_EQ(CountLog(ERROR, "wrong data"), 3);
    EXPECT_EQ(simulator::JournalText(), Texts{});
    Notify("Success");
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(Notified, DoesNotCutTheAnswerAtItsLength)
{
    std::string value = "Success";
    Notify(m_handle, value.data(), 3);
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_TRUE(HasLog(INFO, "value : Success, len : 3"));
}

TEST_F(Notified, ForgetsASecondAnswer)
{
    Notify("Success");
    simulator::ClearJournal();
    Notify("NotTap");
    EXPECT_EQ(simulator::JournalText(), Texts{});
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(Notified, IgnoresOtherCharacteristics)
{
    std::string value = "Success";
    int other = 0;
    Notify(&other, value.data(), 7);
    Notify(nullptr, value.data(), 7);
    EXPECT_EQ(Messages(ERROR), (Texts{"handle is invalid", "handle is invalid"}));
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(Notified, SaysAndForgetsANotificationWithoutUserData)
{
    std::string value = "Success";
    m_registration.callback(m_handle, value.data(), 7, nullptr);
    EXPECT_EQ(Messages(ERROR).size(), 1U);
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
    LetTimeOut();
}

TEST_F(Notified, TakesNoValueForNoAnswer)
{
    Notify(m_handle, nullptr, 0);
    Notify(m_handle, nullptr, 5);
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
    EXPECT_EQ(CountLog(ERROR, "wrong data"), 2);
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(Notified, TakesAnAnswerThatDiesWithTheClient)
{
    // The platform's own buffer: gone as soon as the callback returns, and no longer than its terminator.
    auto* value = new char[8]{'S', 'u', 'c', 'c', 'e', 's', 's', '\0'};
    Notify(m_handle, value, 7);
    delete[] value;
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(MirroringRequest, HasOneResultHoweverOftenThePhoneAnswers)
{
    simulator::Answer answer = Says("Connected");
    answer.repeat = 5;
    PhoneAnswers({answer});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_CONNECTED);
    EXPECT_EQ(CountLog(INFO, "data : Connected"), 1);
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 1);
}

TEST_F(MirroringRequest, TakesAnAnswerThatOvertakesTheWritesEnd)
{
    simulator::Answer answer = Says("Connected");
    answer.beforeCompletion = true;
    PhoneAnswers({answer});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_CONNECTED);
    EXPECT_EQ(Messages(ERROR), Texts{});
    EXPECT_FALSE(HasLog(INFO, "result : 0")) << "nobody is left to hear of it";
}

TEST_F(MirroringRequest, TakesALateAnswer)
{
    simulator::Answer answer = Says("NotTap");
    answer.delayMs = 60;
    PhoneAnswers({answer});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_NOT_TAP);
}

}  // namespace
}  // namespace lyn::test
