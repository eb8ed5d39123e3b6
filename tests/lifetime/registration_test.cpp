// SPDX-License-Identifier: Apache-2.0
//
// The platform has one slot for each registration. A service whose end comes late, from inside its own
// callback, leaves the slots to the service that has come after it.
#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

using TheNextService = Lives;

TEST_F(TheNextService, KeepsItsRegistrationsForTheDeviceWhenCreatedInsideAReportOfTheDevice)
{
    App& first = Begin("nodlink");
    void* registered = nullptr;
    first.onState = [&](lyn_state_e state) {
        if (state == LYN_STATE_READY) {
            EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
            Begin("nodlink");
            registered = simulator::AdapterRegistration().userData;
            simulator::ClearJournal();
        }
    };
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    simulator::Settle();
    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    simulator::Settle();

    ASSERT_NE(registered, nullptr);
    EXPECT_EQ(simulator::AdapterRegistration().userData, registered);
    EXPECT_EQ(simulator::PowerOffRegistration().userData, registered);
    EXPECT_EQ(simulator::AmbientPowerOffRegistration().userData, registered);
    EXPECT_EQ(CountCalls("bt_adapter_unset_state_changed_cb"), 0);
    EXPECT_EQ(CountCalls("device_power_unsubscribe_poweroff_event"), 0);
    EXPECT_EQ(CountCalls("device_power_unsubscribe_ambient_poweroff"), 0);

    App& next = Last();
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    simulator::Settle();
    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    simulator::Settle();
    simulator::AmbientPowerOff();
    simulator::Settle();
    EXPECT_EQ(next.states, std::vector({LYN_STATE_NOT_READY, LYN_STATE_READY, LYN_STATE_NOT_READY}));
    ExpectNothingLeft();
    EXPECT_EQ(CountCalls("bt_adapter_unset_state_changed_cb"), 1);
    EXPECT_EQ(CountCalls("device_power_unsubscribe_poweroff_event"), 1);
    EXPECT_EQ(CountCalls("device_power_unsubscribe_ambient_poweroff"), 1);
}

TEST_F(TheNextService, KeepsItsRegistrationsForTheDeviceThroughHundredsOfGenerations)
{
    std::function<void(App&)> liveOn = [&](App& app) {
        app.onState = [&](lyn_state_e) {
            EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
            liveOn(Begin("nodlink"));
        };
    };
    liveOn(Begin("nodlink"));
    for (int round = 0; round < kRounds; ++round) {
        simulator::AmbientPowerOff();
        simulator::Settle();
        ASSERT_EQ(simulator::Alive().registrations, 3) << round;
        ASSERT_EQ(simulator::Alive().productInits, 1) << round;
    }
    ExpectNothingLeft();
}

class TheNextServiceOfEach : public LivesOfEach {
protected:
    static int UnsetCalls() { return CountCalls("bt_gatt_unset_connection_state_changed_cb"); }
};

TEST_P(TheNextServiceOfEach, KeepsItsRegistrationForLinksWhenItRequestsInsideTheBeginOfARequest)
{
    App& first = Begin(GetParam());
    void* registered = nullptr;
    first.onState = [&](lyn_state_e state) {
        if (state == LYN_STATE_REQUESTING) {
            EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
            EXPECT_EQ(Begin(GetParam()).Request(kPhone), LYN_ERROR_NONE);
            registered = simulator::ConnectionRegistration().userData;
            simulator::ClearJournal();
        }
    };
    EXPECT_EQ(first.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_NE(registered, nullptr);
    EXPECT_EQ(CountCalls("bt_product_deinit"), 1);
    EXPECT_EQ(UnsetCalls(), 0);
    EXPECT_EQ(simulator::ConnectionRegistration().userData, registered);
    EXPECT_TRUE(Last().WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(Results(), 1U);
}

TEST_P(TheNextServiceOfEach, HasTheSlotForLinksFreeWhenTheOneBeforeWasDestroyedInMidRequest)
{
    App& first = Begin(GetParam());
    EXPECT_EQ(first.Request(kPhone), LYN_ERROR_NONE);
    simulator::ClearJournal();
    EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
    EXPECT_EQ(UnsetCalls(), 1);
    EXPECT_EQ(simulator::ConnectionRegistration().callback, nullptr);
    App& next = Begin(GetParam());
    EXPECT_EQ(next.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(next.WaitForResult());
    ExpectNothingLeft();
}

TEST_P(TheNextServiceOfEach, IsNotDisturbedByTheEndOfTheLinkOfTheOneBefore)
{
    simulator::Phone phone = PhoneFor(GetParam());
    phone.disconnectDelayMs = 20;
    simulator::AddPhone(phone);
    App& first = Begin(GetParam());
    first.onResult = [&](lyn_request_initiating_result_e) {
        EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
        EXPECT_EQ(Begin(GetParam()).Request(kPhone), LYN_ERROR_NONE);
    };
    EXPECT_EQ(first.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([&] { return Results() == 2; }));
    ExpectNothingLeft();
    EXPECT_EQ(Last().results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
    EXPECT_EQ(simulator::MessagesTo(kPhone).size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Each, TheNextServiceOfEach, ::testing::ValuesIn(RadioServices()), ServiceName);

}  // namespace
}  // namespace lyn::test
