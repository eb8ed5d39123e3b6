// SPDX-License-Identifier: Apache-2.0
#include <limits>

#include "ScenarioParts.h"
#include "Simulator.h"

namespace lyn::simulator {

namespace {

constexpr std::uint32_t kSuspendFlag = 0x40000000;

using Happening = std::function<void(Simulator&)>;

Happening ParseSettingEvent(const JsonField& field)
{
    field.OnlyMembers({"atMs", "event", "key", "value"});
    const std::string key = field.Get("key").Text();
    const JsonField value = field.Get("value");
    if (value.IsNull()) {
        return [key](Simulator& simulator) { simulator.settings.erase(key); };
    }
    const SettingValue setting =
        value.IsText()
            ? SettingValue(value.Text())
            : SettingValue(value.Integer(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    return [key, setting](Simulator& simulator) { simulator.settings[key] = setting; };
}

Happening ParsePowerStateEvent(const JsonField& field)
{
    field.OnlyMembers({"atMs", "event", "state"});
    const int state = field.Get("state").Integer(0, std::numeric_limits<int>::max());
    return [state](Simulator& simulator) { simulator.power.state = state; };
}

Happening AdapterEvent(bt_adapter_state_e state)
{
    return [state](Simulator& simulator) { simulator.adapter.SetState(state, true); };
}

Happening PowerOffEvent(std::uint32_t flags)
{
    return [flags](Simulator& simulator) { simulator.power.Post(simulator.power.powerOff, flags); };
}

Happening AmbientOffEvent()
{
    return [](Simulator& simulator) { simulator.power.Post(simulator.power.ambientPowerOff, 0); };
}

Happening ParsePlainEvent(const JsonField& field)
{
    field.OnlyMembers({"atMs", "event"});
    const JsonField event = field.Get("event");
    const std::string name = event.Text();
    if (name == "bluetoothOn") {
        return AdapterEvent(BT_ADAPTER_ENABLED);
    }
    if (name == "bluetoothOff") {
        return AdapterEvent(BT_ADAPTER_DISABLED);
    }
    if (name == "suspend") {
        return PowerOffEvent(kSuspendFlag);
    }
    if (name == "powerOff") {
        return PowerOffEvent(0);
    }
    if (name == "ambientOff") {
        return AmbientOffEvent();
    }
    event.Fail("must be bluetoothOn, bluetoothOff, suspend, powerOff, ambientOff, powerState or setting");
}

Happening ParseHappening(const JsonField& field)
{
    const std::string name = field.Get("event").Text();
    if (name == "setting") {
        return ParseSettingEvent(field);
    }
    if (name == "powerState") {
        return ParsePowerStateEvent(field);
    }
    return ParsePlainEvent(field);
}

}  // namespace

std::vector<TimelineEvent> ParseTimeline(const JsonField& field)
{
    std::vector<TimelineEvent> timeline;
    for (const JsonField& element : field.Elements()) {
        if (!element.IsObject()) {
            element.Fail("must be an object");
        }
        timeline.push_back({element.Get("atMs").Milliseconds(), ParseHappening(element)});
    }
    return timeline;
}

}  // namespace lyn::simulator
