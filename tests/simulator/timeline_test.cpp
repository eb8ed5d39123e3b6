// SPDX-License-Identifier: Apache-2.0
#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class Timeline : public SimulatorTest {
protected:
    static void Load(const std::string& events) { LoadScenarioText("{\"tv\": {\"timeline\": [" + events + "]}}"); }

    static bool Reached(const std::string& key)
    {
        return RunUntil([&] { return IntSetting(key).has_value(); });
    }
};

TEST_F(Timeline, ChangesSettingsInItsOrder)
{
    Load(R"({ "atMs": 20, "event": "setting", "key": "late", "value": 1 },
            { "atMs": 1, "event": "setting", "key": "early", "value": 1 },
            { "atMs": 20, "event": "setting", "key": "text", "value": "x" },
            { "atMs": 20, "event": "setting", "key": "memory/wifi/frequency", "value": null },
            { "atMs": 21, "event": "setting", "key": "last", "value": 1 })");
    EXPECT_FALSE(IntSetting("early"));
    ASSERT_TRUE(Reached("early"));
    EXPECT_FALSE(IntSetting("late"));
    ASSERT_TRUE(Reached("last"));
    EXPECT_TRUE(IntSetting("late"));
    EXPECT_EQ(TextSetting("text"), "x");
    EXPECT_FALSE(IntSetting("memory/wifi/frequency"));
}

TEST_F(Timeline, TurnsBluetoothOffAndOn)
{
    Load(R"({ "atMs": 1, "event": "bluetoothOff" }, { "atMs": 2, "event": "bluetoothOn" })");
    std::vector<bt_adapter_state_e> states;
    const auto keep = [](int, bt_adapter_state_e state, void* out) {
        static_cast<std::vector<bt_adapter_state_e>*>(out)->push_back(state);
    };
    bt_adapter_set_state_changed_cb(keep, &states);
    ASSERT_TRUE(RunUntil([&] { return states.size() == 2; }));
    EXPECT_EQ(states, (std::vector{BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}));
}

TEST_F(Timeline, SendsPowerEvents)
{
    Load(R"({ "atMs": 1, "event": "powerState", "state": 3 },
            { "atMs": 2, "event": "suspend" }, { "atMs": 3, "event": "powerOff" },
            { "atMs": 4, "event": "ambientOff" })");
    std::vector<std::uint32_t> events;
    const auto keep = [](const device_power_off_info_s* info, void* out) {
        static_cast<std::vector<std::uint32_t>*>(out)->push_back(info->flags);
        return 0;
    };
    const auto mark = [](const device_power_off_info_s*, void* out) {
        static_cast<std::vector<std::uint32_t>*>(out)->push_back(99);
        return 0;
    };
    device_power_subscribe_poweroff_event(keep, &events);
    device_power_subscribe_ambient_poweroff(mark, &events);
    ASSERT_TRUE(RunUntil([&] { return events.size() == 3; }));
    EXPECT_EQ(events, (std::vector<std::uint32_t>{0x40000000, 0, 99}));
    EXPECT_EQ(device_power_get_state(), 3);
}

TEST_F(Timeline, IsNotWaitedForWhenAllIsQuiet)
{
    Load(R"({ "atMs": 3600000, "event": "setting", "key": "late", "value": 1 })");
    Settle();
    EXPECT_FALSE(IntSetting("late"));
}

TEST_F(Timeline, EndsWithItsScenario)
{
    Load(R"({ "atMs": 1, "event": "setting", "key": "of the old", "value": 1 })");
    Load(R"({ "atMs": 5, "event": "setting", "key": "of the new", "value": 1 })");
    ASSERT_TRUE(Reached("of the new"));
    EXPECT_FALSE(IntSetting("of the old"));
}

}  // namespace
}  // namespace lyn::simulator::test
