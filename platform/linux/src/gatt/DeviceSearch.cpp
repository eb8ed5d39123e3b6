// SPDX-License-Identifier: Apache-2.0
#include "gatt/DeviceSearch.h"

#include <utility>

#include "Codes.h"
#include "bluez/Bluez.h"
#include "gatt/Limits.h"

namespace lyn::linux_platform {

DeviceSearch::DeviceSearch(std::shared_ptr<Bus> bus, std::string adapterPath, std::string devicePath, Done done)
    : m_bus(std::move(bus)),
      m_adapterPath(std::move(adapterPath)),
      m_done(std::move(done))
{
    m_added = m_bus->OnSignal({kBluez, "/", kObjectManager, "InterfacesAdded", ""},
                              [this, path = std::move(devicePath)](const char*, GVariant* values) {
                                  if (g_variant_is_of_type(values, G_VARIANT_TYPE("(oa{sa{sv}})"))) {
                                      const Variant added(g_variant_get_child_value(values, 0));
                                      if (g_variant_get_string(added.get(), nullptr) == path) {
                                          OnFound();
                                      }
                                  }
                              });
    Start();
}

DeviceSearch::~DeviceSearch()
{
    Stop([](const Reply&) {});
}

void DeviceSearch::Start()
{
    GVariantBuilder filter;
    g_variant_builder_init(&filter, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&filter, "{sv}", "Transport", g_variant_new_string("le"));
    m_bus->Call(BluezMethod(m_adapterPath, kAdapter, "SetDiscoveryFilter"), g_variant_new("(a{sv})", &filter),
                TimeLimits().connect, [](const Reply&) {});
    m_discovering = true;
    m_bus->Call(BluezMethod(m_adapterPath, kAdapter, "StartDiscovery"), nullptr, TimeLimits().connect,
                [self = std::weak_ptr(m_self)](const Reply& reply) {
                    if (const auto alive = self.lock()) {
                        (*alive)->OnStarted(reply);
                    }
                });
}

void DeviceSearch::OnStarted(const Reply& reply)
{
    if (reply.Ok() || m_done == nullptr) {
        return;
    }
    m_discovering = false;
    const int code = CodeOf(*reply.error);
    if (code != kBusy) {  // Else this process scans already.
        std::exchange(m_done, nullptr)(code);
    }
}

void DeviceSearch::OnFound()
{
    if (m_done == nullptr) {
        return;
    }
    const Done done = std::exchange(m_done, nullptr);
    if (!m_discovering) {
        done(0);
        return;
    }
    // A connect beside a discovery takes long or fails.
    Stop([self = std::weak_ptr(m_self), done](const Reply&) {
        if (self.lock() != nullptr) {
            done(0);
        }
    });
}

void DeviceSearch::Stop(ReplyHandler done)
{
    if (std::exchange(m_discovering, false)) {
        m_bus->Call(BluezMethod(m_adapterPath, kAdapter, "StopDiscovery"), nullptr, TimeLimits().connect,
                    std::move(done));
    }
}

}  // namespace lyn::linux_platform
