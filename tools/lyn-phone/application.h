// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bus/Bus.h"
#include "characteristic.h"

namespace lynphone {

/// The phone's GATT services on the bus, and bluetoothd's use of them.
class Application {
public:
    Application(std::shared_ptr<lyn::linux_platform::Bus> bus,
                const std::vector<lyn::simulator::Service>& services, const Peers& peers, const Reports& reports);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Asks bluetoothd to serve it on an adapter.
    void Register(const std::string& adapterPath, lyn::linux_platform::ReplyHandler done) const;

private:
    static void OnCall(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                       const char* method, GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self);
    GVariant* Objects() const;

    std::shared_ptr<lyn::linux_platform::Bus> m_bus;
    std::vector<lyn::simulator::Service> m_services;
    std::vector<std::unique_ptr<Characteristic>> m_characteristics;
    unsigned m_registration = 0;
};

}  // namespace lynphone
