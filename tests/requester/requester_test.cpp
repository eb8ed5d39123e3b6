// SPDX-License-Identifier: Apache-2.0
//
// What a requester does that its service does not show.
#include <memory>

#include "Common/LynException.h"
#include "Requester/CKovRequester.h"
#include "Requester/CNodLinkRequester.h"
#include "requester/RequesterTest.h"

namespace lyn::test {
namespace {

/// The base, which builds no message of its own.
class PlainRequester : public CRequester {
public:
    explicit PlainRequester(RequestResultCb cb) : CRequester(std::move(cb), kServiceUuid, kCharacteristicUuid) {}
};

using Requester = RequesterTest;

TEST_F(Requester, DeliversTheAnswerAsItIs)
{
    const auto requester = Make();
    for (const std::string& text : {std::string("Connected"), std::string("?!"), std::string(300, 'x'),
                                    std::string(" a b "), std::string("\xff")}) {
        simulator::Answer answer;
        answer.text = text;
        PhoneAnswers({answer});
        ASSERT_TRUE(Ask(*requester));
        simulator::Settle();
        ASSERT_FALSE(m_results.empty());
        EXPECT_EQ(m_results.back(), text);
    }
    EXPECT_EQ(m_results.size(), 5U);
}

TEST_F(Requester, DeliversFromTheMainLoopOnly)
{
    const auto requester = Make();
    const auto exchange = requester->Begin();
    requester->NotifyRequestResult(*exchange, "Success");
    EXPECT_TRUE(m_results.empty());
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"Success"});
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"Success"}) << "once";
}

TEST_F(Requester, DeliversTheResultStoredLastEachTime)
{
    const auto requester = Make();
    const auto exchange = requester->Begin();
    requester->NotifyRequestResult(*exchange, "first");
    requester->NotifyRequestResult(*exchange, "second");
    simulator::Settle();
    EXPECT_EQ(m_results, (Texts{"second", "second"}));
    requester->NotifyRequestResult(*exchange, "third");
    simulator::Settle();
    EXPECT_EQ(m_results.back(), "third");
    EXPECT_EQ(m_results.size(), 3U);
}

TEST_F(Requester, SaysThatNobodyWantsTheResult)
{
    const auto requester = std::make_shared<Open<CScreenMirroringRequester>>();
    requester->NotifyRequestResult(*requester->Begin(), "Success");
    EXPECT_EQ(Messages(ERROR), Texts{"m_RequestResultCallback is NULL"});
    simulator::Settle();
}

TEST_F(Requester, EndsTheTimeOutAlsoWhenNobodyWantsTheResult)
{
    PhoneAnswers({});
    const auto requester = std::make_shared<Open<CScreenMirroringRequester>>();
    ASSERT_TRUE(Ask(*requester));
    simulator::Settle();
    ASSERT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    EXPECT_TRUE(simulator::Alive().boosted);
    requester->NotifyRequestResult(*requester->Latest(), "Success");
    EXPECT_TRUE(ArmedTimeouts().empty());
    EXPECT_FALSE(simulator::Alive().boosted);
}

TEST_F(Requester, MayGoInsideItsResult)
{
    std::shared_ptr<Open<CScreenMirroringRequester>> requester;
    requester = std::make_shared<Open<CScreenMirroringRequester>>([&](const std::string& result) {
        const std::string copy = result;
        requester.reset();
        m_results.push_back(copy + result);
    });
    requester->Begin();
    requester->NotifyRequestResult(*requester->Latest(),
                                   "a text that is too long to be kept inside the string object itself");
    requester->NotifyRequestResult(*requester->Latest(),
                                   "another text that is too long to be kept inside the string object");
    simulator::Settle();
    ASSERT_EQ(m_results.size(), 1U);
    EXPECT_EQ(requester, nullptr);
}

TEST_F(Requester, SurvivesAResultThatThrows)
{
    int calls = 0;
    const auto requester = std::make_shared<Open<CScreenMirroringRequester>>([&](const std::string&) {
        ++calls;
        throw std::runtime_error("the application's own");
    });
    requester->NotifyRequestResult(*requester->Begin(), "Success");
    simulator::Settle();
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(HasLogWith(ERROR, "the application's own"));
}

TEST_F(Requester, KnowsOneCharacteristicOfOneService)
{
    const GattUuidMap mirroring = {
        {"f7608236-13bd-4a99-bbcd-9426bccb6c24", {"9be85432-b1db-416c-9e1c-d6d381305337"}}};
    const GattUuidMap nodLink = {
        {"95e60810-8ad0-11e6-bdf4-4b1e122d00d0", {"7909f901-904c-11e6-bdf4-9bbdfdaad9d9"}}};
    const GattUuidMap kov = {{"1e5ed7a3-9e92-41c1-af60-6a15643dfb34", {"fc4e4003-dd1f-4896-bc77-35a759445f69"}}};
    EXPECT_EQ(CScreenMirroringRequester().InitUuidMap(), mirroring);
    EXPECT_EQ(CNodLinkRequester().InitUuidMap(), nodLink);
    EXPECT_EQ(CKovRequester().InitUuidMap(), kov);
    EXPECT_EQ(CScreenMirroringRequester(Keep()).InitUuidMap(), mirroring);
    EXPECT_EQ(CNodLinkRequester(Keep()).InitUuidMap(), nodLink);
    EXPECT_EQ(CKovRequester(Keep()).InitUuidMap(), kov);
}

TEST_F(Requester, KeepsTheExtraDataOfTheLastRequest)
{
    const auto requester = Make();
    ASSERT_TRUE(Ask(*requester, R"({"a":1})"));
    EXPECT_EQ(requester->GetExtraData(*requester->Latest()), R"({"a":1})");
    EXPECT_TRUE(HasLog(INFO, R"(extra data : {"a":1})"));
    simulator::FailCall("bt_gatt_connect", -1);
    simulator::Settle();
    EXPECT_FALSE(Ask(*requester, "other"));
    EXPECT_EQ(requester->GetExtraData(*requester->Latest()), "other");
}

TEST_F(Requester, WritesAnEmptyMessageInItsBase)
{
    const auto requester = Make<PlainRequester>();
    EXPECT_EQ(requester->BuildData(*requester->Begin()), "");
    EXPECT_TRUE(HasLog(INFO, "Not implemented"));
    ASSERT_TRUE(Ask(*requester));
    simulator::Settle();
    EXPECT_EQ(simulator::MessagesTo(kPhone), Texts{""});
    EXPECT_EQ(m_results, Texts{"Success"});
}

TEST_F(Requester, RefusesNodLinksOperationsInItsBase)
{
    const auto requester = Make<PlainRequester>();
    for (const std::string& version : {std::string("2.0"), std::string("3.0"), std::string("x")}) {
        try {
            requester->SetNodLinkVersion(version);
            FAIL();
        } catch (const LynExceptionNotSupported& e) {
            EXPECT_STREQ(e.what(), "Not supported api for this service");
            EXPECT_EQ(e.GetCode(), LYN_ERROR_NOT_SUPPORTED);
        }
    }
    EXPECT_THROW(requester->GetNodlinkType(), LynExceptionNotSupported);
    EXPECT_EQ(CountLog(ERROR, "Not supported api for this service"), 4);
}

TEST_F(Requester, ReplacesAClientThatItStillHolds)
{
    PhoneAnswers({});
    const auto requester = Make();
    ASSERT_TRUE(Ask(*requester));
    simulator::Settle();
    EXPECT_EQ(simulator::Alive().clients, 1);
    simulator::ClearJournal();
    ASSERT_TRUE(Ask(*requester));
    EXPECT_EQ(CountLog(INFO, "in custom deleter of m_GattClient"), 1);
    EXPECT_EQ(Calls("bt_gatt"), (Texts{"bt_gatt_unset_connection_state_changed_cb()",
                                       "bt_gatt_client_unset_characteristic_value_changed_cb()",
                                       "bt_gatt_client_destroy()", "bt_gatt_set_connection_state_changed_cb()",
                                       "bt_gatt_connect(\"AA:BB:CC:DD:EE:01\", false)"}));
    simulator::Settle();
    EXPECT_EQ(simulator::Alive().clients, 1);
    EXPECT_EQ(ArmedTimeouts(), std::vector<unsigned>{10}) << "that of the exchange before is gone";
}

TEST_F(Requester, TakesADisconnectionWithoutAClient)
{
    const auto requester = Make();
    const auto exchange = requester->Begin();
    requester->OnConnectionStateChanged(*exchange, 0, false, kPhone);
    EXPECT_TRUE(LogsInOrder({{INFO, "disconnected gatt [AA:BB:CC:DD:EE:01]"},
                             {ERROR, "GATT disconnected before requesting is done"}}));
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"GattFail"});
}

TEST_F(Requester, TakesATimeOutWithoutAClient)
{
    const auto requester = Make();
    const auto exchange = requester->Begin();
    requester->DisconnectGattForcelyByTimeout(*exchange);
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"GattFail"});
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 0);
    // The exchange is done from this side, so the next disconnection is no failure.
    requester->OnConnectionStateChanged(*exchange, 0, false, kPhone);
    EXPECT_FALSE(HasLog(ERROR, "GATT disconnected before requesting is done"));
    requester->OnConnectionStateChanged(*exchange, 0, false, kPhone);
    EXPECT_TRUE(HasLog(ERROR, "GATT disconnected before requesting is done")) << "and then it is one again";
}

TEST_F(Requester, SplitsReportsByWhetherTheLinkIsUp)
{
    const auto requester = Make();
    const auto exchange = requester->Begin();
    requester->OnConnectionStateChanged(*exchange, 7, true, kPhone);
    EXPECT_EQ(Messages(ERROR), Texts{"connection fail"});
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"GattFail"});
    simulator::ClearLog();
    requester->OnConnectionStateChanged(*exchange, 7, false, kPhone);
    EXPECT_EQ(Messages(ERROR), Texts{"disconnection fail"});
}

TEST_F(Requester, BeginsAnewWhenTheLinkComesUpAgain)
{
    PhoneAnswers({}, 50);
    const auto requester = Make();
    ASSERT_TRUE(Ask(*requester));
    simulator::Settle();
    ASSERT_TRUE(ElapseTimeout());
    ASSERT_TRUE(simulator::RunUntil([] { return CountCalls("bt_gatt_disconnect") == 1; }));
    requester->OnGattConnected(*requester->Latest(), 0, kPhone);
    EXPECT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    simulator::Settle();
    EXPECT_TRUE(HasLog(ERROR, "GATT disconnected before requesting is done"));
    EXPECT_EQ(m_results, (Texts{"GattFail", "GattFail"}));
    EXPECT_TRUE(ArmedTimeouts().empty());
}

TEST_F(Requester, ChoosesNodLinksModeByItsMessage)
{
    const auto requester = Make<CNodLinkRequester>();
    const auto exchange = requester->Begin();
    const std::vector<std::pair<const char*, int>> cases = {
        {R"({"service":"screen","view":"full"})", 1},
        {R"({"service":"screen","view":"multi"})", 0},
        {R"({"service":"screen","view":"Full"})", 0},
        {R"({"service":"screen"})", 0},
        {R"({"service":"sound","view":"full"})", 2},
        {R"({"service":"sound","view":"multi"})", 2},
        {R"({"service":"Screen","view":"multi"})", 2},
        {R"({"view":"multi"})", 2},
        {"{}", 2},
    };
    for (const auto& [message, mode] : cases) {
        SCOPED_TRACE(message);
        simulator::ClearLog();
        requester->SetMirroringMode(*exchange, message);
        EXPECT_EQ(requester->GetNodlinkType(), mode);
        EXPECT_TRUE(LogsInOrder({{INFO, std::string("data : ") + message},
                                 {INFO, "screen mirroring mode : " + std::to_string(mode)}}));
    }
}

TEST_F(Requester, StoresNodLinksMode)
{
    const auto requester = Make<CNodLinkRequester>();
    requester->WriteScreenMirroringModeToVconf(2);
    EXPECT_EQ(simulator::IntSetting("memory/lyn/nodlink/mirroring_mode"), 2);
    EXPECT_TRUE(HasLog(INFO, "screen mirroring mode : 2"));
    simulator::FailCall("vconf_set_int", -1);
    requester->WriteScreenMirroringModeToVconf(1);
    EXPECT_EQ(Messages(ERROR), Texts{"fail to set memory/lyn/nodlink/mirroring_mode"});
    EXPECT_EQ(simulator::IntSetting("memory/lyn/nodlink/mirroring_mode"), 2);
}

TEST_F(Requester, ReleasesItsClientAndItsTimeOutWhenItGoes)
{
    PhoneAnswers({});
    auto requester = Make();
    ASSERT_TRUE(Ask(*requester));
    simulator::Settle();
    ASSERT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    const SourceCallback timeout = LastTimeout();
    simulator::ClearJournal();
    requester.reset();
    EXPECT_EQ(simulator::JournalText(),
              (Texts{"bt_gatt_unset_connection_state_changed_cb()",
                     "bt_gatt_client_unset_characteristic_value_changed_cb()", "bt_gatt_client_destroy()"}));
    EXPECT_TRUE(HasLog(INFO, "in custom deleter of m_GattClient"));
    EXPECT_TRUE(ArmedTimeouts().empty());
    simulator::ClearJournal();
    EXPECT_EQ(timeout.function(timeout.data), FALSE) << "one that was on its way finds nothing";
    simulator::Settle();
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_TRUE(m_results.empty());
}

TEST_F(Requester, TakesItsPendingResultWithIt)
{
    {
        const auto requester = Make();
        const auto exchange = requester->Begin();
        requester->NotifyRequestResult(*exchange, "Success");
    }
    simulator::Settle();
    EXPECT_TRUE(m_results.empty());
}

}  // namespace
}  // namespace lyn::test
