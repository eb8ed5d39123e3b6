// SPDX-License-Identifier: Apache-2.0
#include "FakeDaemon.h"

#include <algorithm>
#include <utility>

#include "PrivateBus.h"

namespace lyn::linux_tests {

namespace {

std::string Text(const char* text)
{
    return text != nullptr ? text : "";
}

}  // namespace

Treatment Treatment::Fails(const std::string& error, const std::string& message)
{
    return {error, message, false, 1, 0, false};
}

Treatment Treatment::Late(int ms)
{
    return {"", "", true, 1, ms, false};
}

Treatment Treatment::Twice()
{
    return {"", "", true, 2, 0, false};
}

Treatment Treatment::DoneWithoutAnswer()
{
    return {"", "", true, 0, 0, false};
}

Treatment Treatment::Ignored()
{
    return {"", "", false, 0, 0, false};
}

Treatment Treatment::Dies()
{
    return {"", "", false, 0, 0, true};
}

Treatment Treatment::Answers(const std::string& values)
{
    return {"", "", false, 1, 0, false, values};
}

/// What the service's thread has to do, and when. Outlives the service in the hands of GDBus.
struct FakeDaemon::Inbox {
    struct Task {
        Clock::time_point due;
        std::function<void()> run;
    };

    void Put(int ms, std::function<void()> run)
    {
        const std::lock_guard lock(mutex);
        const auto due = Clock::now() + std::chrono::milliseconds(ms);
        const auto later =
            std::find_if(tasks.begin(), tasks.end(), [&](const Task& task) { return task.due > due; });
        tasks.insert(later, {due, std::move(run)});
        wake.notify_one();
    }

    void Close()
    {
        const std::lock_guard lock(mutex);
        closed = true;
        tasks.clear();
        wake.notify_one();
    }

    /// Waits for the next task; an empty one when the inbox is closed.
    std::function<void()> Take()
    {
        std::unique_lock lock(mutex);
        while (!closed) {
            if (tasks.empty()) {
                wake.wait(lock);
            } else if (tasks.front().due > Clock::now()) {
                wake.wait_until(lock, Clock::time_point(tasks.front().due));
            } else {
                auto run = std::move(tasks.front().run);
                tasks.pop_front();
                return run;
            }
        }
        return nullptr;
    }

    std::mutex mutex;
    std::condition_variable wake;
    std::list<Task> tasks;
    bool closed = false;
};

FakeDaemon::FakeDaemon(std::string name) : m_name(std::move(name)), m_inbox(std::make_shared<Inbox>())
{
    HandleProperties();
    // The bus's watcher is forked: before there is a thread, whose locks it would inherit.
    PrivateBus::Instance();
    m_thread = std::thread([this] { Work(); });
}

FakeDaemon::~FakeDaemon()
{
    m_inbox->Close();
    m_thread.join();
    FakeDaemon::Die();
}

void FakeDaemon::Work()
{
    while (const auto task = m_inbox->Take()) {
        task();
    }
}

void FakeDaemon::Treat(const std::string& method, int nth, Treatment treatment)
{
    const std::lock_guard lock(m_mutex);
    m_rules.push_back({method, nth, 0, std::move(treatment)});
}

void FakeDaemon::TreatWell()
{
    const std::lock_guard lock(m_mutex);
    m_rules.clear();
}

std::vector<std::string> FakeDaemon::Calls() const
{
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

int FakeDaemon::Count(const std::string& method) const
{
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(std::count(m_calls.begin(), m_calls.end(), method));
}

void FakeDaemon::Forget()
{
    const std::lock_guard lock(m_mutex);
    m_calls.clear();
}

void FakeDaemon::SendSignalsTwice(bool twice)
{
    const std::lock_guard lock(m_mutex);
    m_twice = twice;
}

void FakeDaemon::Handle(const std::string& method, Handler handler)
{
    const std::lock_guard lock(m_mutex);
    m_handlers[method] = std::move(handler);
}

void FakeDaemon::Later(int ms, std::function<void()> task)
{
    const std::lock_guard lock(m_mutex);
    m_inbox->Put(ms, [this, life = m_life, run = std::move(task)] {
        const std::lock_guard inner(m_mutex);
        if (life == m_life) {
            run();
        }
    });
}

// ---- The bus -----------------------------------------------------------------------------------------

void FakeDaemon::Return()
{
    const std::lock_guard lock(m_mutex);
    if (m_connection != nullptr) {
        return;
    }
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_connection = g_dbus_connection_new_for_address_sync(PrivateBus::Instance().Address().c_str(), flags, nullptr,
                                                          nullptr, nullptr);
    g_assert_nonnull(m_connection);
    struct Receiver {
        std::shared_ptr<Inbox> inbox;
        std::function<void(std::shared_ptr<GDBusMessage>)> receive;
    };
    const auto filter = [](GDBusConnection*, GDBusMessage* message, gboolean incoming,
                           gpointer data) -> GDBusMessage* {
        if (!incoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
            return message;
        }
        const auto* receiver = static_cast<Receiver*>(data);
        receiver->inbox->Put(0, [receive = receiver->receive, call = SharedMessage(message)] { receive(call); });
        return nullptr;
    };
    m_filter = g_dbus_connection_add_filter(
        m_connection, filter,
        new Receiver{m_inbox, [this, life = m_life](const auto& message) { Receive(message, life); }},
        [](gpointer data) { delete static_cast<Receiver*>(data); });
    GVariant* const taken = g_dbus_connection_call_sync(
        m_connection, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", m_name.c_str(), 4U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    g_assert_nonnull(taken);
    g_variant_unref(taken);
}

void FakeDaemon::Die()
{
    const std::lock_guard lock(m_mutex);
    if (m_connection == nullptr) {
        return;
    }
    ++m_life;
    g_dbus_connection_remove_filter(m_connection, m_filter);
    g_dbus_connection_flush_sync(m_connection, nullptr, nullptr);
    g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
    g_object_unref(std::exchange(m_connection, nullptr));
}

void FakeDaemon::Receive(const std::shared_ptr<GDBusMessage>& message, std::uint64_t life)
{
    const std::lock_guard lock(m_mutex);
    if (life != m_life) {
        return;
    }
    const std::string interface = Text(g_dbus_message_get_interface(message.get()));
    Call call;
    call.message = message;
    call.path = Text(g_dbus_message_get_path(message.get()));
    call.method =
        interface.substr(interface.rfind('.') + 1) + "." + Text(g_dbus_message_get_member(message.get()));
    call.arguments = g_dbus_message_get_body(message.get());
    call.treatment = TreatmentOf(call.method);
    call.life = life;
    m_calls.push_back(call.method);
    if (call.treatment.dies) {
        Die();
    } else if (!call.treatment.error.empty()) {
        Refuse(call, call.treatment.error, call.treatment.message);
    } else if (!call.treatment.values.empty()) {
        Answer(call, g_variant_new_parsed(call.treatment.values.c_str()));
    } else if (call.treatment.done) {
        Dispatch(call);
    }
}

Treatment FakeDaemon::TreatmentOf(const std::string& method)
{
    Treatment treatment;
    for (Rule& rule : m_rules) {
        if (rule.method.empty() || rule.method == method) {
            ++rule.seen;
            if (rule.nth == 0 || rule.seen == rule.nth) {
                treatment = rule.treatment;
            }
        }
    }
    return treatment;
}

void FakeDaemon::Dispatch(const Call& call)
{
    const bool known = call.path == "/" || m_objects.contains(call.path);
    const auto handler = m_handlers.find(call.method);
    if (!known) {
        Refuse(call, "org.freedesktop.DBus.Error.UnknownObject", "Method \"x\" with signature \"\" doesn't exist");
    } else if (handler == m_handlers.end()) {
        Refuse(call, "org.freedesktop.DBus.Error.UnknownMethod", "no such method");
    } else {
        handler->second(call);
    }
}

void FakeDaemon::Answer(const Call& call, GVariant* values)
{
    const auto reply = SharedMessage(g_dbus_message_new_method_reply(call.message.get()));
    if (values != nullptr) {
        g_dbus_message_set_body(reply.get(), values);
    }
    Reply(call, reply);
}

void FakeDaemon::Refuse(const Call& call, const std::string& error, const std::string& message)
{
    Reply(call, SharedMessage(
                    g_dbus_message_new_method_error_literal(call.message.get(), error.c_str(), message.c_str())));
}

void FakeDaemon::Reply(const Call& call, const std::shared_ptr<GDBusMessage>& reply)
{
    const auto send = [this, reply, count = call.treatment.answers, life = call.life] {
        const std::lock_guard lock(m_mutex);
        for (int i = 0; i < count && life == m_life; ++i) {
            GDBusMessage* const copy = g_dbus_message_copy(reply.get(), nullptr);
            Send(copy);
            g_object_unref(copy);
        }
    };
    if (call.treatment.delayMs == 0) {
        send();
    } else {
        m_inbox->Put(call.treatment.delayMs, send);
    }
}

void FakeDaemon::Send(GDBusMessage* message)
{
    if (m_connection != nullptr) {
        g_dbus_connection_send_message(m_connection, message, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    }
}

}  // namespace lyn::linux_tests
