// SPDX-License-Identifier: Apache-2.0
#include "adverts/Discovery.h"

#include <chrono>
#include <thread>
#include <utility>

#include "Codes.h"
#include "bluez/Bluez.h"

namespace lyn::linux_platform {

namespace {

constexpr std::chrono::milliseconds kPauseWhileBusy{20};
constexpr unsigned kRetryMs = 2000;

/// An adapter that is not on the bus is one that is off.
int StartCodeOf(const Reply& reply)
{
    if (reply.Ok()) {
        return 0;
    }
    const int code = CodeOf(*reply.error);
    return code == kNotFound ? kAdapterOff : code;
}

Method AdapterMethod(const std::string& adapterPath, const char* name)
{
    return BluezMethod(adapterPath, kAdapter, name);
}

}  // namespace

int Discovery::Start(const std::string& adapterPath, const Deadline& deadline)
{
    {
        const std::lock_guard lock(m_mutex);
        m_wanted = true;
        m_state = State::starting;
        m_path = adapterPath;
    }
    const auto bus = Bus::System();
    const int code = bus != nullptr ? StartNow(*bus, adapterPath, deadline) : kNoBus;
    return Settle(code, adapterPath);
}

int Discovery::StartNow(const Bus& bus, const std::string& adapterPath, const Deadline& deadline)
{
    const auto call = [&](const char* name, GVariant* arguments) {
        return bus.CallNow(AdapterMethod(adapterPath, name), arguments, deadline.LeftMs());
    };
    int code = StartCodeOf(call("SetDiscoveryFilter", DiscoveryFilter()));
    if (code != 0) {
        return code;
    }
    code = StartCodeOf(call("StartDiscovery", nullptr));
    // bluetoothd says so for as long as it is busy with what this process asked for earlier: a stop, or a start
    // after the adapter came back. To stop it once more makes sure that it is a new start that succeeds.
    while (code == kBusy && !deadline.IsOver()) {
        call("StopDiscovery", nullptr);
        std::this_thread::sleep_for(kPauseWhileBusy);
        code = StartCodeOf(call("StartDiscovery", nullptr));
    }
    return code;
}

/// Keeps what came of a start. One that nobody wants any more, or that may still happen, is stopped.
int Discovery::Settle(int code, const std::string& adapterPath)
{
    bool stop = code == kNoAnswer;
    {
        const std::lock_guard lock(m_mutex);
        m_state = code == 0 && m_wanted ? State::on : State::off;
        stop = stop || (code == 0 && !m_wanted);
        m_wanted = m_wanted && code == 0;
    }
    if (stop) {
        SendStop(adapterPath);
    }
    return code;
}

void Discovery::Stop()
{
    std::string path;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_wanted) {
            return;
        }
        m_wanted = false;
        if (m_state == State::starting) {
            return;  // It is stopped when it has started.
        }
        m_state = State::off;
        path = m_path;
    }
    SendStop(path);
}

void Discovery::SendStop(const std::string& adapterPath)
{
    const auto bus = Bus::System();
    if (bus == nullptr || adapterPath.empty()) {
        return;  // What has gone has ended its discoveries.
    }
    bus->Call(AdapterMethod(adapterPath, "StopDiscovery"), nullptr, kCallLimitMs, [](const Reply&) {});
}

bool Discovery::IsOn() const
{
    const std::lock_guard lock(m_mutex);
    return m_state == State::on;
}

void Discovery::OnAdapter(const AdapterStatus& status)
{
    std::string left;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_wanted || m_state == State::starting) {
            return;
        }
        if (m_state == State::on && status.powered) {
            if (status.path == m_path) {
                return;
            }
            left = m_path;
        }
        m_state = status.powered ? State::starting : State::off;
        m_path = status.path;
    }
    if (!left.empty()) {
        SendStop(left);
    }
    if (status.powered) {
        StartLater(status.path);
    }
}

void Discovery::StartLater(const std::string& adapterPath)
{
    const auto bus = Bus::System();
    if (bus == nullptr) {
        OnStarted(kNoBus, adapterPath);
        return;
    }
    bus->Call(AdapterMethod(adapterPath, "SetDiscoveryFilter"), DiscoveryFilter(), kCallLimitMs,
              [](const Reply&) {});
    bus->Call(AdapterMethod(adapterPath, "StartDiscovery"), nullptr, kCallLimitMs,
              [this, adapterPath](const Reply& reply) { OnStarted(StartCodeOf(reply), adapterPath); });
}

void Discovery::OnStarted(int code, const std::string& adapterPath)
{
    const bool isOn = code == 0 || code == kBusy;  // busy: it runs already
    bool wanted = false;
    {
        const std::lock_guard lock(m_mutex);
        if (m_state != State::starting || m_path != adapterPath) {
            return;  // A later start has taken its place.
        }
        wanted = m_wanted;
        m_state = isOn && wanted ? State::on : State::off;
    }
    if (!wanted && (isOn || code == kNoAnswer)) {
        SendStop(adapterPath);
    }
    if (!isOn && wanted) {
        m_retry = Timer(kRetryMs, [this] { OnAdapter(Adapter::Instance().Known()); });
    }
}

}  // namespace lyn::linux_platform
