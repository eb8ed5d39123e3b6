// SPDX-License-Identifier: Apache-2.0
#include "characteristic.h"

#include <cstring>
#include <string_view>
#include <utility>

#include "bluez/Bluez.h"
#include "failure.h"

namespace lynphone {

using lyn::linux_platform::kGattCharacteristic;
using lyn::linux_platform::kProperties;
using lyn::linux_platform::Lookup;
using lyn::linux_platform::LookupPath;
using lyn::linux_platform::Task;
using lyn::linux_platform::Variant;
using lyn::simulator::Answer;

namespace {

constexpr const char* kInterfaces = R"(<node>
  <interface name="org.bluez.GattCharacteristic1">
    <method name="WriteValue"><arg type="ay" direction="in"/><arg type="a{sv}" direction="in"/></method>
    <method name="StartNotify"/>
    <method name="StopNotify"/>
  </interface>
</node>)";

GDBusInterfaceInfo* Interface()
{
    // Never freed: GLib holds it for as long as an object is there.
    static GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(kInterfaces, nullptr);
    return node->interfaces[0];
}

std::string Bytes(GVariant* array)
{
    gsize length = 0;
    const void* const bytes = g_variant_get_fixed_array(array, &length, 1);
    return {static_cast<const char*>(bytes), length};
}

}  // namespace

class Characteristic::Write {
public:
    explicit Write(GDBusMethodInvocation* invocation) : m_invocation(invocation) {}
    ~Write()
    {
        if (m_invocation != nullptr) {
            g_object_unref(m_invocation);
        }
    }
    Write(const Write&) = delete;
    Write& operator=(const Write&) = delete;

    void Complete()
    {
        if (auto* const invocation = std::exchange(m_invocation, nullptr)) {
            g_dbus_method_invocation_return_value(invocation, nullptr);
        }
    }
    void Refuse(const char* why)
    {
        if (auto* const invocation = std::exchange(m_invocation, nullptr)) {
            g_dbus_method_invocation_return_dbus_error(invocation, "org.bluez.Error.Failed", why);
        }
    }

    std::string devicePath;

private:
    GDBusMethodInvocation* m_invocation;
};

Characteristic::Characteristic(GDBusConnection* bus, std::string path,
                               const lyn::simulator::Characteristic& script, const Peers& peers,
                               const Reports& reports)
    : m_bus(bus),
      m_path(std::move(path)),
      m_uuid(script.uuid),
      m_answers(script.answers, script.answersPerLink),
      m_peers(peers),
      m_reports(reports)
{
    static const GDBusInterfaceVTable table{&Characteristic::OnCall, nullptr, nullptr, {}};
    m_registration =
        g_dbus_connection_register_object(m_bus, m_path.c_str(), Interface(), &table, this, nullptr, nullptr);
    if (m_registration == 0) {
        throw lynctl::Failure(lynctl::kExitFailure, m_path + " cannot be put on the bus");
    }
}

Characteristic::~Characteristic()
{
    g_dbus_connection_unregister_object(m_bus, m_registration);
}

void Characteristic::OnCall(GDBusConnection*, const char*, const char*, const char*, const char* method,
                            GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self)
{
    auto& object = *static_cast<Characteristic*>(self);
    const auto write = std::make_shared<Write>(invocation);
    if (std::strcmp(method, "WriteValue") == 0) {
        object.Take(arguments, write);
        return;
    }
    object.m_subscribed = std::strcmp(method, "StartNotify") == 0;
    write->Complete();
    object.m_reports.Subscribed(object.m_uuid, object.m_subscribed);
}

void Characteristic::Take(GVariant* arguments, const std::shared_ptr<Write>& write)
{
    const Variant value(g_variant_get_child_value(arguments, 0));
    const Variant options(g_variant_get_child_value(arguments, 1));
    const Variant mtu = Lookup(options.get(), "mtu", "q");
    write->devicePath = LookupPath(options.get(), "device").value_or("");
    const unsigned link = m_peers.LinkOf(write->devicePath);
    if (link != m_link) {
        m_timers.clear();
        m_link = link;
    }
    m_reports.Written(Peers::AddressOf(write->devicePath), m_uuid, Bytes(value.get()),
                      mtu ? g_variant_get_uint16(mtu.get()) : 0);
    Act(m_answers.Next(link), write);
}

void Characteristic::Act(const Answer& answer, const std::shared_ptr<Write>& write)
{
    switch (answer.kind) {
    case Answer::Kind::writeError:
        After(answer.delayMs, [write] { write->Refuse("the script says so"); });
        return;
    case Answer::Kind::silent:
        After(answer.delayMs, [write] { write->Complete(); });
        return;
    case Answer::Kind::notify:
    case Answer::Kind::disconnect:
        break;
    }
    if (!answer.beforeCompletion) {
        write->Complete();
    }
    After(answer.delayMs, [this, answer, write] {
        if (answer.kind == Answer::Kind::notify) {
            Notify(answer);
        } else {
            m_peers.Disconnect(write->devicePath);
        }
        write->Complete();
    });
}

void Characteristic::Notify(const Answer& answer)
{
    for (int i = 0; i < answer.repeat && m_subscribed; ++i) {
        GVariantBuilder changed;
        g_variant_builder_init(&changed, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(
            &changed, "{sv}", "Value",
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, answer.text.data(), answer.text.size(), 1));
        g_dbus_connection_emit_signal(m_bus, nullptr, m_path.c_str(), kProperties, "PropertiesChanged",
                                      g_variant_new("(sa{sv}as)", kGattCharacteristic, &changed, nullptr),
                                      nullptr);
        m_reports.Notified(m_uuid, answer.text);
    }
}

void Characteristic::After(int milliseconds, Task task)
{
    if (milliseconds == 0) {
        task();
        return;
    }
    m_timers.emplace_back(static_cast<unsigned>(milliseconds), std::move(task));
}

}  // namespace lynphone
