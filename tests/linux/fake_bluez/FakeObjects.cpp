// SPDX-License-Identifier: Apache-2.0
//
// The objects of a daemon: what it shows, and tells of their changes.
#include <utility>

#include "FakeDaemon.h"

namespace lyn::linux_tests {

namespace {

constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kObjectManager = "org.freedesktop.DBus.ObjectManager";

}  // namespace

void FakeDaemon::Add(const std::string& path, const std::string& interface, const Properties& properties)
{
    const std::lock_guard lock(m_mutex);
    auto& entry = m_objects[path][interface];
    for (const auto& [name, value] : properties) {
        entry[name] = Value(g_variant_ref_sink(value));
    }
    GVariantBuilder added;
    g_variant_builder_init(&added, G_VARIANT_TYPE("a{sa{sv}}"));
    g_variant_builder_add(&added, "{s@a{sv}}", interface.c_str(), PropertiesOf(entry));
    Emit("/", kObjectManager, "InterfacesAdded", g_variant_new("(oa{sa{sv}})", path.c_str(), &added));
}

void FakeDaemon::Remove(const std::string& path)
{
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> gone;
    for (const auto& [object, interfaces] : m_objects) {
        if (object == path || object.starts_with(path + "/")) {
            gone.insert(gone.begin(), object);  // The lower ones first.
        }
    }
    for (const std::string& object : gone) {
        GVariantBuilder names;
        g_variant_builder_init(&names, G_VARIANT_TYPE("as"));
        for (const auto& [name, properties] : m_objects[object]) {
            g_variant_builder_add(&names, "s", name.c_str());
        }
        m_objects.erase(object);
        Emit("/", kObjectManager, "InterfacesRemoved", g_variant_new("(oas)", object.c_str(), &names));
    }
}

bool FakeDaemon::Has(const std::string& path) const
{
    const std::lock_guard lock(m_mutex);
    return m_objects.contains(path);
}

void FakeDaemon::Set(const std::string& path, const std::string& interface, const std::string& property,
                     GVariant* value)
{
    Set(path, interface, {{property, value}});
}

void FakeDaemon::Set(const std::string& path, const std::string& interface, const Properties& properties)
{
    const std::lock_guard lock(m_mutex);
    const auto object = m_objects.find(path);
    GVariantBuilder changed;
    g_variant_builder_init(&changed, G_VARIANT_TYPE("a{sv}"));
    for (const auto& [name, value] : properties) {
        Value owned(g_variant_ref_sink(value));
        g_variant_builder_add(&changed, "{sv}", name.c_str(), owned.get());
        if (object != m_objects.end()) {
            object->second[interface][name] = std::move(owned);
        }
    }
    Emit(path, kProperties, "PropertiesChanged",
         g_variant_new("(sa{sv}as)", interface.c_str(), &changed, static_cast<GVariantBuilder*>(nullptr)));
}

void FakeDaemon::Unset(const std::string& path, const std::string& interface, const std::string& property)
{
    const std::lock_guard lock(m_mutex);
    const auto object = m_objects.find(path);
    if (object != m_objects.end()) {
        object->second[interface].erase(property);
    }
}

bool FakeDaemon::IsTrue(const std::string& path, const std::string& interface, const std::string& property) const
{
    const std::lock_guard lock(m_mutex);
    const auto object = m_objects.find(path);
    if (object == m_objects.end() || !object->second.contains(interface)) {
        return false;
    }
    const auto& properties = object->second.at(interface);
    const auto found = properties.find(property);
    return found != properties.end() && g_variant_is_of_type(found->second.get(), G_VARIANT_TYPE_BOOLEAN) &&
           g_variant_get_boolean(found->second.get());
}

void FakeDaemon::Emit(const std::string& path, const std::string& interface, const std::string& signal,
                      GVariant* values)
{
    const std::lock_guard lock(m_mutex);
    const Value body(g_variant_ref_sink(values));
    for (int i = 0; i < (m_twice ? 2 : 1); ++i) {
        const auto message =
            SharedMessage(g_dbus_message_new_signal(path.c_str(), interface.c_str(), signal.c_str()));
        g_dbus_message_set_body(message.get(), body.get());
        Send(message.get());
    }
}

GVariant* FakeDaemon::PropertiesOf(const std::map<std::string, Value>& properties)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
    for (const auto& [name, value] : properties) {
        g_variant_builder_add(&builder, "{sv}", name.c_str(), value.get());
    }
    return g_variant_builder_end(&builder);
}

GVariant* FakeDaemon::InterfacesOf(const Interfaces& interfaces)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sa{sv}}"));
    for (const auto& [name, properties] : interfaces) {
        g_variant_builder_add(&builder, "{s@a{sv}}", name.c_str(), PropertiesOf(properties));
    }
    return g_variant_builder_end(&builder);
}

void FakeDaemon::HandleProperties()
{
    Handle("ObjectManager.GetManagedObjects", [this](const Call& call) {
        GVariantBuilder objects;
        g_variant_builder_init(&objects, G_VARIANT_TYPE("a{oa{sa{sv}}}"));
        for (const auto& [path, interfaces] : m_objects) {
            g_variant_builder_add(&objects, "{o@a{sa{sv}}}", path.c_str(), InterfacesOf(interfaces));
        }
        Answer(call, g_variant_new("(a{oa{sa{sv}}})", &objects));
    });
    Handle("Properties.GetAll", [this](const Call& call) {
        const char* interface = nullptr;
        g_variant_get(call.arguments, "(&s)", &interface);
        Answer(call, g_variant_new("(@a{sv})", PropertiesOf(m_objects[call.path][interface])));
    });
    Handle("Properties.Get", [this](const Call& call) {
        const char* interface = nullptr;
        const char* name = nullptr;
        g_variant_get(call.arguments, "(&s&s)", &interface, &name);
        const auto& properties = m_objects[call.path][interface];
        const auto found = properties.find(name);
        if (found == properties.end()) {
            Refuse(call, "org.freedesktop.DBus.Error.InvalidArgs", "No such property");
        } else {
            Answer(call, g_variant_new("(v)", found->second.get()));
        }
    });
}

}  // namespace lyn::linux_tests
