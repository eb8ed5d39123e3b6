// SPDX-License-Identifier: Apache-2.0
#include "commands.h"
#include "failure.h"
#include "json_line.h"
#include "loop.h"
#include "names.h"
#include "session.h"
#include "terminal.h"
#include "timeline.h"

namespace lynctl {

namespace {

class Follower {
public:
    Follower(const Arguments& arguments, const Library& library)
        : m_arguments(arguments),
          m_session(library, arguments.service, [this](lyn_state_e state) { OnState(state); })
    {
    }

    int Run()
    {
        if (!m_arguments.json) {
            Begin();
        }
        const LoopEnd end = m_loop.Run(static_cast<unsigned>(m_arguments.seconds) * 1000);
        End(end != LoopEnd::time);
        return kExitSuccess;
    }

private:
    void Begin() const
    {
        Print(Paint("Following the states of \"" + m_arguments.service + "\"", Style::strong, LookOfOutput()) +
              "\n");
        if (m_arguments.service != "nodlink") {
            Print("Only \"nodlink\" changes its state when Bluetooth or power change; expect silence.\n");
        }
    }

    void OnState(lyn_state_e state)
    {
        ++m_changes;
        if (!m_arguments.json) {
            PrintTimeline(m_loop.Seconds(), "state", StateName(state), Style::accent);
            return;
        }
        Json::Value line = Event("state", m_loop.Seconds());
        line["state"] = StateName(state);
        line["value"] = static_cast<int>(state);
        PrintJson(line);
    }

    void End(bool interrupted) const
    {
        if (!m_arguments.json) {
            Print(std::to_string(m_changes) + (m_changes == 1 ? " change" : " changes") +
                  (interrupted ? " (stopped by a signal)\n" : "\n"));
            return;
        }
        Json::Value line = Event("summary", m_loop.Seconds());
        line["service"] = m_arguments.service;
        line["changes"] = m_changes;
        line["interrupted"] = interrupted;
        PrintJson(line);
    }

    const Arguments& m_arguments;
    Loop m_loop;
    int m_changes = 0;
    Session m_session;  // last: it reports to the others until it is gone
};

}  // namespace

int FollowEvents(const Arguments& arguments, const Library& library)
{
    return Follower(arguments, library).Run();
}

}  // namespace lynctl
