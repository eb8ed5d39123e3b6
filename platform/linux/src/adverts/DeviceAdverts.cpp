// SPDX-License-Identifier: Apache-2.0
#include "adverts/DeviceAdverts.h"

#include <algorithm>
#include <utility>

#include "bluez/Bluez.h"

namespace lyn::linux_platform {

namespace {

constexpr std::size_t kAddressLength = 17;

/// Of "11_22_33_44_55_66".
std::string AddressOf(std::string name)
{
    std::replace(name.begin(), name.end(), '_', ':');
    return name;
}

std::vector<CompanyData> ManufacturerDataOf(GVariant* properties)
{
    std::vector<CompanyData> all;
    const Variant dictionary = Lookup(properties, "ManufacturerData", "a{qv}");
    const gsize count = dictionary ? g_variant_n_children(dictionary.get()) : 0;
    for (gsize i = 0; i < count; ++i) {
        guint16 company = 0;
        GVariant* boxed = nullptr;
        g_variant_get_child(dictionary.get(), i, "{qv}", &company, &boxed);
        const Variant value(boxed);
        if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BYTESTRING)) {
            gsize size = 0;
            const auto* const bytes =
                static_cast<const std::uint8_t*>(g_variant_get_fixed_array(value.get(), &size, 1));
            all.push_back({company, Bytes(bytes, bytes + size)});
        }
    }
    return all;
}

}  // namespace

std::shared_ptr<DeviceAdverts> DeviceAdverts::Begin(std::shared_ptr<Bus> bus, const std::string& adapterPath,
                                                    AdvertHandler handler)
{
    auto adverts = std::make_shared<DeviceAdverts>(std::move(bus), adapterPath, std::move(handler));
    adverts->Watch();
    return adverts;
}

DeviceAdverts::DeviceAdverts(std::shared_ptr<Bus> bus, const std::string& adapterPath, AdvertHandler handler)
    : m_bus(std::move(bus)),
      m_prefix(adapterPath + "/dev_"),
      m_handler(std::move(handler))
{
}

void DeviceAdverts::Watch()
{
    const auto weak = weak_from_this();
    m_subscriptions.push_back(m_bus->OnSignal({kBluez, "/", kObjectManager, "InterfacesAdded", ""},
                                              [weak](const char*, GVariant* values) {
                                                  if (const auto self = weak.lock()) {
                                                      self->OnInterfacesAdded(values);
                                                  }
                                              }));
    m_subscriptions.push_back(m_bus->OnSignal({kBluez, "", kProperties, "PropertiesChanged", kDevice},
                                              [weak](const char* path, GVariant* values) {
                                                  if (const auto self = weak.lock()) {
                                                      self->OnPropertiesChanged(path, values);
                                                  }
                                              }));
    m_bus->Call(AllObjects(), nullptr, kCallLimitMs, [weak](const Reply& objects) {
        ForEachObject(objects, kDevice, [&](const std::string& path, GVariant* properties) {
            const auto self = weak.lock();
            // Without a signal strength it is one that BlueZ only remembers.
            if (self != nullptr && Lookup(properties, "RSSI", "n")) {
                self->TakeProperties(path, properties);
            }
        });
    });
}

void DeviceAdverts::OnInterfacesAdded(GVariant* values)
{
    if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(oa{sa{sv}})"))) {
        return;
    }
    const Variant path(g_variant_get_child_value(values, 0));
    const Variant interfaces(g_variant_get_child_value(values, 1));
    if (const Variant properties = Lookup(interfaces.get(), kDevice, "a{sv}")) {
        TakeProperties(g_variant_get_string(path.get(), nullptr), properties.get());
    }
}

void DeviceAdverts::OnPropertiesChanged(const char* path, GVariant* values)
{
    if (const Variant properties = ChangedProperties(values)) {
        TakeProperties(path, properties.get());
    }
}

void DeviceAdverts::TakeProperties(const std::string& path, GVariant* properties)
{
    if (path.rfind(m_prefix, 0) != 0 || path.size() != m_prefix.size() + kAddressLength) {
        return;
    }
    const std::string address = AddressOf(path.substr(m_prefix.size()));
    const Variant rssi = Lookup(properties, "RSSI", "n");
    const auto strength = rssi ? std::optional<int>(g_variant_get_int16(rssi.get())) : std::nullopt;
    if (const auto advert = m_merged.Take(address, strength, ManufacturerDataOf(properties))) {
        m_handler(*advert);
    }
}

}  // namespace lyn::linux_platform
