// SPDX-License-Identifier: Apache-2.0
#include "commands.h"
#include "failure.h"
#include "names.h"
#include "session.h"
#include "terminal.h"

namespace lynctl {

namespace {

bool Advertises(const std::string& service)
{
    return service == "mirroring" || service == "kov";
}

void Start(const Session& session, lyn_adv_interval_e interval)
{
    Check(session.Call().startAdvertise(session.Handle(), interval), "start the advertisement");
}

/// The library ends only what the same service has begun: a new process begins first, then ends.
void StartAndStop(const Session& session)
{
    Start(session, LYN_ADV_INTERVAL_300);
    Check(session.Call().stopAdvertise(session.Handle()), "stop the advertisement");
}

}  // namespace

int Advertise(const Arguments& arguments, const Library& library)
{
    const Session session(library, arguments.service, [](lyn_state_e) {});
    if (arguments.stop) {
        StartAndStop(session);
    } else {
        Start(session, *arguments.interval);
    }

    if (!Advertises(arguments.service)) {
        Print("Service \"" + arguments.service +
              "\" does not advertise: the call was accepted and changed nothing.\n");
        return kExitSuccess;
    }
    if (arguments.stop) {
        Print("Advertisement for \"" + arguments.service +
              "\" stopped: its interval is set to 0"
              " (for a moment it was 300, as only what was begun can be ended).\n");
    } else {
        Print("Advertisement for \"" + arguments.service + "\" requested: its interval is set to " +
              std::to_string(IntervalNumber(*arguments.interval)) +
              ".\nOn a TV this stays so after lynctl has ended; \"lynctl advertise " + arguments.service +
              " --stop\" ends it.\n");
    }
    return kExitSuccess;
}

}  // namespace lynctl
