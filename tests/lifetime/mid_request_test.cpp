// SPDX-License-Identifier: Apache-2.0
//
// A service destroyed at each step of a request. What the platform and the main loop still have to say finds
// nothing: no call of the platform, no report, no log line of an error. The next service requests as ever.
#include <glib.h>

#include <ostream>
#include <tuple>

#include "lifetime/Lives.h"
#include "support/Clock.h"

namespace lyn::test {
namespace {

using simulator::Phone;

constexpr int kTimedOut = static_cast<int>(0xC0000001);
constexpr int kOftenFailing = 133;
constexpr const char* kMetaData = "/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";

/// How a phone is made to bring a request to a step, and how one sees that it is there.
struct Step {
    const char* name;
    void (*arrange)(Phone& phone);
    bool (*isReached)();

    friend void PrintTo(const Step& step, std::ostream* out) { *out << step.name; }
};

int CountOf(const std::string& function)
{
    int count = 0;
    for (const simulator::Call& call : simulator::Journal()) {
        count += call.function == function ? 1 : 0;
    }
    return count;
}

void AnswerLate(Phone& phone)
{
    CharacteristicOf(phone).answers[0].delayMs = 30;
}

const std::vector<Step>& StepsOfEach()
{
    static const std::vector<Step> steps = {
        {"BeforeTheConnectionReport", [](Phone&) {}, [] { return true; }},
        {"BetweenTwoAttempts",
         [](Phone& phone) {
             phone.connects = {{kOftenFailing, 0}, {0, 20}};
         },
         [] { return CountOf("bt_gatt_connect") == 2; }},
        {"WhileAFailedConnectionIsDelivered",
         [](Phone& phone) {
             phone.connects = {{kTimedOut, 0}};
         },
         [] { return HasLog(ERROR, "connection fail"); }},
        {"WhileTheMtuIsAwaited", [](Phone& phone) { phone.mtuDelayMs = 30; },
         [] { return CountOf("bt_gatt_client_request_att_mtu_change") == 1; }},
        {"BeforeTheMessageArrives", [](Phone&) {},
         [] { return CountOf("bt_gatt_client_write_value") == 1 && simulator::MessagesTo(kPhone).empty(); }},
        {"BeforeTheWriteIsCompleted", [](Phone& phone) { CharacteristicOf(phone).answers[0].delayMs = 10; },
         [] { return simulator::MessagesTo(kPhone).size() == 1 && !HasLog(INFO, "result : 0"); }},
        {"WhileTheAnswerIsAwaited", AnswerLate, [] { return HasLog(INFO, "result : 0"); }},
        {"WhileTheAnswerIsDelivered", [](Phone&) {}, [] { return CountOf("bt_gatt_disconnect") == 1; }},
        {"WhileAFailedWriteIsDelivered",
         [](Phone& phone) {
             CharacteristicOf(phone).answers[0] = {
                 .kind = simulator::Answer::Kind::writeError, .text = {}, .code = 5};
         },
         [] { return HasLog(INFO, "result : 5"); }},
        {"WhileALostLinkIsDelivered",
         [](Phone& phone) {
             phone.mtuDelayMs = 30;
             phone.dropAfterConnectMs = 1;
         },
         [] { return HasLog(ERROR, "GATT disconnected before requesting is done"); }},
    };
    return steps;
}

using Case = std::tuple<std::string, Step>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info)
{
    return std::get<0>(info.param) + std::get<1>(info.param).name;
}

/// Lets every time-out elapse and everything else come.
void LetAllCome()
{
    simulator::Settle();
    while (ElapseTimeout()) {
        g_main_context_iteration(nullptr, FALSE);
    }
    simulator::Settle();
}

/// Leaves no time-out to the next test.
class TimedLives : public Lives {
protected:
    ~TimedLives() override { LetAllCome(); }
};

class AServiceDestroyedInMidRequest : public TimedLives, public ::testing::WithParamInterface<Case> {
protected:
    static const std::string& Service() { return std::get<0>(GetParam()); }
    static const Step& At() { return std::get<1>(GetParam()); }

    App& RequestUpToTheStep()
    {
        simulator::Reset();
        simulator::WriteFile(kMetaData, "{}");
        Phone phone = PhoneFor(Service());
        At().arrange(phone);
        simulator::AddPhone(phone);
        App& app = Begin(Service());
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(simulator::RunUntil(At().isReached));
        EXPECT_TRUE(app.results.empty());
        return app;
    }

    void ExpectTheNextToServe()
    {
        simulator::AddPhone(PhoneFor(Service()));
        App& next = Begin(Service());
        EXPECT_EQ(next.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(next.WaitForResult());
        ExpectNothingLeft();
        EXPECT_EQ(next.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
    }
};

TEST_P(AServiceDestroyedInMidRequest, IsNotFoundByWhatComesLater)
{
    App& app = RequestUpToTheStep();
    const std::vector<lyn_state_e> states = app.states;
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    EXPECT_EQ(CountCalls("bt_product_deinit"), 1);
    simulator::ClearJournal();
    simulator::ClearLog();
    LetAllCome();
    EXPECT_THAT(simulator::JournalText(), ::testing::IsEmpty());
    EXPECT_THAT(Messages(ERROR), ::testing::IsEmpty());
    EXPECT_THAT(app.results, ::testing::IsEmpty());
    EXPECT_EQ(app.states, states);
    ExpectTheNextToServe();
}

TEST_P(AServiceDestroyedInMidRequest, LeavesTheNextItsOwnResultAtOnce)
{
    for (int time = 0; time < 20; ++time) {
        EXPECT_EQ(RequestUpToTheStep().Destroy(), LYN_ERROR_NONE);
        ExpectTheNextToServe();
        ASSERT_FALSE(HasFailure()) << time;
    }
}

INSTANTIATE_TEST_SUITE_P(At, AServiceDestroyedInMidRequest,
                         ::testing::Combine(::testing::ValuesIn(RadioServices()),
                                            ::testing::ValuesIn(StepsOfEach())),
                         CaseName);

const std::vector<Step>& StepsOfNodLink()
{
    static const std::vector<Step> steps = {
        {"BetweenTheTwoMessages",
         [](Phone& phone) {
             simulator::Answer application;
             application.text = R"({"type":"fgApp","packageName":"org.example.movies"})";
             simulator::Answer last;
             last.text = "Success";
             last.delayMs = 20;
             CharacteristicOf(phone).answers = {application, last};
         },
         [] { return simulator::MessagesTo(kPhone).size() == 2; }},
    };
    return steps;
}

INSTANTIATE_TEST_SUITE_P(AtTheSecondStep, AServiceDestroyedInMidRequest,
                         ::testing::Combine(::testing::Values(std::string("nodlink")),
                                            ::testing::ValuesIn(StepsOfNodLink())),
                         CaseName);

class ARequestWithoutAnswer : public TimedLives, public ::testing::WithParamInterface<std::string> {
protected:
    App& RequestInVain()
    {
        Phone phone = PhoneFor(GetParam());
        CharacteristicOf(phone).answers.clear();
        simulator::AddPhone(phone);
        App& app = Begin(GetParam());
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(simulator::RunUntil([] { return HasLog(INFO, "result : 0"); }));
        return app;
    }
};

TEST_P(ARequestWithoutAnswer, OfADestroyedServiceElapsesUnnoticed)
{
    App& app = RequestInVain();
    ASSERT_EQ(ArmedTimeouts(), std::vector({10U}));
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    simulator::ClearJournal();
    simulator::ClearLog();
    LetAllCome();
    EXPECT_THAT(ArmedTimeouts(), ::testing::IsEmpty());
    EXPECT_THAT(simulator::JournalText(), ::testing::IsEmpty());
    EXPECT_THAT(Messages(ERROR), ::testing::IsEmpty());
    EXPECT_THAT(app.results, ::testing::IsEmpty());
}

TEST_P(ARequestWithoutAnswer, ThatElapsedIsForgottenWithTheServiceBeforeItsDelivery)
{
    App& app = RequestInVain();
    EXPECT_TRUE(ElapseTimeout());
    EXPECT_TRUE(simulator::RunUntil([] { return CountOf("bt_gatt_disconnect") == 1; }));
    EXPECT_THAT(app.results, ::testing::IsEmpty());
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    LetAllCome();
    EXPECT_THAT(app.results, ::testing::IsEmpty());
    ExpectNothingLeft();
}

TEST_P(ARequestWithoutAnswer, OfADestroyedServiceDoesNotEndTheNextOne)
{
    App& first = RequestInVain();
    const SourceCallback timeout = LastTimeout();
    EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
    EXPECT_THAT(ArmedTimeouts(), ::testing::IsEmpty());
    Phone phone = PhoneFor(GetParam());
    CharacteristicOf(phone).answers[0].delayMs = 30;
    simulator::AddPhone(phone);
    App& next = Begin(GetParam());
    EXPECT_EQ(next.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(timeout.function(timeout.data), FALSE);  // As if it had been on its way.
    EXPECT_TRUE(next.WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(next.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
    EXPECT_THAT(ArmedTimeouts(), ::testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Each, ARequestWithoutAnswer, ::testing::ValuesIn(RadioServices()), ServiceName);

using ADestroyedDummy = TimedLives;

TEST_F(ADestroyedDummy, DeliversNoResultOfItsRequest)
{
    for (int round = 0; round < kRounds; ++round) {
        App& app = Begin("dummy");
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    }
    App& last = Begin("dummy");
    EXPECT_EQ(last.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(last.WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(Results(), 1U);
}

}  // namespace
}  // namespace lyn::test
