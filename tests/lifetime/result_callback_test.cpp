// SPDX-License-Identifier: Apache-2.0
//
// What an application does from inside its result callback, hundreds of times over.
#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

class InsideTheResultCallback : public LivesOfEach {
protected:
    /// Each result begins the next life until there were kRounds of them.
    void LiveOn(App& app)
    {
        app.onResult = [this, &app](lyn_request_initiating_result_e) {
            if (Results() >= kRounds) {
                return;
            }
            EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
            App& next = Begin(GetParam());
            LiveOn(next);
            EXPECT_EQ(next.Request(kPhone), LYN_ERROR_NONE);
        };
    }

    bool WaitForResults(std::size_t count)
    {
        return simulator::RunUntil([&] { return Results() >= count; }, 30000);
    }
};

TEST_P(InsideTheResultCallback, RequestingAgainEndsInAResultEachTime)
{
    App& app = Begin(GetParam());
    app.onResult = [&](lyn_request_initiating_result_e) {
        if (app.results.size() < kRounds) {
            EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        }
    };
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(WaitForResults(kRounds));
    simulator::Settle();
    EXPECT_EQ(app.results, std::vector(kRounds, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
    ExpectNothingLeft();
}

TEST_P(InsideTheResultCallback, DestroyingTakesEffectBeforeTheCallReturns)
{
    App& app = Begin(GetParam());
    int before = 0;
    int after = 0;
    app.onResult = [&](lyn_request_initiating_result_e) {
        before = CountCalls("bt_product_deinit");
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        after = CountCalls("bt_product_deinit");
    };
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(WaitForResults(1));
    EXPECT_EQ(before, 0);
    EXPECT_EQ(after, 1);
    ExpectNothingLeft();
}

TEST_P(InsideTheResultCallback, DestroyingLeavesNothing)
{
    for (int round = 0; round < kRounds; ++round) {
        App& app = Begin(GetParam());
        app.onResult = [&app](lyn_request_initiating_result_e) { EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE); };
        ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        ASSERT_TRUE(WaitForResults(static_cast<std::size_t>(round) + 1)) << round;
    }
    ExpectNothingLeft();
    EXPECT_EQ(Results(), kRounds);
}

TEST_P(InsideTheResultCallback, ASuccessorCreatedThereServes)
{
    for (int round = 0; round < kRounds; ++round) {
        App& app = round == 0 ? Begin(GetParam()) : Last();
        app.onResult = [this, &app](lyn_request_initiating_result_e) {
            EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
            Begin(GetParam());
        };
        ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        ASSERT_TRUE(WaitForResults(static_cast<std::size_t>(round) + 1)) << round;
    }
    ExpectNothingLeft();
    EXPECT_EQ(Results(), kRounds);
}

TEST_P(InsideTheResultCallback, ASuccessorThatIsAskedToRequestThereHasItsOwnResult)
{
    App& first = Begin(GetParam());
    LiveOn(first);
    ASSERT_EQ(first.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(WaitForResults(kRounds));
    ExpectNothingLeft();
    EXPECT_EQ(Results(), kRounds);
}

TEST_P(InsideTheResultCallback, AScanStartsAndStops)
{
    App& app = Begin(GetParam());
    app.onResult = [&](lyn_request_initiating_result_e) {
        EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
        EXPECT_EQ(app.StartScan(), LYN_ERROR_INVALID_STATE);
        EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    };
    for (std::size_t round = 1; round <= kRounds; ++round) {
        ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        ASSERT_TRUE(WaitForResults(round)) << round;
        ASSERT_EQ(app.states.back(), LYN_STATE_READY);
    }
    EXPECT_FALSE(simulator::Alive().scanning);
    ExpectNothingLeft();
}

TEST_P(InsideTheResultCallback, ARunningScanFindsPhonesForTheNextRequest)
{
    App& app = Begin(GetParam());
    app.onResult = [&](lyn_request_initiating_result_e) { EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE); };
    for (std::size_t round = 1; round <= kRounds; ++round) {
        ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        ASSERT_TRUE(WaitForResults(round)) << round;
        const std::size_t had = app.phones.size();
        const bool isDummy = GetParam() == "dummy";  // It has reported its phone when the scan started.
        ASSERT_TRUE(isDummy || simulator::RunUntil([&] { return app.phones.size() > had; })) << round;
    }
    EXPECT_GE(app.phones.size(), static_cast<std::size_t>(kRounds));
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_P(InsideTheResultCallback, TheServicesTakeTurns)
{
    const std::vector<std::string>& names = AllServices();
    std::function<void(App&, std::size_t)> turn = [&](App& app, std::size_t round) {
        app.onResult = [&, round](lyn_request_initiating_result_e) {
            if (round == kRounds) {
                return;
            }
            EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
            const std::string& name = names[round % names.size()];
            simulator::AddPhone(PhoneFor(name));
            App& next = Begin(name);
            turn(next, round + 1);
            EXPECT_EQ(next.Request(kPhone), LYN_ERROR_NONE);
        };
    };
    App& first = Begin(GetParam());
    turn(first, 1);
    ASSERT_EQ(first.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(WaitForResults(kRounds));
    ExpectNothingLeft();
    EXPECT_EQ(Results(), kRounds);
}

INSTANTIATE_TEST_SUITE_P(Each, InsideTheResultCallback, ::testing::ValuesIn(AllServices()), ServiceName);

}  // namespace
}  // namespace lyn::test
