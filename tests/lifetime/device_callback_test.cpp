// SPDX-License-Identifier: Apache-2.0
//
// What an application does from inside its device callback. "dummy" calls it from inside the start of the scan.
#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

class InsideTheDeviceCallback : public LivesOfEach {
protected:
    /// Starts a scan and waits for its first phone.
    void ScanForAPhone(App& app)
    {
        const std::size_t had = app.phones.size();
        ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);
        ASSERT_TRUE(simulator::RunUntil([&] { return app.phones.size() > had; }));
    }
};

// Without "dummy", each of whose starts reports its phone from inside.
class InsideTheDeviceCallbackOfTheMainLoop : public InsideTheDeviceCallback {};

TEST_P(InsideTheDeviceCallback, ARequestEndsInAResultEachTime)
{
    App& app = Begin(GetParam());
    app.onPhone = [&](const FoundPhone& phone) { EXPECT_EQ(app.Request(phone.address), LYN_ERROR_NONE); };
    for (std::size_t round = 1; round <= kRounds; ++round) {
        ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE) << round;
        ASSERT_TRUE(simulator::RunUntil([&] { return app.results.size() == round; })) << round;
        ASSERT_EQ(app.phones.size(), round);
    }
    EXPECT_EQ(app.states.back(), LYN_STATE_READY);
    ExpectNothingLeft();
    EXPECT_EQ(app.results, std::vector(kRounds, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
}

TEST_P(InsideTheDeviceCallback, StoppingEndsTheScanEachTime)
{
    App& app = Begin(GetParam());
    app.onPhone = [&](const FoundPhone&) { EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE); };
    for (std::size_t round = 1; round <= kRounds; ++round) {
        ScanForAPhone(app);
        ASSERT_EQ(app.phones.size(), round);
        ASSERT_EQ(app.states.back(), LYN_STATE_READY) << round;
    }
    EXPECT_FALSE(simulator::Alive().scanning);
    ExpectNothingLeft();
}

TEST_P(InsideTheDeviceCallbackOfTheMainLoop, StoppingAndStartingAgainKeepsThePhonesComing)
{
    App& app = Begin(GetParam());
    app.onPhone = [&](const FoundPhone&) {
        EXPECT_EQ(app.StartScan(), LYN_ERROR_INVALID_STATE);
        EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
        EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    };
    ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([&] { return app.phones.size() >= kRounds; }, 30000));
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_P(InsideTheDeviceCallbackOfTheMainLoop, DestroyingTakesEffectBeforeTheCallReturns)
{
    App& app = Begin(GetParam());
    int after = 0;
    app.onPhone = [&](const FoundPhone&) {
        EXPECT_EQ(CountCalls("bt_product_deinit"), 0);
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        after = CountCalls("bt_product_deinit");
    };
    ScanForAPhone(app);
    EXPECT_EQ(after, 1);
    ExpectNothingLeft();
}

TEST_F(Lives, DestroyingDuringTheStartOfADummyScanTakesEffectWhenThatEnds)
{
    App& app = Begin("dummy");
    app.onPhone = [&](const FoundPhone&) {
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        EXPECT_EQ(CountCalls("bt_product_deinit"), 0);
    };
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(CountCalls("bt_product_deinit"), 1);
    EXPECT_TRUE(app.states.empty());
    ExpectNothingLeft();
}

TEST_P(InsideTheDeviceCallback, DestroyingEndsTheReports)
{
    for (int round = 0; round < kRounds; ++round) {
        App& app = Begin(GetParam());
        app.onPhone = [&app](const FoundPhone&) { EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE); };
        ASSERT_NO_FATAL_FAILURE(ScanForAPhone(app));
        ASSERT_EQ(app.phones.size(), 1U);
    }
    ExpectNothingLeft();
}

TEST_P(InsideTheDeviceCallback, ASuccessorCreatedThereScans)
{
    App* app = &Begin(GetParam());
    for (int round = 0; round < kRounds; ++round) {
        app->onPhone = [this, app](const FoundPhone&) {
            EXPECT_EQ(app->Destroy(), LYN_ERROR_NONE);
            Begin(GetParam());
        };
        ASSERT_NO_FATAL_FAILURE(ScanForAPhone(*app));
        app = &Last();
        ASSERT_NE(app->handle, nullptr);
    }
    EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_P(InsideTheDeviceCallbackOfTheMainLoop, ASuccessorThatScansThereFindsPhones)
{
    int found = 0;
    std::function<void(App&)> liveOn = [&](App& app) {
        app.onPhone = [&](const FoundPhone&) {
            if (++found == kRounds) {
                return;
            }
            EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
            App& next = Begin(GetParam());
            liveOn(next);
            EXPECT_EQ(next.StartScan(), LYN_ERROR_NONE);
        };
    };
    App& first = Begin(GetParam());
    liveOn(first);
    ASSERT_EQ(first.StartScan(), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([&] { return found >= kRounds; }, 30000));
    EXPECT_EQ(Last().StopScan(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_P(InsideTheDeviceCallback, ASuccessorThatIsAskedToRequestThereHasItsOwnResult)
{
    for (std::size_t round = 1; round <= kRounds; ++round) {
        App& app = Begin(GetParam());
        app.onPhone = [&](const FoundPhone& phone) {
            EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
            EXPECT_EQ(Begin(GetParam()).Request(phone.address), LYN_ERROR_NONE);
        };
        ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);
        ASSERT_TRUE(simulator::RunUntil([&] { return Results() == round; })) << round;
        ASSERT_EQ(Last().Destroy(), LYN_ERROR_NONE);
    }
    ExpectNothingLeft();
    EXPECT_EQ(Results(), kRounds);
}

INSTANTIATE_TEST_SUITE_P(Each, InsideTheDeviceCallback, ::testing::ValuesIn(AllServices()), ServiceName);
INSTANTIATE_TEST_SUITE_P(Each, InsideTheDeviceCallbackOfTheMainLoop, ::testing::ValuesIn(RadioServices()),
                         ServiceName);

}  // namespace
}  // namespace lyn::test
