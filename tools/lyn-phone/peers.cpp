// SPDX-License-Identifier: Apache-2.0
#include "peers.h"

#include <algorithm>
#include <utility>

#include "bluez/Bluez.h"

namespace lynphone {

using lyn::linux_platform::BluezMethod;
using lyn::linux_platform::Bus;
using lyn::linux_platform::ChangedProperties;
using lyn::linux_platform::kBluez;
using lyn::linux_platform::kDevice;
using lyn::linux_platform::kObjectManager;
using lyn::linux_platform::kProperties;
using lyn::linux_platform::Lookup;
using lyn::linux_platform::LookupBool;
using lyn::linux_platform::ObjectWithRemoved;
using lyn::linux_platform::Reply;
using lyn::linux_platform::Variant;

namespace {

constexpr int kDisconnectLimitMs = 10'000;
constexpr std::size_t kAddressLength = 17;

}  // namespace

Peers::Peers(std::shared_ptr<Bus> bus, std::string adapterPath, Handler handler)
    : m_bus(std::move(bus)),
      m_prefix(std::move(adapterPath) + "/dev_"),
      m_handler(std::move(handler))
{
    m_added = m_bus->OnSignal({kBluez, "/", kObjectManager, "InterfacesAdded", ""},
                              [this](const char*, GVariant* values) { OnAdded(values); });
    m_removed = m_bus->OnSignal({kBluez, "/", kObjectManager, "InterfacesRemoved", ""},
                                [this](const char*, GVariant* values) { OnRemoved(values); });
    m_changed = m_bus->OnSignal({kBluez, "", kProperties, "PropertiesChanged", kDevice},
                                [this](const char* path, GVariant* values) { OnChanged(path, values); });
}

unsigned Peers::LinkOf(const std::string& devicePath) const
{
    const auto found = m_links.find(devicePath);
    return found != m_links.end() ? found->second : 0;
}

void Peers::Disconnect(const std::string& devicePath) const
{
    m_bus->Call(BluezMethod(devicePath, kDevice, "Disconnect"), nullptr, kDisconnectLimitMs, [](const Reply&) {});
}

void Peers::LoseAll()
{
    while (!m_links.empty()) {
        Note(std::string(m_links.begin()->first), false);
    }
}

std::string Peers::AddressOf(const std::string& devicePath)
{
    std::string address =
        devicePath.size() < kAddressLength ? devicePath : devicePath.substr(devicePath.size() - kAddressLength);
    std::replace(address.begin(), address.end(), '_', ':');
    return address;
}

void Peers::OnAdded(GVariant* values)
{
    if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(oa{sa{sv}})"))) {
        return;
    }
    const Variant path(g_variant_get_child_value(values, 0));
    const Variant interfaces(g_variant_get_child_value(values, 1));
    const Variant device = Lookup(interfaces.get(), kDevice, "a{sv}");
    if (device && LookupBool(device.get(), "Connected").value_or(false)) {
        Note(g_variant_get_string(path.get(), nullptr), true);
    }
}

void Peers::OnRemoved(GVariant* values)
{
    Note(ObjectWithRemoved(values, kDevice), false);
}

void Peers::OnChanged(const std::string& path, GVariant* values)
{
    const Variant changed = ChangedProperties(values);
    const auto connected = changed ? LookupBool(changed.get(), "Connected") : std::nullopt;
    if (connected) {
        Note(path, *connected);
    }
}

void Peers::Note(const std::string& path, bool connected)
{
    const bool known = m_links.contains(path);
    if (path.compare(0, m_prefix.size(), m_prefix) != 0 || known == connected) {
        return;
    }
    if (connected) {
        m_links[path] = ++m_count;
    } else {
        m_links.erase(path);
    }
    m_handler(AddressOf(path), connected);
}

}  // namespace lynphone
