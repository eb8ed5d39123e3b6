// SPDX-License-Identifier: Apache-2.0
#include "Advertisement.h"

#include <utility>

namespace lyn::advertiser {

using linux_platform::Bus;
using linux_platform::Reply;

namespace {

constexpr int kRegisterLimitMs = 10000;
constexpr const char* kManager = "org.bluez.LEAdvertisingManager1";

constexpr const char* kDescription = R"(
<node>
  <interface name="org.bluez.LEAdvertisement1">
    <method name="Release"/>
    <property name="Type" type="s" access="read"/>
    <property name="ManufacturerData" type="a{qv}" access="read"/>
    <property name="ServiceUUIDs" type="as" access="read"/>
    <property name="LocalName" type="s" access="read"/>
    <property name="MinInterval" type="u" access="read"/>
    <property name="MaxInterval" type="u" access="read"/>
  </interface>
</node>)";

GDBusInterfaceInfo* Description()
{
    static GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kDescription, nullptr);
    return node->interfaces[0];
}

GVariant* ManufacturerDataOf(const Payload& payload)
{
    GVariantBuilder all;
    g_variant_builder_init(&all, G_VARIANT_TYPE("a{qv}"));
    for (const auto& [company, bytes] : payload.manufacturerData) {
        GVariant* const data = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
        g_variant_builder_add(&all, "{qv}", company, data);
    }
    return g_variant_builder_end(&all);
}

GVariant* ServiceUuidsOf(const Payload& payload)
{
    GVariantBuilder all;
    g_variant_builder_init(&all, G_VARIANT_TYPE("as"));
    for (const std::string& uuid : payload.serviceUuids) {
        g_variant_builder_add(&all, "s", uuid.c_str());
    }
    return g_variant_builder_end(&all);
}

}  // namespace

Advertisement::Advertisement(std::shared_ptr<Bus> bus, const std::string& adapter, const std::string& feature,
                             const Payload& payload, unsigned intervalMs, Tell tell)
    : m_bus(std::move(bus)),
      m_adapter(adapter),
      m_path("/lyn/advertiser/" + feature),
      m_payload(payload),
      m_intervalMs(intervalMs),
      m_tell(std::move(tell))
{
    static const GDBusInterfaceVTable functions = {
        &Advertisement::OnRelease, &Advertisement::GetProperty, nullptr, {}};
    m_object = g_dbus_connection_register_object(m_bus->Connection(), m_path.c_str(), Description(), &functions,
                                                 this, nullptr, nullptr);
    Register();
}

Advertisement::~Advertisement()
{
    m_bus->Call({"org.bluez", m_adapter, kManager, "UnregisterAdvertisement"},
                g_variant_new("(o)", m_path.c_str()), kRegisterLimitMs, [](const Reply&) {});
    if (m_object != 0) {
        g_dbus_connection_unregister_object(m_bus->Connection(), m_object);
    }
}

void Advertisement::Register()
{
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
    m_bus->Call({"org.bluez", m_adapter, kManager, "RegisterAdvertisement"},
                g_variant_new("(oa{sv})", m_path.c_str(), &options), kRegisterLimitMs,
                [tell = m_tell](const Reply& reply) {
                    tell(reply.Ok() ? "" : reply.error->name + ": " + reply.error->message);
                });
}

// The one method that there is: bluetoothd has taken the advertisement off the air.
void Advertisement::OnRelease(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
                              GDBusMethodInvocation* invocation, gpointer self)
{
    g_dbus_method_invocation_return_value(invocation, nullptr);
    const Tell tell = static_cast<const Advertisement*>(self)->m_tell;  // Whoever is told may destroy this object.
    tell("bluetoothd has let it go");
}

GVariant* Advertisement::GetProperty(GDBusConnection*, const char*, const char*, const char*, const char* name,
                                     GError** error, gpointer self)
{
    GVariant* const value = static_cast<const Advertisement*>(self)->Property(name);
    if (value == nullptr) {
        g_set_error(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_PROPERTY, "%s is not part of this advertisement",
                    name);
    }
    return value;
}

// A property that is null is left out: bluetoothd takes an empty name for a name.
GVariant* Advertisement::Property(const std::string& name) const
{
    if (name == "Type") {
        return g_variant_new_string(m_payload.connectable ? "peripheral" : "broadcast");
    }
    if (name == "ManufacturerData") {
        return ManufacturerDataOf(m_payload);
    }
    if (name == "ServiceUUIDs") {
        return ServiceUuidsOf(m_payload);
    }
    if (name == "LocalName" && !m_payload.localName.empty()) {
        return g_variant_new_string(m_payload.localName.c_str());
    }
    if (name == "MinInterval" || name == "MaxInterval") {
        return g_variant_new_uint32(m_intervalMs);
    }
    return nullptr;
}

}  // namespace lyn::advertiser
