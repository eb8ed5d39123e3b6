// SPDX-License-Identifier: Apache-2.0
#include <type_traits>

#include "SimulatorTest.h"
#include "lyn_simulator/air.h"

namespace lyn::simulator::test {
namespace {

class Adapter : public SimulatorTest {
protected:
    static bt_adapter_state_e State()
    {
        bt_adapter_state_e state{};
        EXPECT_EQ(bt_adapter_get_state(&state), 0);
        return state;
    }

    std::vector<bt_adapter_state_e> states;

    void Watch()
    {
        const auto keep = [](int result, bt_adapter_state_e state, void* out) {
            EXPECT_EQ(result, 0);
            static_cast<std::vector<bt_adapter_state_e>*>(out)->push_back(state);
        };
        EXPECT_EQ(bt_adapter_set_state_changed_cb(keep, &states), 0);
    }
};

TEST_F(Adapter, HasStatesAndPacketsThatHoldAnyInt)
{
    static_assert(std::is_same_v<std::underlying_type_t<bt_adapter_state_e>, int>);
    static_assert(std::is_same_v<std::underlying_type_t<bt_adapter_le_packet_type_e>, int>);
    static_assert(std::is_same_v<std::underlying_type_t<lyn_simulator_air_event_e>, int>);
    Watch();
    SetAdapterState(static_cast<bt_adapter_state_e>(2));
    Settle();
    EXPECT_EQ(State(), static_cast<bt_adapter_state_e>(2));
    EXPECT_EQ(states, std::vector{static_cast<bt_adapter_state_e>(2)});
}

TEST_F(Adapter, ReportsItsChangesFromTheMainLoop)
{
    Watch();
    EXPECT_EQ(State(), BT_ADAPTER_ENABLED);
    SetAdapterState(BT_ADAPTER_DISABLED);
    EXPECT_EQ(State(), BT_ADAPTER_DISABLED);
    EXPECT_TRUE(states.empty());
    Settle();
    SetAdapterState(BT_ADAPTER_ENABLED, false);
    Settle();
    EXPECT_EQ(states, std::vector{BT_ADAPTER_DISABLED});
    EXPECT_EQ(State(), BT_ADAPTER_ENABLED);
}

TEST_F(Adapter, ChangesKeepTheirOrder)
{
    Watch();
    SetAdapterState(BT_ADAPTER_DISABLED);
    SetAdapterState(BT_ADAPTER_ENABLED);
    Settle();
    EXPECT_EQ(states, (std::vector{BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}));
}

TEST_F(Adapter, TellsItsAddress)
{
    char* address = nullptr;
    ASSERT_EQ(bt_adapter_get_address(&address), 0);
    EXPECT_EQ(TakeText(address), "02:00:00:00:00:01");
    SetAdapterAddress(std::nullopt);
    ASSERT_EQ(bt_adapter_get_address(&address), 0);
    EXPECT_EQ(address, nullptr);
}

TEST_F(Adapter, CountsInitialisations)
{
    EXPECT_EQ(bt_product_init(), 0);
    EXPECT_EQ(bt_product_init(), 0);
    EXPECT_EQ(Alive().productInits, 2);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(bt_product_deinit(), 0);
    }
    EXPECT_EQ(Alive().productInits, 0);
}

TEST_F(Adapter, RemembersTheBoost)
{
    EXPECT_EQ(bt_adapter_le_enable_le_scan_performance_boost(true), 0);
    EXPECT_TRUE(Alive().boosted);
    EXPECT_EQ(bt_adapter_le_enable_le_scan_performance_boost(false), 0);
    EXPECT_FALSE(Alive().boosted);
}

TEST_F(Adapter, ThatIsOffServesNobody)
{
    AddPhone(AnsweringPhone({}));
    SetAdapterState(BT_ADAPTER_DISABLED);
    Listener listener;
    EXPECT_NE(listener.Start(), 0);
    EXPECT_NE(bt_gatt_connect(kPhone, false), 0);
    EXPECT_NE(bt_gatt_disconnect(kPhone), 0);
    void* client = nullptr;
    EXPECT_NE(bt_gatt_client_create(kPhone, &client), 0);
}

TEST_F(Adapter, ThatIsTurnedOffEndsTheScan)
{
    AddPhone(AnsweringPhone({}));
    Listener listener;
    listener.Start();
    SetAdapterState(BT_ADAPTER_DISABLED);
    SetAdapterState(BT_ADAPTER_ENABLED);
    Settle();
    EXPECT_TRUE(listener.results.empty());
    EXPECT_EQ(listener.Stop(), kScanNotRunning);
    listener.Start();
    Settle();
    EXPECT_EQ(listener.results.size(), 1U);
}

TEST_F(Adapter, ThatIsTurnedOffLosesTheLinks)
{
    AddPhone(AnsweringPhone({}));
    Peer peer;
    SetAdapterState(BT_ADAPTER_DISABLED);
    EXPECT_NE(peer.Write("x"), 0);
    Settle();
    ASSERT_EQ(peer.link.reports.size(), 2U);
    EXPECT_EQ(peer.link.reports[1], (LinkUser::Report{kLinkLost, false, kPhone}));
    EXPECT_EQ(Alive().links, 0);
}

TEST_F(Adapter, ThatIsTurnedOffFailsAConnectByOneReport)
{
    AddPhone(AnsweringPhone({}));
    LinkUser user;
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    SetAdapterState(BT_ADAPTER_DISABLED);
    Settle();
    ASSERT_EQ(user.reports.size(), 1U);
    EXPECT_NE(user.reports[0].result, 0);
    EXPECT_TRUE(user.reports[0].connected);
}

TEST_F(Adapter, ThatIsTurnedOffFailsAConnectThatWaitsForTheOldLink)
{
    Phone phone = AnsweringPhone({});
    phone.disconnectDelayMs = 5;
    AddPhone(phone);
    Peer peer;
    bt_gatt_disconnect(kPhone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    SetAdapterState(BT_ADAPTER_DISABLED);
    Settle();
    ASSERT_EQ(peer.link.reports.size(), 3U);
    EXPECT_NE(peer.link.reports[2].result, 0);
    EXPECT_TRUE(peer.link.reports[2].connected);
    EXPECT_EQ(Alive().links, 0);
}

TEST_F(Adapter, RefusesMissingArguments)
{
    EXPECT_NE(bt_adapter_get_state(nullptr), 0);
    EXPECT_NE(bt_adapter_get_address(nullptr), 0);
    EXPECT_NE(bt_adapter_set_state_changed_cb(nullptr, nullptr), 0);
    EXPECT_NE(bt_gatt_set_connection_state_changed_cb(nullptr, nullptr), 0);
}

TEST_F(Adapter, ShowsItsRegistrationToTheTest)
{
    EXPECT_EQ(AdapterRegistration().callback, nullptr);
    Watch();
    const auto registration = AdapterRegistration();
    ASSERT_NE(registration.callback, nullptr);
    registration.callback(0, BT_ADAPTER_DISABLED, registration.userData);
    EXPECT_EQ(states, std::vector{BT_ADAPTER_DISABLED});
}

}  // namespace
}  // namespace lyn::simulator::test
