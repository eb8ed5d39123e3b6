// SPDX-License-Identifier: Apache-2.0
#include "application.h"

#include <utility>

#include "bluez/Bluez.h"
#include "failure.h"

namespace lynphone {

using lyn::linux_platform::Bus;
using lyn::linux_platform::kGattCharacteristic;
using lyn::linux_platform::kGattService;
using lyn::linux_platform::ReplyHandler;

namespace {

constexpr const char* kRoot = "/lyn/phone";
constexpr int kRegisterLimitMs = 10'000;
constexpr const char* kInterfaces = R"(<node>
  <interface name="org.freedesktop.DBus.ObjectManager">
    <method name="GetManagedObjects"><arg type="a{oa{sa{sv}}}" direction="out"/></method>
  </interface>
</node>)";

GDBusInterfaceInfo* Interface()
{
    // Never freed: GLib holds it for as long as an object is there.
    static GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kInterfaces, nullptr);
    return node->interfaces[0];
}

std::string ServicePath(std::size_t service)
{
    return std::string(kRoot) + "/service" + std::to_string(service);
}

std::string CharacteristicPath(std::size_t service, std::size_t characteristic)
{
    return ServicePath(service) + "/char" + std::to_string(characteristic);
}

GVariant* ServiceProperties(const lyn::simulator::Service& service)
{
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&properties, "{sv}", "UUID", g_variant_new_string(service.uuid.c_str()));
    g_variant_builder_add(&properties, "{sv}", "Primary", g_variant_new_boolean(TRUE));
    return g_variant_builder_end(&properties);
}

GVariant* CharacteristicProperties(const lyn::simulator::Characteristic& characteristic,
                                   const std::string& service)
{
    GVariantBuilder flags;
    g_variant_builder_init(&flags, G_VARIANT_TYPE_STRING_ARRAY);
    if (characteristic.writable) {
        g_variant_builder_add(&flags, "s", "write");
    }
    if (characteristic.notifies) {
        g_variant_builder_add(&flags, "s", "notify");
    }
    if (!characteristic.writable && !characteristic.notifies) {
        g_variant_builder_add(&flags, "s", "read");
    }
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&properties, "{sv}", "UUID", g_variant_new_string(characteristic.uuid.c_str()));
    g_variant_builder_add(&properties, "{sv}", "Service", g_variant_new_object_path(service.c_str()));
    g_variant_builder_add(&properties, "{sv}", "Flags", g_variant_builder_end(&flags));
    return g_variant_builder_end(&properties);
}

/// Adds an object with one interface.
void AddObject(GVariantBuilder& objects, const std::string& path, const char* interface, GVariant* properties)
{
    GVariantBuilder interfaces;
    g_variant_builder_init(&interfaces, G_VARIANT_TYPE("a{sa{sv}}"));
    g_variant_builder_add(&interfaces, "{s@a{sv}}", interface, properties);
    g_variant_builder_add(&objects, "{oa{sa{sv}}}", path.c_str(), &interfaces);
}

}  // namespace

Application::Application(std::shared_ptr<Bus> bus, const std::vector<lyn::simulator::Service>& services,
                         const Peers& peers, const Reports& reports)
    : m_bus(std::move(bus)),
      m_services(services)
{
    for (std::size_t s = 0; s < m_services.size(); ++s) {
        for (std::size_t c = 0; c < m_services[s].characteristics.size(); ++c) {
            m_characteristics.push_back(std::make_unique<Characteristic>(
                m_bus->Connection(), CharacteristicPath(s, c), m_services[s].characteristics[c], peers, reports));
        }
    }
    static const GDBusInterfaceVTable table{&Application::OnCall, nullptr, nullptr, {}};
    m_registration =
        g_dbus_connection_register_object(m_bus->Connection(), kRoot, Interface(), &table, this, nullptr, nullptr);
    if (m_registration == 0) {
        throw lynctl::Failure(lynctl::kExitFailure, "the services cannot be put on the bus");
    }
}

Application::~Application()
{
    g_dbus_connection_unregister_object(m_bus->Connection(), m_registration);
}

void Application::Register(const std::string& adapterPath, ReplyHandler done) const
{
    m_bus->Call(lyn::linux_platform::BluezMethod(adapterPath, "org.bluez.GattManager1", "RegisterApplication"),
                g_variant_new("(oa{sv})", kRoot, nullptr), kRegisterLimitMs, std::move(done));
}

void Application::OnCall(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
                         GDBusMethodInvocation* invocation, gpointer self)
{
    g_dbus_method_invocation_return_value(invocation, static_cast<Application*>(self)->Objects());
}

GVariant* Application::Objects() const
{
    GVariantBuilder objects;
    g_variant_builder_init(&objects, G_VARIANT_TYPE("a{oa{sa{sv}}}"));
    for (std::size_t s = 0; s < m_services.size(); ++s) {
        AddObject(objects, ServicePath(s), kGattService, ServiceProperties(m_services[s]));
        for (std::size_t c = 0; c < m_services[s].characteristics.size(); ++c) {
            AddObject(objects, CharacteristicPath(s, c), kGattCharacteristic,
                      CharacteristicProperties(m_services[s].characteristics[c], ServicePath(s)));
        }
    }
    return g_variant_new("(a{oa{sa{sv}}})", &objects);
}

}  // namespace lynphone
