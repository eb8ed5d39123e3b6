// SPDX-License-Identifier: Apache-2.0
//
// Only the latest exchange of a living service does anything: what comes late for another one finds nothing to do.
// And a result waits for the end of the call that has begun its exchange.
#include <thread>

#include "Common/LynException.h"
#include "Requester/CNodLinkRequester.h"
#include "requester/RequesterTest.h"

namespace lyn::test {
namespace {

/// A requester in whose making of a message something happens.
class BusyRequester : public CRequester {
public:
    explicit BusyRequester(RequestResultCb cb) : CRequester(std::move(cb), kServiceUuid, kCharacteristicUuid) {}

    std::string BuildData(const Exchange& /*exchange*/) override
    {
        if (onBuild) {
            onBuild();
        }
        return "the message";
    }

    std::function<void()> onBuild;
};

/// How an exchange comes to be none any more.
struct Ending {
    const char* name;
    void (*end)(Open<BusyRequester>&);
};

const Ending kEndings[] = {
    {"Replaced", [](Open<BusyRequester>& requester) { EXPECT_NE(requester.Begin(), nullptr); }},
    {"Retired", [](Open<BusyRequester>& requester) { requester.Retire(); }},
    {"ReplacedAndRetired",
     [](Open<BusyRequester>& requester) {
         EXPECT_NE(requester.Begin(), nullptr);
         requester.Retire();
     }},
    {"RetiredByAnotherThread",
     [](Open<BusyRequester>& requester) { std::thread([&] { requester.Retire(); }).join(); }},
};

class AnEndedExchange : public RequesterTest, public ::testing::WithParamInterface<Ending> {
protected:
    AnEndedExchange()
    {
        PhoneAnswers({});
        EXPECT_TRUE(Ask(*requester));
        exchange = requester->Latest();
    }

    /// Ends the exchange, which somebody still holds; what the end itself did is forgotten.
    void End()
    {
        GetParam().end(*requester);
        simulator::ClearJournal();
        simulator::ClearLog();
    }

    static bool RunUntilCalled(const std::string& function)
    {
        return simulator::RunUntil([&] { return CountCalls(function) > 0; });
    }

    /// Nothing was delivered, written or disconnected, and nobody has complained.
    void ExpectNothingDone()
    {
        EXPECT_TRUE(m_results.empty());
        EXPECT_EQ(CountCalls("bt_gatt_set_value"), 0);
        EXPECT_EQ(CountCalls("bt_gatt_client_request_att_mtu_change"), 0);
        EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 0);
        EXPECT_EQ(CountCalls("bt_adapter_le_enable_le_scan_performance_boost"), 0);
        EXPECT_EQ(Messages(ERROR), Texts{});
    }

    std::shared_ptr<Open<BusyRequester>> requester = Make<BusyRequester>();
    ExchangePtr exchange;
};

TEST_P(AnEndedExchange, IsNotTheLatestOne)
{
    EXPECT_TRUE(requester->IsLatest(*exchange));
    End();
    EXPECT_FALSE(requester->IsLatest(*exchange));
}

TEST_P(AnEndedExchange, HearsNothingOfItsConnection)
{
    End();
    simulator::Settle();
    ExpectNothingDone();
    EXPECT_TRUE(ArmedTimeouts().empty());
}

TEST_P(AnEndedExchange, HearsNothingOfAFailedConnection)
{
    const auto registration = simulator::ConnectionRegistration();
    End();
    registration.callback(static_cast<int>(0xC0000001), true, kPhone, registration.userData);
    simulator::ClearLog();  // The client's own lines.
    simulator::Settle();
    ExpectNothingDone();
    EXPECT_NE(exchange->m_GattClient, nullptr);
}

TEST_P(AnEndedExchange, HearsNothingOfItsDisconnection)
{
    simulator::Settle();
    const auto registration = simulator::ConnectionRegistration();
    End();
    registration.callback(0, false, kPhone, registration.userData);
    simulator::Settle();
    ExpectNothingDone();
    EXPECT_NE(exchange->m_GattClient, nullptr);
}

TEST_P(AnEndedExchange, WritesNothingWhenItsMtuComes)
{
    ASSERT_TRUE(RunUntilCalled("bt_gatt_client_request_att_mtu_change"));
    int built = 0;
    requester->onBuild = [&] { ++built; };
    End();
    simulator::Settle();
    EXPECT_EQ(built, 0);
    ExpectNothingDone();
}

TEST_P(AnEndedExchange, DoesNotWriteAMessageDuringWhoseMakingItHasEnded)
{
    requester->onBuild = [&] { End(); };
    simulator::Settle();
    ExpectNothingDone();
    EXPECT_EQ(simulator::MessagesTo(kPhone), Texts{});
}

TEST_P(AnEndedExchange, DoesNotFailByAMessageDuringWhoseMakingItHasEnded)
{
    requester->onBuild = [&] {
        End();
        throw LynExceptionOperationFailed("no message");
    };
    simulator::Settle();
    ExpectNothingDone();
}

TEST_P(AnEndedExchange, HearsNothingOfTheEndOfItsWrite)
{
    simulator::Settle();
    const auto registration = simulator::WriteRegistration(kCharacteristicUuid);
    const bt_gatt_h handle = simulator::CharacteristicHandle(kCharacteristicUuid);
    End();
    registration.callback(-1, handle, registration.userData);
    simulator::Settle();
    ExpectNothingDone();
}

TEST_P(AnEndedExchange, HearsNothingOfAnAnswer)
{
    simulator::Settle();
    const auto registration = simulator::ValueRegistration(kCharacteristicUuid);
    const bt_gatt_h handle = simulator::CharacteristicHandle(kCharacteristicUuid);
    End();
    std::string answer = "Success";
    registration.callback(handle, answer.data(), static_cast<int>(answer.size()), registration.userData);
    simulator::Settle();
    ExpectNothingDone();
}

TEST_P(AnEndedExchange, DoesNotTimeOut)
{
    simulator::Settle();
    ASSERT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    End();
    ASSERT_TRUE(ElapseTimeout()) << "somebody holds the exchange";
    simulator::Settle();
    ExpectNothingDone();
    EXPECT_TRUE(ArmedTimeouts().empty());
}

TEST_P(AnEndedExchange, HasNoResultAnyMore)
{
    requester->NotifyRequestResult(*exchange, "Success");
    End();
    simulator::Settle();
    ExpectNothingDone();
}

TEST_P(AnEndedExchange, IsReleasedWithItsClientAndItsTimeOutByTheLastWhoHoldsIt)
{
    simulator::Settle();
    End();
    requester.reset();
    ASSERT_EQ(simulator::Alive().clients, 1);
    ASSERT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    exchange.reset();
    EXPECT_EQ(simulator::Alive().clients, 0);
    EXPECT_TRUE(ArmedTimeouts().empty());
}

INSTANTIATE_TEST_SUITE_P(That, AnEndedExchange, ::testing::ValuesIn(kEndings),
                         [](const auto& test) { return test.param.name; });

class LatestExchange : public RequesterTest {};

TEST_F(LatestExchange, IsTheOneThatWasBegunLast)
{
    const auto requester = Make();
    EXPECT_EQ(requester->Latest(), nullptr);
    const auto first = requester->Begin();
    EXPECT_EQ(requester->Latest(), first);
    EXPECT_TRUE(requester->IsLatest(*first));
    const auto second = requester->Begin();
    EXPECT_EQ(requester->Latest(), second);
    EXPECT_FALSE(requester->IsLatest(*first));
}

TEST_F(LatestExchange, DoesNothingWhenItsRequesterIsGone)
{
    PhoneAnswers({});
    auto requester = Make();
    ASSERT_TRUE(Ask(*requester));
    simulator::Settle();
    const auto exchange = requester->Latest();
    requester->NotifyRequestResult(*exchange, "Success");
    exchange->ArmTimeout(10);
    requester.reset();
    simulator::ClearJournal();
    ASSERT_TRUE(ElapseTimeout());
    simulator::Settle();
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_TRUE(m_results.empty());
}

TEST_F(LatestExchange, IsNotBegunByARetiredRequester)
{
    const auto requester = Make();
    requester->Retire();
    EXPECT_EQ(requester->Begin(), nullptr);
    EXPECT_FALSE(requester->RequestInitiating(kPhone, ""));
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_EQ(Messages(ERROR), Texts{});
    requester->EndRequestCall();
    requester->Retire();
}

TEST_F(LatestExchange, HasItsOwnNodLinkMode)
{
    const auto requester = Make<CNodLinkRequester>();
    EXPECT_EQ(requester->GetNodlinkType(), 0);
    const auto first = requester->Begin();
    requester->SetMirroringMode(*first, "{}");
    EXPECT_EQ(requester->GetNodlinkType(), 2);
    const auto second = requester->Begin();
    EXPECT_EQ(requester->GetNodlinkType(), 0);
    requester->SetMirroringMode(*first, R"({"service":"screen","view":"full"})");
    EXPECT_EQ(requester->GetNodlinkType(), 0) << "one that is not the latest changes nothing";
}

TEST_F(LatestExchange, WritesNoNodLinkMessageWhenItHasEndedInASleepOfItsMaking)
{
    simulator::SetSetting("memory/menu/network/screenmirroring/p2p_listen_channel", -1);
    simulator::Phone phone = simulator::NodLinkPhone(kPhone, true, true);
    simulator::AddPhone(phone);
    const auto requester = Make<CNodLinkRequester>();
    ASSERT_TRUE(Ask(*requester));
    ForgetSleeps();
    OnSleep([&] {
        std::thread([&] { requester->Retire(); }).join();
        simulator::SetSetting("memory/menu/network/screenmirroring/p2p_listen_channel", 0);
    });
    simulator::Settle();
    OnSleep(nullptr);
    EXPECT_FALSE(Sleeps().empty());
    EXPECT_EQ(simulator::MessagesTo(kPhone), Texts{});
    for (const std::string& line : simulator::KernelLog()) {
        EXPECT_EQ(line.find("data :"), std::string::npos) << line;
    }
    EXPECT_TRUE(m_results.empty());
}

using ResultOfACall = LatestExchange;

TEST_F(ResultOfACall, WaitsForItsEndAndIsDeliveredOnceByTheMainLoop)
{
    const auto requester = Make();
    const auto exchange = requester->BeginInACall();
    requester->NotifyRequestResult(*exchange, "Success");
    simulator::Settle();
    EXPECT_TRUE(m_results.empty());
    requester->EndRequestCall();
    EXPECT_TRUE(m_results.empty());
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"Success"});
    requester->EndRequestCall();
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"Success"});
}

TEST_F(ResultOfACall, IsDeliveredOnceWhenTheCallEndsBeforeTheMainLoopRuns)
{
    const auto requester = Make();
    const auto exchange = requester->BeginInACall();
    requester->NotifyRequestResult(*exchange, "Success");
    requester->EndRequestCall();
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"Success"});
}

TEST_F(ResultOfACall, IsTheLastOneOfThoseThatWaited)
{
    const auto requester = Make();
    const auto exchange = requester->BeginInACall();
    requester->NotifyRequestResult(*exchange, "first");
    requester->NotifyRequestResult(*exchange, "second");
    simulator::Settle();
    requester->EndRequestCall();
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"second"});
}

TEST_F(ResultOfACall, WaitsForItsOwnCallAndForNoOther)
{
    const auto requester = Make();
    const auto first = requester->Begin();
    requester->NotifyRequestResult(*first, "first");
    simulator::Settle();
    const auto second = requester->BeginInACall();
    requester->NotifyRequestResult(*second, "second");
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"first"});
    requester->EndRequestCall();
    simulator::Settle();
    EXPECT_EQ(m_results, (Texts{"first", "second"}));
}

TEST_F(ResultOfACall, ThatAnotherExchangeHasReplacedIsDroppedWhereverItWaits)
{
    const auto requester = Make();
    const auto first = requester->BeginInACall();
    requester->NotifyRequestResult(*first, "first");
    simulator::Settle();
    const auto second = requester->BeginInACall();
    requester->EndRequestCall();
    simulator::Settle();
    EXPECT_TRUE(m_results.empty());
    requester->NotifyRequestResult(*second, "second");
    simulator::Settle();
    EXPECT_EQ(m_results, Texts{"second"});
}

TEST_F(ResultOfACall, IsDroppedWhenTheServiceIsDestroyedBeforeTheCallHasEnded)
{
    const auto requester = Make();
    const auto exchange = requester->BeginInACall();
    requester->NotifyRequestResult(*exchange, "Success");
    simulator::Settle();
    requester->Retire();
    requester->EndRequestCall();
    simulator::Settle();
    EXPECT_TRUE(m_results.empty());
}

TEST_F(ResultOfACall, OfNobodyIsNotMissed)
{
    const auto requester = Make();
    EXPECT_NO_THROW(requester->EndRequestCall());
    simulator::FailCall("bt_gatt_connect", -1);
    EXPECT_FALSE(Ask(*requester));
    simulator::Settle();
    EXPECT_TRUE(m_results.empty());
}

TEST_F(ResultOfACall, IsThatOfTheLatestRequestUntilAnotherOneBegins)
{
    std::vector<bool> ofLatest;
    std::shared_ptr<Open<CScreenMirroringRequester>> requester;
    requester = std::make_shared<Open<CScreenMirroringRequester>>([&](const std::string& result) {
        ofLatest.push_back(requester->IsResultOfLatest());
        if (result == "replaced") {
            requester->Begin();
        } else {
            requester->Retire();
        }
        ofLatest.push_back(requester->IsResultOfLatest());
    });
    for (const char* text : {"replaced", "retired"}) {
        requester->NotifyRequestResult(*requester->Begin(), text);
        simulator::Settle();
    }
    EXPECT_EQ(ofLatest, std::vector({true, false, true, false}));
}

}  // namespace
}  // namespace lyn::test
