// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <optional>
#include <vector>

#include "bus/Bus.h"
#include "loop/MainContext.h"
#include "loop/Slot.h"
#include "lyn_platform/power.h"

namespace lyn::linux_platform {

/// Sleep and shutdown as systemd-logind announces them. While a power-off callback is registered, the machine's
/// sleep is delayed until the callback has run.
class Logind {
public:
    static Logind& Instance();

    Slot<device_power_off_cb> powerOff;
    /// No machine of this kind shows ambient pictures: registered, never called.
    Slot<device_power_off_cb> ambient;

    /// Begins to watch; more calls do nothing. @return 0, or kNoBus. Any thread.
    int Watch();

    /// False from the announcement of a sleep until the machine is awake again. Any thread.
    bool Awake() const { return m_awake; }

private:
    Logind() = default;

    void BeginWatching();
    void BeginAgain();
    void Forget();
    void WakeUp();
    void DelaySleep();
    /// @param granted descriptor that delays the sleep until it is closed; -1 when logind gives none
    void OnDelayed(int granted);
    void AllowSleep();
    void OnPrepareForSleep(std::optional<bool> begins);
    void OnPrepareForShutdown(std::optional<bool> begins) const;

    std::atomic<bool> m_watching = false;
    std::atomic<bool> m_awake = true;

    // On the main context only.
    std::shared_ptr<Bus> m_bus;
    std::vector<Subscription> m_subscriptions;
    int m_inhibitor = -1;
    Timer m_retry;
};

}  // namespace lyn::linux_platform
