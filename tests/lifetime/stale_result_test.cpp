// SPDX-License-Identifier: Apache-2.0
//
// A "nodlink" service leaves a request behind when the TV goes to sleep or Bluetooth goes off. What that
// request has still to say does not reach the request after it.
#include <glib.h>

#include <thread>

#include "lifetime/Lives.h"
#include "support/Clock.h"

namespace lyn::test {
namespace {

class ARequestThatWasLeftBehind : public Lives {
protected:
    ~ARequestThatWasLeftBehind() override
    {
        while (ElapseTimeout()) {
            simulator::Settle();
        }
    }

    // The next request takes longer than anything left behind.
    static void AddPhoneThatAnswers(const std::vector<std::string>& texts,
                                    const std::vector<simulator::ConnectOutcome>& connects = {{0, 0}, {0, 20}})
    {
        simulator::Phone phone = PhoneFor("nodlink");
        phone.connects = connects;
        CharacteristicOf(phone).answers.clear();
        for (const std::string& text : texts) {
            simulator::Answer answer;
            answer.text = text;
            CharacteristicOf(phone).answers.push_back(answer);
        }
        simulator::AddPhone(phone);
    }

    /// Out of service and back, with the request in between.
    static void SleepAndWake(App& app)
    {
        const std::size_t reports = app.states.size() + 2;
        simulator::AmbientPowerOff();
        simulator::SetAdapterState(BT_ADAPTER_ENABLED);
        EXPECT_TRUE(simulator::RunUntil([&] { return app.states.size() == reports; }));
        EXPECT_EQ(app.states.back(), LYN_STATE_READY);
    }
};

TEST_F(ARequestThatWasLeftBehind, DoesNotEndTheNextWithItsAnswer)
{
    AddPhoneThatAnswers({"NotTap", "Success"});
    App& app = Begin("nodlink");
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([] { return CountCalls("bt_gatt_disconnect") == 1; }));
    SleepAndWake(app);
    ASSERT_THAT(app.results, ::testing::IsEmpty());  // The answer is on its way to the application.

    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(app.WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(app.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
}

// The next request is made by another thread while the main loop is on its way to the application.
TEST_F(ARequestThatWasLeftBehind, DoesNotEndTheNextFromTheMiddleOfItsDelivery)
{
    AddPhoneThatAnswers({"NotTap", "Success"});
    App& app = Begin("nodlink");
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([] { return CountCalls("bt_gatt_disconnect") == 1; }));
    SleepAndWake(app);

    bool isAsked = false;
    simulator::SetCallListener([&](const simulator::CallMoment& moment) {
        if (!isAsked && moment.text.find("result : NotTap") != std::string::npos) {
            isAsked = true;
            std::thread([&app] { EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE); }).join();
        }
    });
    EXPECT_TRUE(simulator::RunUntil([&] { return isAsked; }));
    simulator::SetCallListener({});
    EXPECT_THAT(app.results, ::testing::IsEmpty());
    EXPECT_EQ(app.states.back(), LYN_STATE_REQUESTING);
    EXPECT_TRUE(app.WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(app.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
}

TEST_F(ARequestThatWasLeftBehind, IsDroppedWhenItEndsOutOfService)
{
    AddPhoneThatAnswers({"NotTap", "Success"});
    App& app = Begin("nodlink");
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    simulator::AmbientPowerOff();
    simulator::Settle();
    EXPECT_THAT(app.results, ::testing::IsEmpty());
    EXPECT_EQ(app.states.back(), LYN_STATE_NOT_READY);

    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    simulator::Settle();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(app.WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(app.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
}

TEST_F(ARequestThatWasLeftBehind, DoesNotEndTheNextWithItsTimeOut)
{
    AddPhoneThatAnswers({});
    App& app = Begin("nodlink");
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([] { return ArmedTimeouts().size() == 1; }));
    SleepAndWake(app);

    AddPhoneThatAnswers({"Success"});
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_THAT(ArmedTimeouts(), ::testing::IsEmpty());
    EXPECT_TRUE(app.WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(app.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
}

TEST_F(ARequestThatWasLeftBehind, LeavesRoomForTheNextHundredsOfTimes)
{
    // What is left behind is now connecting, now further on.
    AddPhoneThatAnswers({"Success"}, {{0, 1}});
    App& app = Begin("nodlink");
    for (std::size_t round = 1; round <= kRounds; ++round) {
        ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        if (round % 2 == 0) {
            simulator::ClearJournal();
            ASSERT_TRUE(simulator::RunUntil([] { return CountCalls("bt_gatt_client_create") == 1; }));
        }
        SleepAndWake(app);
        simulator::Settle();
        ASSERT_EQ(app.results.size(), round - 1) << "the result of what was left behind";
        ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        ASSERT_TRUE(app.WaitForResult()) << round;
        simulator::Settle();
        ASSERT_EQ(app.results.size(), round);
        ASSERT_EQ(app.states.back(), LYN_STATE_READY);
    }
    ExpectNothingLeft();
}

}  // namespace
}  // namespace lyn::test
