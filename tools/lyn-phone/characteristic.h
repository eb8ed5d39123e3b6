// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <list>
#include <memory>
#include <string>

#include "answers.h"
#include "bus/Variant.h"
#include "loop/MainContext.h"
#include "peers.h"
#include "reports.h"

namespace lynphone {

/// A characteristic on the bus, for bluetoothd: takes what is written and answers as its script says.
class Characteristic {
public:
    /// @param bus lives longer than this
    Characteristic(GDBusConnection* bus, std::string path, const lyn::simulator::Characteristic& script,
                   const Peers& peers, const Reports& reports);
    ~Characteristic();
    Characteristic(const Characteristic&) = delete;
    Characteristic& operator=(const Characteristic&) = delete;

private:
    /// A call of bluetoothd that gets one answer, or none when nobody answers any more.
    class Write;

    static void OnCall(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                       const char* method, GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self);

    void Take(GVariant* arguments, const std::shared_ptr<Write>& write);
    void Act(const lyn::simulator::Answer& answer, const std::shared_ptr<Write>& write);
    void Notify(const lyn::simulator::Answer& answer);
    void After(int milliseconds, lyn::linux_platform::Task task);

    GDBusConnection* m_bus;
    std::string m_path;
    std::string m_uuid;
    Answers m_answers;
    const Peers& m_peers;
    const Reports& m_reports;
    unsigned m_registration = 0;
    bool m_subscribed = false;
    unsigned m_link = 0;
    std::list<lyn::linux_platform::Timer> m_timers;  ///< of the present link
};

}  // namespace lynphone
