// SPDX-License-Identifier: Apache-2.0
#include "FakeAdapter.h"

#include <utility>

namespace lyn::linux_tests {

namespace {

constexpr const char* kAdapter = "org.bluez.Adapter1";
constexpr const char* kObjectManager = "org.freedesktop.DBus.ObjectManager";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

GDBusMessage* Error(GDBusMessage* call, const char* name, const char* message)
{
    return g_dbus_message_new_method_error_literal(call, (std::string("org.bluez.Error.") + name).c_str(),
                                                   message);
}

std::string Text(bool value)
{
    return value ? "true" : "false";
}

}  // namespace

FakeAdapter::FakeAdapter(Power power) : m_powered(power == Power::on), m_service("org.bluez")
{
    m_service.On("/", kObjectManager, "GetManagedObjects",
                 [this](GDBusMessage* call) { return GetObjects(call); });
    m_service.On(kPath, kAdapter, "SetDiscoveryFilter", [this](GDBusMessage* call) { return SetFilter(call); });
    m_service.On(kPath, kAdapter, "StartDiscovery", [this](GDBusMessage* call) { return Start(call); });
    m_service.On(kPath, kAdapter, "StopDiscovery", [this](GDBusMessage* call) { return Stop(call); });
    // As bluetoothd does: the name comes first, its adapters follow.
    m_service.Signal("/", kObjectManager, "InterfacesAdded",
                     std::string("(@o '") + kPath + "', {'org.bluez.Adapter1': @a{sv} {}})");
}

void FakeAdapter::SetPower(Power power)
{
    {
        const std::lock_guard lock(m_mutex);
        m_powered = power == Power::on;
        m_discovering = m_discovering && m_powered;
    }
    m_service.Signal(kPath, kProperties, "PropertiesChanged",
                     "('org.bluez.Adapter1', {'Powered': <" + Text(power == Power::on) + ">}, @as [])");
}

void FakeAdapter::SetDevices(const std::string& devices)
{
    const std::lock_guard lock(m_mutex);
    m_devices = devices;
}

void FakeAdapter::SetRefusalsAfterStop(int count)
{
    const std::lock_guard lock(m_mutex);
    m_refusalsAfterStop = count;
}

void FakeAdapter::SetMute(bool mute)
{
    const std::lock_guard lock(m_mutex);
    m_mute = mute;
}

void FakeAdapter::ChangeDevice(const std::string& device, const std::string& properties)
{
    m_service.Signal(device, kProperties, "PropertiesChanged",
                     "('org.bluez.Device1', " + properties + ", @as [])");
}

void FakeAdapter::AddDevice(const std::string& device, const std::string& properties)
{
    m_service.Signal("/", kObjectManager, "InterfacesAdded",
                     "(@o '" + device + "', {'org.bluez.Device1': " + properties + "})");
}

std::vector<std::string> FakeAdapter::TakeCalls()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_calls, {});
}

bool FakeAdapter::IsDiscovering() const
{
    const std::lock_guard lock(m_mutex);
    return m_discovering;
}

GDBusMessage* FakeAdapter::GetObjects(GDBusMessage* call) const
{
    const std::lock_guard lock(m_mutex);
    const std::string adapter = std::string("@o '") + kPath +
                                "': {'org.bluez.Adapter1': {'Address': <'00:AA:01:00:00:42'>, 'Powered': <" +
                                Text(m_powered) + ">}}";
    const std::string all = "({" + adapter + (m_devices.empty() ? "" : ", " + m_devices) + "},)";
    GDBusMessage* const reply = g_dbus_message_new_method_reply(call);
    g_dbus_message_set_body(reply, g_variant_new_parsed(all.c_str()));
    return reply;
}

GDBusMessage* FakeAdapter::SetFilter(GDBusMessage* call)
{
    char* const values = g_variant_print(g_dbus_message_get_body(call), FALSE);
    const std::lock_guard lock(m_mutex);
    m_calls.push_back(std::string("SetDiscoveryFilter ") + values);
    g_free(values);
    return g_dbus_message_new_method_reply(call);
}

GDBusMessage* FakeAdapter::Start(GDBusMessage* call)
{
    const std::lock_guard lock(m_mutex);
    m_calls.emplace_back("StartDiscovery");
    if (m_mute) {
        return nullptr;
    }
    if (!m_powered) {
        return Error(call, "NotReady", "Resource Not Ready");
    }
    if (m_refusalsLeft > 0) {
        --m_refusalsLeft;
        return Error(call, "InProgress", "Operation already in progress");
    }
    if (m_discovering) {
        return Error(call, "InProgress", "Operation already in progress");
    }
    m_discovering = true;
    return g_dbus_message_new_method_reply(call);
}

GDBusMessage* FakeAdapter::Stop(GDBusMessage* call)
{
    const std::lock_guard lock(m_mutex);
    m_calls.emplace_back("StopDiscovery");
    if (!m_powered) {
        return Error(call, "NotReady", "Resource Not Ready");
    }
    if (m_refusalsLeft > 0) {
        return Error(call, "InProgress", "Operation already in progress");
    }
    if (!m_discovering) {
        return Error(call, "Failed", "No discovery started");
    }
    m_discovering = false;
    m_refusalsLeft = m_refusalsAfterStop;
    return g_dbus_message_new_method_reply(call);
}

}  // namespace lyn::linux_tests
