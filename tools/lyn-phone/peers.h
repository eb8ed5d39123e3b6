// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <string>

#include "bus/Bus.h"

namespace lynphone {

/// Who is connected to the phone's adapter. On the main context.
class Peers {
public:
    /// Told of each link that comes up or goes down, with the peer's address.
    using Handler = std::function<void(const std::string& address, bool connected)>;

    Peers(std::shared_ptr<lyn::linux_platform::Bus> bus, std::string adapterPath, Handler handler);

    /// The number of a peer's link, which no other link has; 0 when it is not connected.
    unsigned LinkOf(const std::string& devicePath) const;
    void Disconnect(const std::string& devicePath) const;
    /// bluetoothd is gone, and all links with it.
    void LoseAll();

    static std::string AddressOf(const std::string& devicePath);

private:
    void OnAdded(GVariant* values);
    void OnRemoved(GVariant* values);
    void OnChanged(const std::string& path, GVariant* values);
    void Note(const std::string& path, bool connected);

    std::shared_ptr<lyn::linux_platform::Bus> m_bus;
    std::string m_prefix;
    Handler m_handler;
    std::map<std::string, unsigned> m_links;
    unsigned m_count = 0;
    lyn::linux_platform::Subscription m_added;
    lyn::linux_platform::Subscription m_removed;
    lyn::linux_platform::Subscription m_changed;
};

}  // namespace lynphone
