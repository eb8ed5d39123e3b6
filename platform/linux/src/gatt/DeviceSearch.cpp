// SPDX-License-Identifier: Apache-2.0
#include "gatt/DeviceSearch.h"

#include <utility>

#include "Codes.h"
#include "adverts/Scan.h"
#include "bluez/Bluez.h"
#include "gatt/Limits.h"

namespace lyn::linux_platform {

namespace {

constexpr unsigned kAskAgainMs = 2000;

/// bluetoothd has one discovery for all of this process: a scan that has begun meanwhile needs it now.
bool IsNeededByAScan()
{
    return Scan::Instance().IsOn();
}

void StopDiscovery(const Bus& bus, const std::string& adapterPath, ReplyHandler done)
{
    bus.Call(BluezMethod(adapterPath, kAdapter, "StopDiscovery"), nullptr, TimeLimits().connect, std::move(done));
}

}  // namespace

DeviceSearch::DeviceSearch(std::shared_ptr<Bus> bus, std::string adapterPath, std::string devicePath, Done done)
    : m_bus(std::move(bus)),
      m_adapterPath(std::move(adapterPath)),
      m_devicePath(std::move(devicePath)),
      m_done(std::move(done))
{
    m_added = m_bus->OnSignal({kBluez, "/", kObjectManager, "InterfacesAdded", ""},
                              [this](const char*, GVariant* values) {
                                  if (ObjectWithAdded(values, kDevice) == m_devicePath) {
                                      OnFound();
                                  }
                              });
    Start();
}

DeviceSearch::~DeviceSearch()
{
    const bool mayBeOurs = m_asking || m_discovery == Discovery::ours;
    if (mayBeOurs && !IsNeededByAScan()) {
        StopDiscovery(*m_bus, m_adapterPath, [](const Reply&) {});
    }
}

void DeviceSearch::Start()
{
    m_bus->Call(BluezMethod(m_adapterPath, kAdapter, "SetDiscoveryFilter"), DiscoveryFilter(),
                TimeLimits().connect, [](const Reply&) {});
    Ask();
}

void DeviceSearch::Ask()
{
    m_asking = true;
    m_bus->Call(BluezMethod(m_adapterPath, kAdapter, "StartDiscovery"), nullptr, TimeLimits().connect,
                [self = std::weak_ptr(m_self), bus = m_bus, path = m_adapterPath](const Reply& reply) {
                    if (const auto alive = self.lock()) {
                        (*alive)->OnStarted(reply);
                    } else if (reply.Ok() && !IsNeededByAScan()) {
                        // BlueZ refuses to stop what is still starting.
                        StopDiscovery(*bus, path, [](const Reply&) {});
                    }
                });
}

void DeviceSearch::OnStarted(const Reply& reply)
{
    m_asking = false;
    const int code = reply.Ok() ? 0 : CodeOf(*reply.error);
    const bool first = m_discovery == Discovery::unknown;
    if (code == 0) {
        m_discovery = Discovery::ours;
    } else if (first) {
        m_discovery = Discovery::ofOthers;  // Busy: this process scans already.
    }
    if (m_found) {
        Finish();
    } else if (first && code != 0 && code != kBusy) {
        m_done(code);
    } else {
        LookOnce();
        // A scan that serves ends the discovery when it ends.
        m_askAgain = Timer(kAskAgainMs, [this] { Ask(); });
    }
}

// It may have come before its coming was listened to.
void DeviceSearch::LookOnce()
{
    m_bus->Call(BluezMethod(m_devicePath, kProperties, "GetAll"), g_variant_new("(s)", kDevice),
                TimeLimits().connect, [self = std::weak_ptr(m_self)](const Reply& reply) {
                    const auto alive = self.lock();
                    if (alive && reply.Ok()) {
                        (*alive)->OnFound();
                    }
                });
}

void DeviceSearch::OnFound()
{
    if (!std::exchange(m_found, true) && !m_asking) {
        Finish();
    }
}

void DeviceSearch::Finish()
{
    m_askAgain = {};
    if (m_discovery != Discovery::ours || IsNeededByAScan()) {
        m_done(0);
        return;
    }
    // A connect beside a discovery takes long or fails.
    m_discovery = Discovery::stopped;
    StopDiscovery(*m_bus, m_adapterPath, [self = std::weak_ptr(m_self)](const Reply&) {
        if (const auto alive = self.lock()) {
            (*alive)->m_done(0);
        }
    });
}

}  // namespace lyn::linux_platform
