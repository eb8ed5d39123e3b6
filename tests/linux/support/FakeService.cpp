// SPDX-License-Identifier: Apache-2.0
#include "FakeService.h"

#include <stdexcept>
#include <utility>

#include "PrivateBus.h"

namespace lyn::linux_tests {

namespace {

std::string KeyOf(const std::string& path, const std::string& interface, const std::string& method)
{
    return path + " " + interface + "." + method;
}

std::string OrEmpty(const char* text)
{
    return text != nullptr ? text : "";
}

}  // namespace

FakeService::FakeService(const std::string& name)
{
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_connection = g_dbus_connection_new_for_address_sync(PrivateBus::Instance().Address().c_str(), flags, nullptr,
                                                          nullptr, nullptr);
    if (m_connection == nullptr) {
        throw std::runtime_error("no private bus");
    }
    // A filter runs on the connection's own thread, and so needs no main loop.
    m_filter = g_dbus_connection_add_filter(m_connection, &FakeService::Filter, this, nullptr);
    GVariant* const reply = g_dbus_connection_call_sync(
        m_connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", name.c_str(), 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    if (reply == nullptr) {
        throw std::runtime_error("no name on the private bus");
    }
    g_variant_unref(reply);
}

FakeService::~FakeService()
{
    // Waits for a filter that runs.
    g_dbus_connection_remove_filter(m_connection, m_filter);
    g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
    g_object_unref(m_connection);
}

void FakeService::On(const std::string& path, const std::string& interface, const std::string& method,
                     Answer answer)
{
    const std::lock_guard lock(m_mutex);
    m_answers[KeyOf(path, interface, method)] = std::move(answer);
}

void FakeService::OnText(const std::string& path, const std::string& interface, const std::string& method,
                         const std::string& values)
{
    On(path, interface, method, [values](GDBusMessage* call) {
        GDBusMessage* const reply = g_dbus_message_new_method_reply(call);
        g_dbus_message_set_body(reply, g_variant_new_parsed(values.c_str()));
        return reply;
    });
}

void FakeService::Fail(const std::string& path, const std::string& interface, const std::string& method,
                       const std::string& error)
{
    On(path, interface, method, [error](GDBusMessage* call) {
        return g_dbus_message_new_method_error_literal(call, error.c_str(), "as the test wants");
    });
}

void FakeService::Signal(const std::string& path, const std::string& interface, const std::string& name,
                         const std::string& values)
{
    g_dbus_connection_emit_signal(m_connection, nullptr, path.c_str(), interface.c_str(), name.c_str(),
                                  g_variant_new_parsed(values.c_str()), nullptr);
    g_dbus_connection_flush_sync(m_connection, nullptr, nullptr);
}

std::vector<std::string> FakeService::Calls() const
{
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

GDBusMessage* FakeService::Filter(GDBusConnection* connection, GDBusMessage* message, gboolean incoming,
                                  gpointer self)
{
    auto* const service = static_cast<FakeService*>(self);
    if (incoming == FALSE || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
        return message;
    }
    const std::string method = OrEmpty(g_dbus_message_get_member(message));
    Answer answer;
    {
        const std::lock_guard lock(service->m_mutex);
        service->m_calls.push_back(method);
        const auto found = service->m_answers.find(KeyOf(OrEmpty(g_dbus_message_get_path(message)),
                                                         OrEmpty(g_dbus_message_get_interface(message)), method));
        if (found == service->m_answers.end()) {
            return message;
        }
        answer = found->second;
    }
    if (GDBusMessage* const reply = answer(message)) {
        g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
        g_object_unref(reply);
    }
    g_object_unref(message);
    return nullptr;
}

}  // namespace lyn::linux_tests
