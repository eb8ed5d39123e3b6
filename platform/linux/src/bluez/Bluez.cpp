// SPDX-License-Identifier: Apache-2.0
#include "bluez/Bluez.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "Codes.h"
#include "log/Log.h"

namespace lyn::linux_platform {

namespace {

/// One row of the table: the message is compared only where it is given.
struct Meaning {
    const char* name;
    const char* message;
    int code;
};

// BlueZ says much of what went wrong in the message alone. The first row that fits holds.
// No row is kConnectTimedOut, after which nobody tries again: a link gives up long before BlueZ does. What BlueZ
// calls a time-out or an abort until then went wrong on the air, and may go well the next time.
constexpr Meaning kMeanings[] = {
    {"org.bluez.Error.NotReady", nullptr, kAdapterOff},
    {"org.bluez.Error.NotAvailable", nullptr, kAdapterOff},
    {"org.bluez.Error.NoSuchAdapter", nullptr, kAdapterOff},
    {"org.bluez.Error.Blocked", nullptr, kAdapterOff},
    {"org.bluez.Error.AlreadyConnected", nullptr, kConnectedAlready},
    {"org.bluez.Error.NotConnected", nullptr, kNotConnected},
    {"org.bluez.Error.InProgress", nullptr, kBusy},
    {"org.bluez.Error.Busy", nullptr, kBusy},
    {"org.bluez.Error.Canceled", nullptr, kCanceled},
    {"org.bluez.Error.DoesNotExist", nullptr, kNotFound},
    {"org.bluez.Error.NotPermitted", nullptr, kRefused},
    {"org.bluez.Error.NotAuthorized", nullptr, kRefused},
    {"org.bluez.Error.Rejected", nullptr, kRefused},
    {"org.bluez.Error.NotSupported", nullptr, kNotSupported},
    {"org.bluez.Error.InvalidValueLength", nullptr, kTooLong},
    {"org.bluez.Error.InvalidArguments", "Invalid Length", kTooLong},
    {"org.bluez.Error.InvalidArguments", nullptr, kInvalidArgument},
    {"org.bluez.Error.Failed", "No discovery started", kScanNotRunning},
    {"org.bluez.Error.Failed", "le-connection-timeout", kNoAnswer},
    {"org.bluez.Error.Failed", "le-connection-canceled", kCanceled},
    {"org.bluez.Error.Failed", "br-connection-canceled", kCanceled},
    {"org.bluez.Error.Failed", "le-connection-adapter-not-powered", kAdapterOff},
    {"org.bluez.Error.Failed", "br-connection-adapter-not-powered", kAdapterOff},
    {"org.bluez.Error.Failed", "le-connection-already-connected", kConnectedAlready},
    {"org.bluez.Error.Failed", "le-connection-busy", kBusy},
    {"org.bluez.Error.Failed", "le-connection-refused", kRefused},
    {"org.bluez.Error.Failed", "le-connection-not-supported", kNotSupported},
    {"org.bluez.Error.Failed", "le-connection-memory-allocation", kOutOfMemory},
    {"org.bluez.Error.Failed", "Not connected", kNotConnected},
    {"org.bluez.Error.Failed", "Operation already in progress", kBusy},
    {"org.bluez.Error.Failed", nullptr, kFailed},
    {"org.freedesktop.DBus.Error.UnknownObject", nullptr, kNotFound},
    {"org.freedesktop.DBus.Error.UnknownMethod", nullptr, kNotFound},
    {"org.freedesktop.DBus.Error.UnknownInterface", nullptr, kNotFound},
    {"org.freedesktop.DBus.Error.ServiceUnknown", nullptr, kAdapterOff},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", nullptr, kAdapterOff},
    {"org.freedesktop.DBus.Error.Disconnected", nullptr, kAdapterOff},
    {"org.freedesktop.DBus.Error.AccessDenied", nullptr, kRefused},
    {"org.freedesktop.DBus.Error.NoMemory", nullptr, kOutOfMemory},
    {"org.freedesktop.DBus.Error.NoReply", nullptr, kNoAnswer},
    {"org.freedesktop.DBus.Error.Timeout", nullptr, kNoAnswer},
    {"org.freedesktop.DBus.Error.TimedOut", nullptr, kNoAnswer},
};

std::string FirstPath(GVariant* signal)
{
    const Variant path(g_variant_get_child_value(signal, 0));
    return g_variant_get_string(path.get(), nullptr);
}

}  // namespace

Method BluezMethod(const std::string& path, const char* interface, const char* name)
{
    return {kBluez, path, interface, name};
}

Method AllObjects()
{
    return BluezMethod("/", kObjectManager, "GetManagedObjects");
}

void ForEachObject(const Reply& objects, const char* interface,
                   const std::function<void(const std::string&, GVariant*)>& each)
{
    if (!objects.Ok() || !g_variant_is_of_type(objects.values.get(), G_VARIANT_TYPE("(a{oa{sa{sv}}})"))) {
        return;
    }
    const Variant all(g_variant_get_child_value(objects.values.get(), 0));
    const gsize count = g_variant_n_children(all.get());
    for (gsize i = 0; i < count; ++i) {
        const Variant object(g_variant_get_child_value(all.get(), i));
        const Variant path(g_variant_get_child_value(object.get(), 0));
        const Variant interfaces(g_variant_get_child_value(object.get(), 1));
        const Variant properties = Lookup(interfaces.get(), interface, "a{sv}");
        if (properties) {
            each(g_variant_get_string(path.get(), nullptr), properties.get());
        }
    }
}

Variant ChangedProperties(GVariant* signal)
{
    const bool good = g_variant_is_of_type(signal, G_VARIANT_TYPE("(sa{sv}as)")) != FALSE;
    return Variant(good ? g_variant_get_child_value(signal, 1) : nullptr);
}

std::string ObjectWithAdded(GVariant* signal, const char* interface)
{
    if (!g_variant_is_of_type(signal, G_VARIANT_TYPE("(oa{sa{sv}})"))) {
        return "";
    }
    const Variant interfaces(g_variant_get_child_value(signal, 1));
    return Lookup(interfaces.get(), interface, "a{sv}") ? FirstPath(signal) : "";
}

std::string ObjectWithRemoved(GVariant* signal, const char* interface)
{
    if (!g_variant_is_of_type(signal, G_VARIANT_TYPE("(oas)"))) {
        return "";
    }
    const Variant interfaces(g_variant_get_child_value(signal, 1));
    const gsize count = g_variant_n_children(interfaces.get());
    for (gsize i = 0; i < count; ++i) {
        const Variant name(g_variant_get_child_value(interfaces.get(), i));
        if (std::strcmp(g_variant_get_string(name.get(), nullptr), interface) == 0) {
            return FirstPath(signal);
        }
    }
    return "";
}

GVariant* DiscoveryFilter()
{
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&entries, "{sv}", "Transport", g_variant_new_string("le"));
    g_variant_builder_add(&entries, "{sv}", "DuplicateData", g_variant_new_boolean(TRUE));
    return g_variant_new("(a{sv})", &entries);
}

std::string DevicePath(const std::string& adapterPath, const std::string& address)
{
    std::string name = address;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return c == ':' ? '_' : static_cast<char>(std::toupper(c)); });
    return adapterPath + "/dev_" + name;
}

void WarnOfRefusal(const std::string& path, const char* method, const BusError& error)
{
    LogWarn("%s of %s failed: %s (%s)", method, path.c_str(), error.message.c_str(), error.name.c_str());
}

int CodeOf(const BusError& error)
{
    const auto fits = [&](const Meaning& meaning) {
        return error.name == meaning.name && (meaning.message == nullptr || error.message == meaning.message);
    };
    const auto* const found = std::find_if(std::begin(kMeanings), std::end(kMeanings), fits);
    return found != std::end(kMeanings) ? found->code : kFailed;
}

}  // namespace lyn::linux_platform
