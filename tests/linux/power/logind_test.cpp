// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "FakeBluez.h"
#include "FakeLogind.h"
#include "PrivateBus.h"
#include "bus/Bus.h"
#include "lyn_platform/bluetooth.h"
#include "lyn_platform/power.h"

namespace lyn::linux_tests {
namespace {

class PowerTest : public ::testing::Test {
protected:
    PowerTest() { PrivateBus::Instance(); }
    ~PowerTest() override
    {
        device_power_unsubscribe_poweroff_event();
        device_power_unsubscribe_ambient_poweroff();
    }

    void Subscribe() { ASSERT_EQ(device_power_subscribe_poweroff_event(&PowerTest::OnPowerOff, this), 0); }

    static int OnPowerOff(const device_power_off_info_s* info, void* self)
    {
        auto* const test = static_cast<PowerTest*>(self);
        test->flags.push_back(info->flags);
        if (test->logind != nullptr) {
            test->heldInCallback = test->logind->Held();
        }
        return 0;
    }

    void PrepareForSleep(bool begins) const { logind->PrepareForSleep(begins); }

    std::unique_ptr<FakeLogind> logind = std::make_unique<FakeLogind>();
    std::vector<std::uint32_t> flags;
    std::size_t heldInCallback = 0;
};

TEST_F(PowerTest, AComingSleepIsAPowerOffEventAndWaitsForTheCallback)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    EXPECT_EQ(device_power_get_state(), 1);
    PrepareForSleep(true);
    ASSERT_TRUE(RunUntil([&] { return flags.size() == 1; }));
    EXPECT_EQ(flags.front(), 0x40000000U);
    EXPECT_EQ(heldInCallback, 1U);
    EXPECT_EQ(device_power_get_state(), 3);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 0; })) << "the sleep is held up";
    PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; })) << "the next sleep would not wait";
    EXPECT_EQ(device_power_get_state(), 1);
    EXPECT_EQ(flags.size(), 1U);
}

TEST_F(PowerTest, AShutdownIsAPowerOffEventWithoutTheFlagOfSleep)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    logind->PrepareForShutdown(true);
    ASSERT_TRUE(RunUntil([&] { return flags.size() == 1; }));
    EXPECT_EQ(flags.front(), 0U);
    logind->PrepareForShutdown(false);
    RunQuietly();
    EXPECT_EQ(flags.size(), 1U) << "a shutdown that was called off";
}

TEST_F(PowerTest, NothingIsToldAfterTheSubscriptionHasEnded)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    PrepareForSleep(true);
    EXPECT_EQ(device_power_unsubscribe_poweroff_event(), 0);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 0; }));
    EXPECT_TRUE(flags.empty());
    PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
}

TEST_F(PowerTest, ALogindThatComesBackIsAskedForTimeAgain)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    logind.reset();
    RunQuietly();
    logind = std::make_unique<FakeLogind>();
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    PrepareForSleep(true);
    EXPECT_TRUE(RunUntil([&] { return flags.size() == 1; }));
    PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
}

TEST_F(PowerTest, ASleepEndsWithTheLogindThatAnnouncedIt)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    PrepareForSleep(true);
    ASSERT_TRUE(RunUntil([&] { return device_power_get_state() == 3; }));
    logind.reset();
    EXPECT_TRUE(RunUntil([&] { return device_power_get_state() == 1; }));
}

TEST_F(PowerTest, ABusThatWasAwayIsListenedToAgain)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    g_dbus_connection_close_sync(linux_platform::Bus::System()->Connection(), nullptr, nullptr);
    ASSERT_TRUE(RunUntil([&] { return logind->Granted() == 2 && logind->Held() == 1; }));
    PrepareForSleep(true);
    EXPECT_TRUE(RunUntil([&] { return flags.size() == 1; }));
    PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
}

TEST_F(PowerTest, ARefusedDelayLosesNoEvent)
{
    logind->Treat("Manager.Inhibit", 0, Treatment::Fails("org.freedesktop.DBus.Error.AccessDenied"));
    Subscribe();
    RunQuietly();
    EXPECT_EQ(logind->Granted(), 0U);
    PrepareForSleep(true);
    EXPECT_TRUE(RunUntil([&] { return flags.size() == 1; }));
    PrepareForSleep(false);
    RunQuietly();
    EXPECT_EQ(device_power_get_state(), 1);
}

TEST_F(PowerTest, ASignalWithOtherValuesIsNoWakingEither)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    PrepareForSleep(true);
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 0; }));
    logind->Tell("PrepareForSleep", g_variant_new("()"));
    RunQuietly();
    EXPECT_EQ(device_power_get_state(), 3);
    PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
}

TEST_F(PowerTest, ASignalWithOtherValuesIsNoSleep)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    logind->Tell("PrepareForSleep", g_variant_new("(s)", "true"));
    logind->Tell("PrepareForShutdown", g_variant_new("(i)", 1));
    RunQuietly();
    EXPECT_TRUE(flags.empty());
    EXPECT_EQ(device_power_get_state(), 1);
}

TEST_F(PowerTest, ItIsTheSleepThatIsDelayedAndNotForbidden)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    EXPECT_EQ(logind->Asked(), "('sleep', 'lyn_service', 'tells applications of the coming sleep', 'delay')");
}

TEST_F(PowerTest, AWakingThatNoSleepCameBeforeAsksForNoSecondDelay)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    PrepareForSleep(false);
    RunQuietly();
    EXPECT_EQ(logind->Granted(), 1U);
    EXPECT_TRUE(flags.empty());
}

TEST_F(PowerTest, ASecondSubscriptionTakesThePlaceOfTheFirst)
{
    Subscribe();
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    PrepareForSleep(true);
    ASSERT_TRUE(RunUntil([&] { return !flags.empty(); }));
    RunQuietly();
    EXPECT_EQ(flags.size(), 1U);
    PrepareForSleep(false);
}

TEST_F(PowerTest, TheAmbientRegistrationIsKeptAndNeverCalled)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    int ambient = 0;
    const auto count = [](const device_power_off_info_s*, void* data) { return ++*static_cast<int*>(data); };
    EXPECT_EQ(device_power_subscribe_ambient_poweroff(count, &ambient), 0);
    PrepareForSleep(true);
    logind->PrepareForShutdown(true);
    EXPECT_TRUE(RunUntil([&] { return flags.size() == 2; }));
    EXPECT_EQ(ambient, 0);
    PrepareForSleep(false);
}

TEST_F(PowerTest, TheAdaptersStateIsToldOnceMoreAfterASleep)
{
    FakeBluez bluez;
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    ASSERT_EQ(bt_product_init(), 0);
    RunQuietly();
    std::vector<bt_adapter_state_e> states;
    const auto keep = [](int, bt_adapter_state_e state, void* data) {
        static_cast<std::vector<bt_adapter_state_e>*>(data)->push_back(state);
    };
    ASSERT_EQ(bt_adapter_set_state_changed_cb(keep, &states), 0);
    PrepareForSleep(true);
    PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return !states.empty(); }));
    EXPECT_EQ(states, std::vector<bt_adapter_state_e>{BT_ADAPTER_ENABLED});
    bt_adapter_unset_state_changed_cb();
}

TEST_F(PowerTest, ASystemBusThatComesBackIsWatchedAgain)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    logind.reset();
    PrivateBus::Restart();
    logind = std::make_unique<FakeLogind>();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    PrepareForSleep(true);
    EXPECT_TRUE(RunUntil([&] { return flags.size() == 1; }));
    PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
}

TEST_F(PowerTest, ASleepThatTheBusDidNotOutliveIsOver)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    PrepareForSleep(true);
    ASSERT_TRUE(RunUntil([&] { return flags.size() == 1; }));
    logind.reset();
    PrivateBus::Restart();
    EXPECT_TRUE(RunUntil([&] { return device_power_get_state() == 1; }));
    logind = std::make_unique<FakeLogind>();
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
}

TEST_F(PowerTest, ACallbackIsWanted)
{
    EXPECT_NE(device_power_subscribe_poweroff_event(nullptr, nullptr), 0);
    EXPECT_NE(device_power_subscribe_ambient_poweroff(nullptr, nullptr), 0);
}

}  // namespace
}  // namespace lyn::linux_tests
