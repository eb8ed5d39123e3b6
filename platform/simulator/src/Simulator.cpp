// SPDX-License-Identifier: Apache-2.0
#include "Simulator.h"

#include <cstdio>
#include <cstdlib>

#include "LogBook.h"
#include "Scenario.h"

namespace lyn::simulator {

namespace {

Scenario ProcessScenario()
{
    const char* file = std::getenv("LYN_SIMULATOR_SCENARIO");
    if (file != nullptr && *file != '\0') {
        return ReadScenarioFile(file);
    }
    return ParseScenario(kDefaultScenarioText, "default scenario");
}

/// Removes the TV's files when this library ends, which is after all that use it.
struct FilesGuard {
    ~FilesGuard()
    {
        Simulator& simulator = Simulator::Instance();
        const std::lock_guard lock(simulator.mutex);
        simulator.files.Remove();
    }
};
const FilesGuard g_filesGuard;

}  // namespace

Simulator& Simulator::Instance()
{
    static Simulator* const instance = new Simulator;
    return *instance;
}

Simulator& Simulator::Started()
{
    Simulator& simulator = Instance();
    if (!simulator.m_started) {
        const std::lock_guard lock(simulator.mutex);
        simulator.StartWithProcessScenario();
    }
    return simulator;
}

Simulator::Simulator() = default;

std::uint64_t Simulator::NewId()
{
    return ++m_ids;
}

void Simulator::Reset()
{
    Apply(Scenario{});
}

void Simulator::Apply(const Scenario& scenario)
{
    ResetParts();
    LogBook::Instance().Reset();
    journal.SetEnabled(true);
    kernelLog.Reset();
    Populate(scenario);
    m_started = true;
}

void Simulator::ResetParts()
{
    startError.clear();
    loop.Clear();
    journal.Clear();
    faults.Clear();
    radio.Reset();
    room.Reset();
    links.Reset();
    clients.Reset();
    adapter.Reset();
    power.Reset();
    wifi.Reset();
    files.Reset();
    air.Reset();
}

void Simulator::Populate(const Scenario& scenario)
{
    const TvScript& tv = scenario.tv;
    adapter.state = tv.bluetoothOn ? BT_ADAPTER_ENABLED : BT_ADAPTER_DISABLED;
    adapter.address = tv.bluetoothAddress;
    settings = tv.settings;
    systemInfo = tv.systemInfo;
    wifi.SetAccessPoint(tv.accessPoint);
    wifi.directAddress = tv.wifiDirectAddress;
    power.state = tv.powerState;
    for (const auto& [path, content] : tv.files) {
        files.Write(path, content);
    }
    for (const Phone& phone : scenario.phones) {
        room.Add(phone);
    }
    for (const TimelineEvent& event : tv.timeline) {
        loop.Post(Loop::Kind::background, event.atMs, [this, happen = event.happen] {
            const std::lock_guard lock(mutex);
            happen(*this);
        });
    }
}

void Simulator::StartWithProcessScenario()
{
    if (m_started) {
        return;  // another thread was quicker
    }
    try {
        Populate(ProcessScenario());
    } catch (const ScenarioError& error) {
        startError = error.what();
        std::fprintf(stderr, "%s\n", error.what());
        Populate(Scenario{});
    }
    m_started = true;
}

}  // namespace lyn::simulator

int lyn_simulator_check(char* error, size_t size)
{
    auto& simulator = lyn::simulator::Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    if (error != nullptr && size > 0) {
        const size_t length = simulator.startError.copy(error, size - 1);
        error[length] = '\0';
    }
    return simulator.startError.empty() ? 0 : lyn::simulator::kNoScenario;
}
