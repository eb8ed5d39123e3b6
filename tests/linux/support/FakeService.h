// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace lyn::linux_tests {

/// A program on the private bus. It answers on a thread of its own, so that the code under test may wait for it.
/// Answers method calls with what Answer() was told, and "UnknownMethod" otherwise.
class FakeService {
public:
    /// Takes the name of a service, and has it when the constructor returns.
    explicit FakeService(const std::string& name);
    /// Leaves the bus, as a program that ends.
    ~FakeService();
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    /// Makes the answer to a call, on the service's thread: a message made by g_dbus_message_new_method_reply() or
    /// ..._error(). To return null is never to answer.
    using Answer = std::function<GDBusMessage*(GDBusMessage* call)>;

    void On(const std::string& path, const std::string& interface, const std::string& method, Answer answer);
    /// Answers with a tuple in GVariant text form.
    void OnText(const std::string& path, const std::string& interface, const std::string& method,
                const std::string& values);
    void Fail(const std::string& path, const std::string& interface, const std::string& method,
              const std::string& error);

    /// Sends a signal with a tuple in GVariant text form.
    void Signal(const std::string& path, const std::string& interface, const std::string& name,
                const std::string& values);

    /// Names of the methods called so far, in order.
    std::vector<std::string> Calls() const;

private:
    static GDBusMessage* Filter(GDBusConnection*, GDBusMessage* message, gboolean incoming, gpointer self);

    GDBusConnection* m_connection;
    guint m_filter;
    mutable std::mutex m_mutex;
    std::map<std::string, Answer> m_answers;
    std::vector<std::string> m_calls;
};

}  // namespace lyn::linux_tests
