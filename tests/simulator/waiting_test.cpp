// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <atomic>
#include <thread>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class Waiting : public SimulatorTest {};

TEST_F(Waiting, UntilSomethingIsSoEndsAtOnceWhenItIs)
{
    EXPECT_TRUE(RunUntil([] { return true; }, 0));
}

TEST_F(Waiting, UntilSomethingIsSoEndsAtTheLimit)
{
    EXPECT_FALSE(RunUntil([] { return false; }, 1));
}

TEST_F(Waiting, UntilSomethingIsSoSeesWhatAnotherThreadDoes)
{
    std::atomic<bool> done = false;
    std::thread other([&] { done = true; });
    EXPECT_TRUE(RunUntil([&] { return done.load(); }));
    other.join();
}

TEST_F(Waiting, ForQuietDeliversWhatIsDelayed)
{
    Answer late = Text("late");
    late.delayMs = 10;
    AddPhone(AnsweringPhone({late}));
    Peer peer;
    peer.Listen();
    peer.Write("hello");
    Settle();
    EXPECT_EQ(peer.values.size(), 1U);
}

TEST_F(Waiting, ForQuietDoesNotWaitForRepeatedAdvertisements)
{
    Phone phone = AnsweringPhone({});
    phone.intervalMs = 0;
    AddPhone(phone);
    Listener listener;
    listener.Start();
    Settle();
    EXPECT_EQ(listener.results.size(), 1U);
    Settle();
    EXPECT_EQ(listener.results.size(), 1U);
    EXPECT_TRUE(RunUntil([&] { return listener.results.size() > 3; })) << "they go on afterwards";
}

TEST_F(Waiting, ForQuietDoesNotWaitForTimeOutsOfOthers)
{
    bool fired = false;
    const auto fire = [](gpointer data) -> gboolean { return *static_cast<bool*>(data) = true, G_SOURCE_REMOVE; };
    const guint source = g_timeout_add_seconds(3600, fire, &fired);
    Settle();
    EXPECT_FALSE(fired);
    g_source_remove(source);
}

TEST_F(Waiting, ForQuietRunsWhatOthersHaveReady)
{
    int runs = 0;
    const auto run = [](gpointer data) -> gboolean {
        return ++*static_cast<int*>(data) < 3 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
    };
    g_idle_add(run, &runs);
    Settle();
    EXPECT_EQ(runs, 3);
}

TEST_F(Waiting, EventsWithoutDelayKeepTheirOrder)
{
    std::vector<int> order;
    struct Entry {
        std::vector<int>* order;
        int number;
    };
    Entry first{&order, 1};
    Entry second{&order, 2};
    const auto keep = [](const device_power_off_info_s*, void* data) {
        const auto* entry = static_cast<Entry*>(data);
        entry->order->push_back(entry->number);
        return 0;
    };
    device_power_subscribe_poweroff_event(keep, &first);
    device_power_subscribe_ambient_poweroff(keep, &second);
    for (int i = 0; i < 3; ++i) {
        PowerOff(0);
        AmbientPowerOff();
    }
    Settle();
    EXPECT_EQ(order, (std::vector{1, 2, 1, 2, 1, 2}));
}

TEST_F(Waiting, AResetDropsWhatWasToCome)
{
    AddPhone(AnsweringPhone({}));
    bool called = false;
    const auto mark = [](int, bool, const char*, void* data) { *static_cast<bool*>(data) = true; };
    bt_gatt_set_connection_state_changed_cb(mark, &called);
    bt_gatt_connect(kPhone, false);
    Reset();
    bt_gatt_set_connection_state_changed_cb(mark, &called);
    Settle();
    EXPECT_FALSE(called);
}

}  // namespace
}  // namespace lyn::simulator::test
