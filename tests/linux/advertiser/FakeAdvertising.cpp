// SPDX-License-Identifier: Apache-2.0
#include "FakeAdvertising.h"

#include <algorithm>
#include <utility>

#include "PrivateBus.h"

namespace lyn::linux_tests {

namespace {

constexpr const char* kAdvertisement = "org.bluez.LEAdvertisement1";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr int kPatienceMs = 10'000;

std::string LastOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string SenderOf(const FakeDaemon::Call& call)
{
    return g_dbus_message_get_sender(call.message.get());
}

std::string PathIn(const FakeDaemon::Call& call)
{
    const char* path = nullptr;
    g_variant_get_child(call.arguments, 0, "&o", &path);
    return path;
}

}  // namespace

FakeAdvertising::FakeAdvertising(FakeBluez& bluez) : m_bluez(bluez)
{
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_connection = g_dbus_connection_new_for_address_sync(PrivateBus::Instance().Address().c_str(), flags, nullptr,
                                                          nullptr, nullptr);
    g_assert_nonnull(m_connection);
    m_bluez.Handle("LEAdvertisingManager1.RegisterAdvertisement",
                   [this](const FakeDaemon::Call& call) { Register(call); });
    m_bluez.Handle("LEAdvertisingManager1.UnregisterAdvertisement",
                   [this](const FakeDaemon::Call& call) { Unregister(call); });
}

FakeAdvertising::~FakeAdvertising()
{
    m_bluez.Die();  // Nothing calls this object any more.
    g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
    g_object_unref(m_connection);
}

std::vector<std::string> FakeAdvertising::OnAir() const
{
    std::vector<std::string> names;
    for (const Entry& entry : Live()) {
        names.push_back(entry.adapter + " " + LastOf(entry.path));
    }
    return names;
}

std::string FakeAdvertising::Property(const std::string& feature, const std::string& name) const
{
    for (const Entry& entry : Live()) {
        GVariant* const value = LastOf(entry.path) == feature
                                    ? g_variant_lookup_value(entry.properties.get(), name.c_str(), nullptr)
                                    : nullptr;
        if (value != nullptr) {
            char* const printed = g_variant_print(value, TRUE);
            std::string text = printed;
            g_free(printed);
            g_variant_unref(value);
            return text;
        }
    }
    return {};
}

bool FakeAdvertising::Release(const std::string& feature)
{
    for (const Entry& entry : Live()) {
        if (LastOf(entry.path) == feature) {
            return Ask(entry.sender, entry.path, kAdvertisement, "Release", nullptr) != nullptr;
        }
    }
    return false;
}

void FakeAdvertising::Forget()
{
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
}

void FakeAdvertising::Register(const FakeDaemon::Call& call)
{
    const Entry entry{SenderOf(call), PathIn(call), LastOf(call.path), nullptr};
    for (const Entry& other : Live()) {
        if (other.sender == entry.sender && other.path == entry.path && other.adapter == entry.adapter) {
            m_bluez.Refuse(call, "org.bluez.Error.AlreadyExists", "Already Exists");
            return;
        }
    }
    const auto shown = Ask(entry.sender, entry.path, kProperties, "GetAll", g_variant_new("(s)", kAdvertisement));
    if (shown == nullptr) {
        m_bluez.Refuse(call, "org.bluez.Error.Failed", "Failed to register advertisement");
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_entries.push_back(entry);
        m_entries.back().properties = {g_variant_get_child_value(shown.get(), 0), &g_variant_unref};
    }
    m_bluez.Answer(call);
}

void FakeAdvertising::Unregister(const FakeDaemon::Call& call)
{
    const std::lock_guard lock(m_mutex);
    const auto gone = std::erase_if(m_entries, [&](const Entry& entry) {
        return entry.sender == SenderOf(call) && entry.path == PathIn(call) && entry.adapter == LastOf(call.path);
    });
    if (gone == 0) {
        m_bluez.Refuse(call, "org.bluez.Error.DoesNotExist", "Does Not Exist");
    } else {
        m_bluez.Answer(call);
    }
}

std::shared_ptr<GVariant> FakeAdvertising::Ask(const std::string& owner, const std::string& path,
                                               const char* interface, const char* method,
                                               GVariant* arguments) const
{
    GVariant* const values =
        g_dbus_connection_call_sync(m_connection, owner.c_str(), path.c_str(), interface, method, arguments,
                                    nullptr, G_DBUS_CALL_FLAGS_NONE, kPatienceMs, nullptr, nullptr);
    return values != nullptr ? std::shared_ptr<GVariant>(values, &g_variant_unref) : nullptr;
}

bool FakeAdvertising::IsOnBus(const std::string& name) const
{
    const auto values = Ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                            "NameHasOwner", g_variant_new("(s)", name.c_str()));
    gboolean owned = FALSE;
    if (values != nullptr) {
        g_variant_get(values.get(), "(b)", &owned);
    }
    return owned != FALSE;
}

std::vector<FakeAdvertising::Entry> FakeAdvertising::Live() const
{
    std::vector<Entry> entries;
    {
        const std::lock_guard lock(m_mutex);
        entries = m_entries;
    }
    std::erase_if(entries, [&](const Entry& entry) { return !IsOnBus(entry.sender); });
    return entries;
}

}  // namespace lyn::linux_tests
