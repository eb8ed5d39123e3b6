// SPDX-License-Identifier: Apache-2.0
//
// After a registration has ended, nothing of it begins; and it may be ended anywhere, inside its own callback
// too.
#include <glib.h>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class Callbacks : public SimulatorTest {};

TEST_F(Callbacks, OfAScanDoNotComeAfterItsStop)
{
    AddPhone(AnsweringPhone({}));
    Listener listener;
    listener.Start();
    listener.Stop();
    Settle();
    EXPECT_TRUE(listener.results.empty());
}

TEST_F(Callbacks, OfAScanDoNotComeToTheNextScan)
{
    AddPhone(AnsweringPhone({}));
    Listener first;
    Listener second;
    first.Start();
    first.Stop();
    second.Start();
    Settle();
    EXPECT_TRUE(first.results.empty());
    EXPECT_EQ(second.results.size(), 1U);
}

TEST_F(Callbacks, OfTheAdapterDoNotComeAfterTheirUnset)
{
    int calls = 0;
    const auto count = [](int, bt_adapter_state_e, void* data) { ++*static_cast<int*>(data); };
    bt_adapter_set_state_changed_cb(count, &calls);
    SetAdapterState(BT_ADAPTER_DISABLED);
    bt_adapter_unset_state_changed_cb();
    Settle();
    EXPECT_EQ(calls, 0);
    SetAdapterState(BT_ADAPTER_ENABLED);
    bt_adapter_set_state_changed_cb(count, &calls);
    Settle();
    EXPECT_EQ(calls, 0) << "a change from before the registration";
}

TEST_F(Callbacks, OfPowerEventsDoNotComeAfterTheirUnsubscribe)
{
    int calls = 0;
    const auto count = [](const device_power_off_info_s*, void* data) { return ++*static_cast<int*>(data), 0; };
    device_power_subscribe_poweroff_event(count, &calls);
    device_power_subscribe_ambient_poweroff(count, &calls);
    PowerOff(0x40000000);
    AmbientPowerOff();
    device_power_unsubscribe_poweroff_event();
    device_power_unsubscribe_ambient_poweroff();
    Settle();
    EXPECT_EQ(calls, 0);
}

TEST_F(Callbacks, OfValuesDoNotComeAfterTheirUnset)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    peer.Listen();
    peer.Write("hello");
    bt_gatt_client_unset_characteristic_value_changed_cb(peer.characteristic);
    Settle();
    EXPECT_TRUE(peer.values.empty());
    EXPECT_EQ(peer.completions.size(), 1U);
}

TEST_F(Callbacks, OfAClientDoNotComeAfterItsDestruction)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    peer.Listen();
    peer.Write("hello");
    peer.RequestMtu(256);
    peer.Destroy();
    Settle();
    EXPECT_TRUE(peer.events.empty());
}

TEST_F(Callbacks, OfTheMtuDoNotComeAfterTheirUnset)
{
    AddPhone(AnsweringPhone({}));
    Peer peer;
    peer.RequestMtu(256);
    bt_gatt_client_unset_att_mtu_changed_cb(peer.client);
    Settle();
    EXPECT_TRUE(peer.mtus.empty());
}

TEST_F(Callbacks, MayDestroyTheirClientAndStillReadTheValue)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    peer.Listen();
    peer.onValue = [&] {
        peer.Destroy();
        bt_gatt_disconnect(kPhone);
        RemovePhone(kPhone);
    };
    peer.Write("hello");
    Settle();
    EXPECT_EQ(peer.values, std::vector<std::string>{"Success"});
    EXPECT_EQ(Alive().clients, 0);
}

TEST_F(Callbacks, OfTheOtherNotificationsEndWithTheClientThatTheFirstOneDestroys)
{
    Answer answer = Text("again");
    answer.repeat = 5;
    AddPhone(AnsweringPhone({answer}));
    Peer peer;
    peer.Listen();
    peer.onValue = [&] { peer.Destroy(); };
    peer.Write("hello");
    Settle();
    EXPECT_EQ(peer.values.size(), 1U);
}

TEST_F(Callbacks, OfACompletionMayDestroyTheirClient)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    peer.Listen();
    peer.onWritten = [&] { peer.Destroy(); };
    peer.Write("hello");
    Settle();
    EXPECT_EQ(peer.events, std::vector<std::string>{"written 0"});
}

TEST_F(Callbacks, MayRunTheMainContextThemselves)
{
    AddPhone(AnsweringPhone({Text("inner")}));
    Peer peer;
    peer.Listen();
    std::vector<std::string> seen;
    Listener listener;
    listener.onResult = [&](bt_adapter_le_device_scan_result_info_s* info) {
        listener.onResult = nullptr;
        peer.Write("hello");
        EXPECT_TRUE(RunUntil([&] { return !peer.values.empty(); }));
        seen.emplace_back(info->remote_address);
    };
    listener.Start();
    Settle();
    EXPECT_EQ(peer.values, std::vector<std::string>{"inner"});
    EXPECT_EQ(seen, std::vector<std::string>{kPhone});
}

TEST_F(Callbacks, MayResetTheWholeSimulation)
{
    AddPhone(AnsweringPhone({}));
    AddPhone(AnsweringPhone({}, kOther));
    Listener listener;
    listener.onResult = [](auto*) { Reset(); };
    listener.Start();
    Settle();
    EXPECT_EQ(listener.results.size(), 1U);
}

TEST_F(Callbacks, ComeOnTheMainContextOnly)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    int onContext = 0;
    const auto check = [&] { onContext += g_main_context_is_owner(nullptr) ? 1 : 0; };
    peer.onValue = check;
    peer.onWritten = check;
    peer.Listen();
    peer.Write("hello");
    Settle();
    EXPECT_EQ(onContext, 2);
}

}  // namespace
}  // namespace lyn::simulator::test
