// SPDX-License-Identifier: Apache-2.0
//
// A service on the system bus for tests: objects with properties, methods, and a say in what becomes of each
// call. It works on a thread of its own; its functions may be called from any.
#pragma once

#include <gio/gio.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace lyn::linux_tests {

/// What becomes of a call.
struct Treatment {
    std::string error;  ///< not empty: nothing is done, and this error is the answer
    std::string message;
    bool done = true;   ///< what the call asks for happens
    int answers = 1;    ///< 0: none ever, 2: the same twice
    int delayMs = 0;    ///< of the answer
    bool dies = false;  ///< the service dies of it
    /// Not empty: nothing is done, and this tuple in GVariant text form is the answer.
    std::string values = {};

    static Treatment Fails(const std::string& error, const std::string& message = "as the test wants it");
    static Treatment Late(int ms);
    static Treatment Twice();
    static Treatment DoneWithoutAnswer();
    static Treatment Ignored();
    static Treatment Dies();
    static Treatment Answers(const std::string& values);
};

/// Owns a message from now on.
inline std::shared_ptr<GDBusMessage> SharedMessage(GDBusMessage* message)
{
    return {message, [](GDBusMessage* owned) { g_object_unref(owned); }};
}

class FakeDaemon {
public:
    /// A call, to be answered once by Answer() or Refuse(), now or later.
    struct Call {
        std::shared_ptr<GDBusMessage> message;
        std::string path;
        std::string method;             ///< "Device1.Connect": the last word of the interface, and the name
        GVariant* arguments = nullptr;  ///< a tuple, lives as long as the message; null without arguments
        Treatment treatment;
        std::uint64_t life = 0;
    };
    using Handler = std::function<void(const Call& call)>;
    using Properties = std::vector<std::pair<std::string, GVariant*>>;

    explicit FakeDaemon(std::string name);
    virtual ~FakeDaemon();
    FakeDaemon(const FakeDaemon&) = delete;
    FakeDaemon& operator=(const FakeDaemon&) = delete;

    /// The nth call of a method from now on is treated so, or every one when nth is 0. An empty method is any.
    void Treat(const std::string& method, int nth, Treatment treatment);
    /// Calls are treated as usual again.
    void TreatWell();

    /// The methods called since the last Forget(), in order.
    std::vector<std::string> Calls() const;
    int Count(const std::string& method) const;
    void Forget();

    /// Leaves the bus; calls that are open are answered by the bus. Objects stay unless a subclass forgets them.
    virtual void Die();
    /// Comes to the bus.
    virtual void Return();

    /// Makes or extends an object. Floating values are taken over.
    void Add(const std::string& path, const std::string& interface, const Properties& properties);
    /// Removes the object and those below it.
    void Remove(const std::string& path);
    bool Has(const std::string& path) const;
    /// Changes a property and tells it.
    void Set(const std::string& path, const std::string& interface, const std::string& property, GVariant* value);
    /// Changes properties and tells them in one signal.
    void Set(const std::string& path, const std::string& interface, const Properties& properties);
    /// Takes a property away, and says nothing.
    void Unset(const std::string& path, const std::string& interface, const std::string& property);
    bool IsTrue(const std::string& path, const std::string& interface, const std::string& property) const;
    /// Sends any signal. A floating tuple is taken over.
    void Emit(const std::string& path, const std::string& interface, const std::string& signal, GVariant* values);
    /// Every signal is sent twice from now on.
    void SendSignalsTwice(bool twice);

    /// What a method of any object does.
    void Handle(const std::string& method, Handler handler);
    void Answer(const Call& call, GVariant* values = nullptr);
    void Refuse(const Call& call, const std::string& error, const std::string& message);
    /// Answers with a message that was made for the call.
    void Reply(const Call& call, const std::shared_ptr<GDBusMessage>& reply);

    /// Runs on the service's thread after a time, unless the service has died before.
    void Later(int ms, std::function<void()> task);

protected:
    using Clock = std::chrono::steady_clock;
    struct Inbox;
    struct Rule {
        std::string method;
        int nth = 0;
        int seen = 0;
        Treatment treatment;
    };
    struct Unref {
        void operator()(GVariant* value) const { g_variant_unref(value); }
    };
    using Value = std::unique_ptr<GVariant, Unref>;
    using Interfaces = std::map<std::string, std::map<std::string, Value>>;

    /// Guards everything, also what subclasses add. Recursive: handlers call all of the above.
    mutable std::recursive_mutex m_mutex;

private:
    void Work();
    void Receive(const std::shared_ptr<GDBusMessage>& message, std::uint64_t life);
    Treatment TreatmentOf(const std::string& method);
    void Dispatch(const Call& call);
    void Send(GDBusMessage* message);
    void HandleProperties();
    static GVariant* PropertiesOf(const std::map<std::string, Value>& properties);
    static GVariant* InterfacesOf(const Interfaces& interfaces);

    const std::string m_name;
    GDBusConnection* m_connection = nullptr;
    guint m_filter = 0;
    std::uint64_t m_life = 0;
    std::map<std::string, Interfaces> m_objects;
    std::map<std::string, Handler> m_handlers;
    std::list<Rule> m_rules;
    std::vector<std::string> m_calls;
    bool m_twice = false;
    std::shared_ptr<Inbox> m_inbox;
    std::thread m_thread;
};

}  // namespace lyn::linux_tests
