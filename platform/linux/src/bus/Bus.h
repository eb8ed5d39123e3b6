// SPDX-License-Identifier: Apache-2.0
//
// The system bus: calls and signals.
#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "bus/Variant.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

/// What a call of the core may take at most when it asks another process.
inline constexpr int kCallLimitMs = 2000;

/// Why a call failed. The name is that of the D-Bus error.
struct BusError {
    std::string name;
    std::string message;
};

/// The end of a call: the values of the answer (a tuple), or an error.
struct Reply {
    Variant values;
    std::optional<BusError> error;

    bool Ok() const { return !error.has_value(); }
};

/// Whom to call.
struct Method {
    std::string service;
    std::string path;
    std::string interface;
    std::string name;
};

enum class AutoStart { no, yes };

/// Which signals are wanted. An empty text matches everything.
struct SignalMatch {
    std::string service;
    std::string path;
    std::string interface;
    std::string name;
    std::string firstArgument;
};

/// A signal: where it comes from and its values (a tuple).
using SignalHandler = std::function<void(const char* path, GVariant* values)>;
/// A service's owner: empty when nobody owns the name.
using OwnerHandler = std::function<void(const std::string& owner)>;
using ReplyHandler = std::function<void(Reply)>;

/// Ends what it stands for when it is destroyed, on the main context.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : m_end(std::move(end)) {}
    ~Subscription() { End(); }
    Subscription(Subscription&& other) noexcept : m_end(std::exchange(other.m_end, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept
    {
        if (this != &other) {
            End();
            m_end = std::exchange(other.m_end, nullptr);
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

    void End()
    {
        if (const auto end = std::exchange(m_end, nullptr)) {
            end();
        }
    }

private:
    std::function<void()> m_end;
};

/// A connection of our own: the one that GLib shares would end the process when the bus goes away.
class Bus {
public:
    /// The system bus, connected at the first call and again after it has gone away; null when it cannot be
    /// reached. Any thread; takes as long as the bus needs to answer, at most kCallLimitMs.
    static std::shared_ptr<Bus> System();

    explicit Bus(GDBusConnection* connection) : m_connection(connection) {}
    ~Bus();
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    /// Calls and waits. `arguments` is a tuple or null; a floating one is taken over. Any thread.
    Reply CallNow(const Method& method, GVariant* arguments, int limitMs = kCallLimitMs,
                  AutoStart autoStart = AutoStart::no) const;

    /// Calls; the handler gets the end on the main context. To be called there.
    void Call(const Method& method, GVariant* arguments, int limitMs, ReplyHandler done) const;

    /// Sends a call and waits until it is on its way, not for its answer, which nobody hears: for a process that
    /// may be about to end. Any thread; takes kCallLimitMs at most.
    void Send(const Method& method) const;

    /// Signals from now on, on the main context. To be called there.
    Subscription OnSignal(const SignalMatch& match, SignalHandler handler) const;

    /// Tells the owner of a name now and at each change, on the main context. To be called there.
    Subscription OnOwner(const std::string& service, OwnerHandler handler) const;

    /// Tells on the main context that the bus is gone. To be called there.
    Subscription OnClosed(Task handler) const;

    bool Closed() const;
    GDBusConnection* Connection() const { return m_connection; }

private:
    GDBusConnection* m_connection;
};

}  // namespace lyn::linux_platform
