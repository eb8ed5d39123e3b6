// SPDX-License-Identifier: Apache-2.0
//
// "nodlink" is not created on a device that cannot serve; nothing of the attempt is left.
#include <algorithm>

#include "service/AppTest.h"

namespace lyn::test {
namespace {

// Why the device cannot serve.
struct Reason {
    const char* name;
    void (*bring)();
};

const Reason kReasons[] = {
    {"BluetoothOff", [] { simulator::SetAdapterState(BT_ADAPTER_DISABLED, false); }},
    {"UnreadableBluetooth", [] { simulator::FailCall("bt_adapter_get_state", -7); }},
    {"PowerState3", [] { simulator::SetPowerState(3); }},
    {"PowerState5", [] { simulator::SetPowerState(5); }},
    {"BluetoothOffAndPowerState3",
     [] {
         simulator::SetAdapterState(BT_ADAPTER_DISABLED, false);
         simulator::SetPowerState(3);
     }},
};

class NodLinkOnADisabledDevice : public AppTest, public ::testing::WithParamInterface<Reason> {
protected:
    NodLinkOnADisabledDevice() { GetParam().bring(); }

    // Every call of `begin` is followed by one of `end`.
    static void ExpectBalanced(const std::string& begin, const std::string& end)
    {
        const Texts calls = simulator::JournalText();
        const auto begun = std::find(calls.begin(), calls.end(), begin + "()");
        ASSERT_NE(begun, calls.end()) << begin;
        EXPECT_NE(std::find(begun, calls.end(), end + "()"), calls.end()) << begin;
        EXPECT_EQ(CountCalls(begin), CountCalls(end)) << begin;
    }

    static void ExpectNothingLeft()
    {
        ExpectBalanced("bt_product_init", "bt_product_deinit");
        ExpectBalanced("bt_adapter_set_state_changed_cb", "bt_adapter_unset_state_changed_cb");
        ExpectBalanced("device_power_subscribe_poweroff_event", "device_power_unsubscribe_poweroff_event");
        ExpectBalanced("device_power_subscribe_ambient_poweroff", "device_power_unsubscribe_ambient_poweroff");
        EXPECT_EQ(simulator::Alive().productInits, 0);
        EXPECT_EQ(simulator::Alive().registrations, 0);
    }

    static void Repair()
    {
        simulator::SetAdapterState(BT_ADAPTER_ENABLED, false);
        simulator::SetPowerState(0);
    }
};

TEST_P(NodLinkOnADisabledDevice, FailsAsAnInternalError)
{
    EXPECT_EQ(app.Create("nodlink"), LYN_ERROR_INTERNAL);
    EXPECT_EQ(app.handle, nullptr);
    const Texts errors = Messages(ERROR);
    ASSERT_GE(errors.size(), 2U);
    EXPECT_EQ(Texts(errors.end() - 2, errors.end()),
              Texts({"m_StateChangedCb is nullptr", "exception: m_StateChangedCb is nullptr"}));
    EXPECT_TRUE(HasLog(INFO, "create new sevice for nodlink"));
}

TEST_P(NodLinkOnADisabledDevice, LeavesNothingBehind)
{
    app.Create("nodlink");
    ExpectNothingLeft();
    EXPECT_EQ(CountCalls("bt_product_init"), 1);
    EXPECT_FALSE(HasLog(INFO, "In custom deleter of IService"));
    EXPECT_EQ(CountLog(DEBUG, "in custom deleter of IScanner"), 1);
    EXPECT_EQ(CountLog(DEBUG, "in custom deleter of IRequester"), 1);
    EXPECT_EQ(CountLog(DEBUG, "in custom deleter of IServiceFSM"), 1);
    EXPECT_EQ(CountLog(DEBUG, "in custom deleter of CDeviceStateChecekr"), 1);
}

TEST_P(NodLinkOnADisabledDevice, ReportsNoStateThenOrLater)
{
    app.Create("nodlink");
    Repair();
    SetBluetooth(BT_ADAPTER_DISABLED);
    SetBluetooth(BT_ADAPTER_ENABLED);
    simulator::AmbientPowerOff();
    simulator::Settle();
    EXPECT_TRUE(app.events.empty());
}

TEST_P(NodLinkOnADisabledDevice, IsCreatedOnceTheDeviceServes)
{
    EXPECT_EQ(app.Create("nodlink"), LYN_ERROR_INTERNAL);
    Repair();
    EXPECT_EQ(app.Create("nodlink"), LYN_ERROR_NONE);
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_SCANNING}));
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_P(NodLinkOnADisabledDevice, LeavesTheWayFreeForAnotherService)
{
    EXPECT_EQ(app.Create("nodlink"), LYN_ERROR_INTERNAL);
    EXPECT_EQ(app.Create("dummy"), LYN_ERROR_NONE);
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.phones.size(), 1U);
}

TEST_P(NodLinkOnADisabledDevice, MayBeTriedManyTimes)
{
    for (int time = 0; time < 50; ++time) {
        GetParam().bring();
        ASSERT_EQ(app.Create("nodlink"), LYN_ERROR_INTERNAL) << time;
    }
    ExpectNothingLeft();
    EXPECT_EQ(CountCalls("bt_product_init"), 50);
}

INSTANTIATE_TEST_SUITE_P(For, NodLinkOnADisabledDevice, ::testing::ValuesIn(kReasons),
                         [](const auto& test) { return std::string(test.param.name); });

using UnknownService = AppTest;

TEST_F(UnknownService, BeginsNothing)
{
    EXPECT_EQ(app.Create("unknown"), LYN_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(app.handle, nullptr);
    EXPECT_TRUE(simulator::JournalText().empty());
    EXPECT_EQ(Messages(ERROR), Texts({"unknown is not defined service", "exception: not defined service"}));
    EXPECT_EQ(Messages(INFO), Texts({"create new sevice for unknown"}));
    EXPECT_EQ(app.Create("mirroring"), LYN_ERROR_NONE);
}

}  // namespace
}  // namespace lyn::test
