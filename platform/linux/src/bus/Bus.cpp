// SPDX-License-Identifier: Apache-2.0
#include "bus/Bus.h"

#include <chrono>
#include <future>
#include <mutex>
#include <utility>

namespace lyn::linux_platform {

namespace {

struct ErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
struct ObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct TextFree {
    void operator()(char* text) const { g_free(text); }
};
using Error = std::unique_ptr<GError, ErrorFree>;
using Cancellable = std::unique_ptr<GCancellable, ObjectUnref>;
using Text = std::unique_ptr<char, TextFree>;

BusError ErrorFrom(GError* raw)
{
    const Error error(raw);
    const Text name(g_dbus_error_get_remote_error(error.get()));
    if (name) {
        g_dbus_error_strip_remote_error(error.get());
        return {name.get(), error->message};
    }
    const bool late = g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT);
    return {late ? "org.freedesktop.DBus.Error.Timeout" : "org.freedesktop.DBus.Error.Failed", error->message};
}

Reply ReplyFrom(GVariant* values, GError* error)
{
    if (values == nullptr) {
        return {nullptr, ErrorFrom(error)};
    }
    return {Variant(values), std::nullopt};
}

const char* OrNull(const std::string& text)
{
    return text.empty() ? nullptr : text.c_str();
}

GDBusConnection* ConnectTo(const char* address, GCancellable* cancellable)
{
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return g_dbus_connection_new_for_address_sync(address, flags, nullptr, cancellable, nullptr);
}

/// Runs what may take long on a thread of its own, and cancels it after the time that a call of the core may take.
/// A connection that is made there tells of its end on the main context, whatever context the caller's thread has.
template <typename Work>
auto InTime(const Work& work)
{
    const Cancellable cancellable(g_cancellable_new());
    auto done = std::async(std::launch::async, work, cancellable.get());
    if (done.wait_for(std::chrono::milliseconds(kCallLimitMs)) != std::future_status::ready) {
        g_cancellable_cancel(cancellable.get());
    }
    return done.get();
}

GDBusConnection* Connect()
{
    const Text address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    if (!address) {
        return nullptr;
    }
    return InTime([&](GCancellable* cancellable) { return ConnectTo(address.get(), cancellable); });
}

template <typename Handler>
void DeleteHandler(gpointer handler)
{
    delete static_cast<Handler*>(handler);
}

void OnReply(GObject* connection, GAsyncResult* result, gpointer data)
{
    const std::unique_ptr<ReplyHandler> done(static_cast<ReplyHandler*>(data));
    GError* error = nullptr;
    GVariant* values = g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &error);
    (*done)(ReplyFrom(values, error));
}

void OnSignalReceived(GDBusConnection*, const char*, const char* path, const char*, const char*, GVariant* values,
                      gpointer handler)
{
    (*static_cast<SignalHandler*>(handler))(path, values);
}

void OnNameAppeared(GDBusConnection*, const char*, const char* owner, gpointer handler)
{
    (*static_cast<OwnerHandler*>(handler))(owner);
}

void OnNameVanished(GDBusConnection*, const char*, gpointer handler)
{
    (*static_cast<OwnerHandler*>(handler))("");
}

}  // namespace

std::shared_ptr<Bus> Bus::System()
{
    // Never destroyed: callbacks may be on their way while the process ends.
    static auto* const mutex = new std::mutex;
    static auto* const current = new std::shared_ptr<Bus>;
    const std::lock_guard lock(*mutex);
    if (*current == nullptr || (*current)->Closed()) {
        GDBusConnection* const connection = Connect();
        *current = connection != nullptr ? std::make_shared<Bus>(connection) : nullptr;
    }
    return *current;
}

Bus::~Bus()
{
    g_object_unref(m_connection);
}

Reply Bus::CallNow(const Method& method, GVariant* arguments, int limitMs, AutoStart autoStart) const
{
    const auto flags = autoStart == AutoStart::yes ? G_DBUS_CALL_FLAGS_NONE : G_DBUS_CALL_FLAGS_NO_AUTO_START;
    GError* error = nullptr;
    GVariant* values = g_dbus_connection_call_sync(m_connection, method.service.c_str(), method.path.c_str(),
                                                   method.interface.c_str(), method.name.c_str(), arguments,
                                                   nullptr, flags, limitMs, nullptr, &error);
    return ReplyFrom(values, error);
}

void Bus::Call(const Method& method, GVariant* arguments, int limitMs, ReplyHandler done) const
{
    g_dbus_connection_call(m_connection, method.service.c_str(), method.path.c_str(), method.interface.c_str(),
                           method.name.c_str(), arguments, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, limitMs,
                           nullptr, &OnReply, new ReplyHandler(std::move(done)));
}

void Bus::Send(const Method& method) const
{
    g_dbus_connection_call(m_connection, method.service.c_str(), method.path.c_str(), method.interface.c_str(),
                           method.name.c_str(), nullptr, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, kCallLimitMs,
                           nullptr, nullptr, nullptr);
    InTime([this](GCancellable* cancellable) {
        return g_dbus_connection_flush_sync(m_connection, cancellable, nullptr);
    });
}

Subscription Bus::OnSignal(const SignalMatch& match, SignalHandler handler) const
{
    const guint id = g_dbus_connection_signal_subscribe(
        m_connection, OrNull(match.service), OrNull(match.interface), OrNull(match.name), OrNull(match.path),
        OrNull(match.firstArgument), G_DBUS_SIGNAL_FLAGS_NONE, &OnSignalReceived,
        new SignalHandler(std::move(handler)), &DeleteHandler<SignalHandler>);
    auto* const connection = G_DBUS_CONNECTION(g_object_ref(m_connection));
    return Subscription([connection, id] {
        g_dbus_connection_signal_unsubscribe(connection, id);
        g_object_unref(connection);
    });
}

Subscription Bus::OnOwner(const std::string& service, OwnerHandler handler) const
{
    const guint id = g_bus_watch_name_on_connection(
        m_connection, service.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE, &OnNameAppeared, &OnNameVanished,
        new OwnerHandler(std::move(handler)), &DeleteHandler<OwnerHandler>);
    return Subscription([id] { g_bus_unwatch_name(id); });
}

Subscription Bus::OnClosed(Task handler) const
{
    const auto run = [](GDBusConnection*, gboolean, GError*, gpointer task) { Post(*static_cast<Task*>(task)); };
    const auto destroy = [](gpointer task, GClosure*) { delete static_cast<Task*>(task); };
    auto* const connection = G_DBUS_CONNECTION(g_object_ref(m_connection));
    const gulong id = g_signal_connect_data(
        connection, "closed",
        G_CALLBACK(static_cast<void (*)(GDBusConnection*, gboolean, GError*, gpointer)>(run)),
        new Task(std::move(handler)), destroy, static_cast<GConnectFlags>(0));
    return Subscription([connection, id] {
        g_signal_handler_disconnect(connection, id);
        g_object_unref(connection);
    });
}

bool Bus::Closed() const
{
    return g_dbus_connection_is_closed(m_connection) != FALSE;
}

}  // namespace lyn::linux_platform
