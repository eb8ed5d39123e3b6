// SPDX-License-Identifier: Apache-2.0
#include "wifi/AccessPoint.h"

#include <array>
#include <cstdio>

#include "bus/Bus.h"
#include "loop/Deadline.h"

namespace lyn::linux_platform {

namespace {

constexpr const char* kSupplicant = "fi.w1.wpa_supplicant1";
constexpr const char* kRoot = "/fi/w1/wpa_supplicant1";
constexpr const char* kInterface = "fi.w1.wpa_supplicant1.Interface";
constexpr const char* kBss = "fi.w1.wpa_supplicant1.BSS";
constexpr const char* kGetAll = "GetAll";
constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";
constexpr gsize kAddressBytes = 6;

/// The properties of an object as a{sv}; null when it does not tell.
Variant PropertiesOf(const Bus& bus, const std::string& path, const char* interface, const Deadline& deadline)
{
    const Reply reply = bus.CallNow({kSupplicant, path, kPropertiesInterface, kGetAll},
                                    g_variant_new("(s)", interface), deadline.LeftMs());
    if (!reply.Ok() || !g_variant_is_of_type(reply.values.get(), G_VARIANT_TYPE("(a{sv})"))) {
        return nullptr;
    }
    return Variant(g_variant_get_child_value(reply.values.get(), 0));
}

std::optional<AccessPoint> Read(GVariant* properties)
{
    const Variant address = Lookup(properties, "BSSID", "ay");
    const Variant frequency = Lookup(properties, "Frequency", "q");
    if (!address || !frequency) {
        return std::nullopt;
    }
    gsize size = 0;
    const auto* const bytes =
        static_cast<const unsigned char*>(g_variant_get_fixed_array(address.get(), &size, sizeof(unsigned char)));
    if (size != kAddressBytes) {
        return std::nullopt;
    }
    std::array<char, 18> text{};
    std::snprintf(text.data(), text.size(), "%02x:%02x:%02x:%02x:%02x:%02x", bytes[0], bytes[1], bytes[2],
                  bytes[3], bytes[4], bytes[5]);
    return AccessPoint{text.data(), g_variant_get_uint16(frequency.get())};
}

std::optional<AccessPoint> AccessPointOf(const Bus& bus, const std::string& interface, const Deadline& deadline)
{
    const Variant properties = PropertiesOf(bus, interface, kInterface, deadline);
    const auto bss = properties ? LookupPath(properties.get(), "CurrentBSS") : std::nullopt;
    if (!bss || *bss == "/") {
        return std::nullopt;
    }
    const Variant found = PropertiesOf(bus, *bss, kBss, deadline);
    return found ? Read(found.get()) : std::nullopt;
}

}  // namespace

std::optional<AccessPoint> FindConnectedAccessPoint()
{
    const auto bus = Bus::System();
    const Deadline deadline(kCallLimitMs);
    const Variant root = bus != nullptr ? PropertiesOf(*bus, kRoot, kSupplicant, deadline) : nullptr;
    const Variant interfaces = root ? Lookup(root.get(), "Interfaces", "ao") : nullptr;
    const gsize count = interfaces ? g_variant_n_children(interfaces.get()) : 0;
    for (gsize i = 0; i < count && !deadline.IsOver(); ++i) {
        const Variant interface(g_variant_get_child_value(interfaces.get(), i));
        auto found = AccessPointOf(*bus, g_variant_get_string(interface.get(), nullptr), deadline);
        if (found) {
            return found;
        }
    }
    return std::nullopt;
}

}  // namespace lyn::linux_platform
