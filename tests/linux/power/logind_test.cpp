// SPDX-License-Identifier: Apache-2.0
#include <gio/gunixfdlist.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

#include "FakeService.h"
#include "PrivateBus.h"
#include "bus/Bus.h"
#include "lyn_platform/power.h"

namespace lyn::linux_tests {
namespace {

constexpr const char* kPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";

/// logind, with the other ends of the delays that it has granted.
class FakeLogind {
public:
    FakeLogind() : service("org.freedesktop.login1")
    {
        service.On(kPath, kManager, "Inhibit", [this](GDBusMessage* call) { return Grant(call); });
    }
    ~FakeLogind()
    {
        for (const int end : m_ends) {
            ::close(end);
        }
    }
    FakeLogind(const FakeLogind&) = delete;
    FakeLogind& operator=(const FakeLogind&) = delete;

    std::size_t Granted() const
    {
        const std::lock_guard lock(m_mutex);
        return m_ends.size();
    }

    /// How many of the granted delays are still held.
    std::size_t Held() const
    {
        const std::lock_guard lock(m_mutex);
        return static_cast<std::size_t>(std::count_if(m_ends.begin(), m_ends.end(), [](int end) {
            pollfd other{end, 0, 0};
            return ::poll(&other, 1, 0) == 0;  // a hang-up would be told
        }));
    }

    FakeService service;

private:
    GDBusMessage* Grant(GDBusMessage* call)
    {
        int ends[2] = {};
        EXPECT_EQ(::pipe(ends), 0);
        GUnixFDList* const descriptors = g_unix_fd_list_new();
        g_unix_fd_list_append(descriptors, ends[1], nullptr);
        ::close(ends[1]);
        GDBusMessage* const reply = g_dbus_message_new_method_reply(call);
        g_dbus_message_set_body(reply, g_variant_new("(h)", 0));
        g_dbus_message_set_unix_fd_list(reply, descriptors);
        g_object_unref(descriptors);
        const std::lock_guard lock(m_mutex);
        m_ends.push_back(ends[0]);
        return reply;
    }

    mutable std::mutex m_mutex;
    std::vector<int> m_ends;
};

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

    void PrepareForSleep(bool begins) const
    {
        logind->service.Signal(kPath, kManager, "PrepareForSleep", begins ? "(true,)" : "(false,)");
    }

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
    logind->service.Signal(kPath, kManager, "PrepareForShutdown", "(true,)");
    ASSERT_TRUE(RunUntil([&] { return flags.size() == 1; }));
    EXPECT_EQ(flags.front(), 0U);
    logind->service.Signal(kPath, kManager, "PrepareForShutdown", "(false,)");
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
    logind->service.Fail(kPath, kManager, "Inhibit", "org.freedesktop.DBus.Error.AccessDenied");
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
    logind->service.Signal(kPath, kManager, "PrepareForSleep", "()");
    RunQuietly();
    EXPECT_EQ(device_power_get_state(), 3);
    PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
}

TEST_F(PowerTest, ASignalWithOtherValuesIsNoSleep)
{
    Subscribe();
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    logind->service.Signal(kPath, kManager, "PrepareForSleep", "('true',)");
    logind->service.Signal(kPath, kManager, "PrepareForShutdown", "(1,)");
    RunQuietly();
    EXPECT_TRUE(flags.empty());
    EXPECT_EQ(device_power_get_state(), 1);
}

TEST_F(PowerTest, ACallbackIsWanted)
{
    EXPECT_NE(device_power_subscribe_poweroff_event(nullptr, nullptr), 0);
    EXPECT_NE(device_power_subscribe_ambient_poweroff(nullptr, nullptr), 0);
}

}  // namespace
}  // namespace lyn::linux_tests
