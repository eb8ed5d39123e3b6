// SPDX-License-Identifier: Apache-2.0
#include "Simulator.h"

namespace lyn::simulator {

namespace {

template <typename Body>
auto Locked(Body body)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    return body(simulator);
}

template <typename Value>
std::optional<Value> FindSetting(const std::string& key)
{
    return Locked([&](Simulator& simulator) -> std::optional<Value> {
        const auto found = simulator.settings.find(key);
        if (found == simulator.settings.end() || !std::holds_alternative<Value>(found->second)) {
            return std::nullopt;
        }
        return std::get<Value>(found->second);
    });
}

}  // namespace

void SetAdapterState(bt_adapter_state_e state, bool report)
{
    Locked([&](Simulator& simulator) { simulator.adapter.SetState(state, report); });
}

void SetAdapterAddress(const std::optional<std::string>& address)
{
    Locked([&](Simulator& simulator) { simulator.adapter.address = address; });
}

void SetConnectDeadline(int ms)
{
    if (ms < 0) {
        throw std::invalid_argument("a deadline is not negative");
    }
    Locked([&](Simulator& simulator) { simulator.links.deadlineMs = ms; });
}

void SetPowerState(int state)
{
    Locked([&](Simulator& simulator) { simulator.power.state = state; });
}

void PowerOff(std::uint32_t flags)
{
    Locked([&](Simulator& simulator) { simulator.power.Post(simulator.power.powerOff, flags); });
}

void AmbientPowerOff()
{
    Locked([](Simulator& simulator) { simulator.power.Post(simulator.power.ambientPowerOff, 0); });
}

void SetSetting(const std::string& key, int value)
{
    Locked([&](Simulator& simulator) { simulator.settings[key] = value; });
}

void SetSetting(const std::string& key, const std::string& value)
{
    Locked([&](Simulator& simulator) { simulator.settings[key] = value; });
}

void RemoveSetting(const std::string& key)
{
    Locked([&](Simulator& simulator) { simulator.settings.erase(key); });
}

std::optional<int> IntSetting(const std::string& key)
{
    return FindSetting<int>(key);
}

std::optional<std::string> TextSetting(const std::string& key)
{
    return FindSetting<std::string>(key);
}

void SetSystemInfo(const std::string& key, std::optional<int> value)
{
    Locked([&](Simulator& simulator) {
        simulator.systemInfo.erase(key);
        if (value) {
            simulator.systemInfo[key] = *value;
        }
    });
}

void SetAccessPoint(const std::optional<AccessPoint>& ap)
{
    Locked([&](Simulator& simulator) { simulator.wifi.SetAccessPoint(ap); });
}

void SetWifiDirectAddress(const std::optional<std::string>& mac)
{
    Locked([&](Simulator& simulator) { simulator.wifi.directAddress = mac; });
}

std::string FilePrefix()
{
    return Locked([](Simulator& simulator) { return simulator.files.Prefix(); });
}

void SetFilePrefix(const std::string& folder)
{
    Locked([&](Simulator& simulator) { simulator.files.SetPrefix(folder); });
}

void WriteFile(const std::string& path, const std::string& content)
{
    Locked([&](Simulator& simulator) { simulator.files.Write(path, content); });
}

}  // namespace lyn::simulator
