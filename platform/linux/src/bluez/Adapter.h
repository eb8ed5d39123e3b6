// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "bus/Bus.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

/// What is known about the adapter in use.
struct AdapterStatus {
    std::string path;     ///< its object; empty when there is no adapter, or no bluetoothd
    std::string address;  ///< six upper-case pairs
    bool powered = false;

    bool operator==(const AdapterStatus&) const = default;
};

/// The adapter that this process uses: the one that LYN_BT_ADAPTER names ("hci1", or an address), else the first
/// that is powered, for as long as it is, else the first. Looked at again when bluetoothd, or an adapter, comes,
/// goes or changes its power.
class Adapter {
public:
    static Adapter& Instance();

    /// Begins to watch; more calls do nothing. @return 0, or kNoBus. Any thread.
    int Watch();

    /// Asks BlueZ, waiting for at most kCallLimitMs; what was last known when it answers late or with an error.
    /// Any thread.
    AdapterStatus Read(AutoStart autoStart = AutoStart::no);

    /// What was last known. Any thread.
    AdapterStatus Known() const;

    using Listener = std::function<void(const AdapterStatus& status)>;

    /// Runs at every change, and at every TellAgain(), on the main context. Any thread.
    void AddListener(Listener listener);

    /// Tells the state once more, changed or not: after the machine has slept. Any thread.
    void TellAgain();

private:
    Adapter() = default;

    void BeginWatching();
    void BeginAgain();
    void WatchObjects();
    void OnPropertiesChanged(const char* path, GVariant* values);
    void OnRemoved(GVariant* values);
    void TellLoss(const AdapterStatus& left);
    void Refresh();
    AdapterStatus Choose(const Reply& objects) const;
    void Keep(const AdapterStatus& status);
    void Tell();

    mutable std::mutex m_mutex;
    AdapterStatus m_known;
    std::vector<Listener> m_listeners;
    bool m_watching = false;

    // On the main context only.
    std::shared_ptr<Bus> m_bus;
    AdapterStatus m_told;
    bool m_owesReport = false;  ///< changed or not
    std::vector<Subscription> m_subscriptions;
    Timer m_retry;         ///< of watching
    Timer m_refreshAgain;  ///< after a look that told nothing
};

}  // namespace lyn::linux_platform
