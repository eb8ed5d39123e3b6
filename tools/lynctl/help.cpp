// SPDX-License-Identifier: Apache-2.0
#include "help.h"

namespace lynctl {

namespace {

constexpr const char* kOverview = R"(lynctl - find phones that ask the TV for a session, and ask them

Usage: lynctl COMMAND [ARGUMENT...] [OPTION...]

Commands ('lynctl COMMAND --help' tells more):
  scan SERVICE               show the phones that ask for a service
  request SERVICE ADDRESS    ask a phone to start its session
  advertise SERVICE          let the TV advertise itself, or stop that
  events SERVICE             follow the state of a service
  settings get|set|watch KEY read, change and follow the settings of a Linux machine
  doctor                     check whether a Linux machine has what the library needs

Services: mirroring, nodlink, kov, dummy (a fixed phone that always agrees)
)";

constexpr const char* kCommonOptions = R"(
Options of every command that has a service:
  --platform NAME    the platform to run on (default: simulator)
  --scenario FILE    what the simulated TV and its phones are and do
  --lib-dir FOLDER   where liblyn_service.so.0 and the folder "lyn" of platforms are
  --verbose          the library's log too

Options of every command:
  -h, --help         this text
  --version          the version
)";

constexpr const char* kScan = R"(Usage: lynctl scan SERVICE [--seconds N] [--json]

Shows the phones that ask for a service: a table on a terminal, a line for each news elsewhere, and a
summary at the end.

  --seconds N   how long (default 10; 0: until Ctrl-C)
  --json        one JSON object a line: "state", "found" for each advertisement, "summary"

Status: 0 when the scan ran, also when Ctrl-C ended it.
)";

constexpr const char* kRequest =
    R"(Usage: lynctl request SERVICE ADDRESS [--extra JSON] [--nodlink-version V] [--json]

Asks a phone to start its session and shows each state, what goes over the air (where the platform lets
us listen) and the result.

  --extra JSON          an object; its members are added to the message (mirroring only)
  --nodlink-version V   2.0 or 3.0 (nodlink only)
  --json                one JSON object a line: "state", "connected", "written", "answered",
                        "disconnected", "connect_failed", "result"

Status: 0 Success, 11 GattFail, 12 NotRegisteredDevice, 13 UnknownErr, 14 CommandErr, 15 NotSupported,
16 Connected, 18 NotTap, 19 NotStartedKov, 20 NotStartedMirroring, 21 GattDisconnected; 130 when Ctrl-C
came before the result, 143 when SIGTERM did.
)";

constexpr const char* kAdvertise = R"(Usage: lynctl advertise SERVICE --interval 50|100|150|200|300
       lynctl advertise SERVICE --stop

Tells the TV's advertising application how often to advertise the TV for mirroring or kov, or to stop. The
setting stays after lynctl has ended. nodlink and dummy do not advertise.
)";

constexpr const char* kEvents = R"(Usage: lynctl events SERVICE [--seconds N] [--json]

Shows each change of a service's state: nodlink is NOT_READY while Bluetooth is off or the TV goes to
sleep. (The other services change their state for scans and requests only.)

  --seconds N   how long (default 0: until Ctrl-C)
  --json        one JSON object a line: "state", "summary"
)";

constexpr const char* kSettings = R"(Usage: lynctl settings get KEY [--json]
       lynctl settings set KEY VALUE [--text]
       lynctl settings watch KEY [--seconds N] [--json]

Reads, changes and follows the settings that the platform "linux" uses. Keys begin with db/ (kept for ever) or
memory/ (until the machine restarts). A value that is a whole number is stored as a number, any other as a text.

  --text        store a text, also when it looks like a number
  --seconds N   how long to watch (default 0: until Ctrl-C)
  --json        one JSON object a line: "setting", and "summary" at the end of watch

Status: 0; 1 when the key holds nothing, or cannot be read or written.
)";

constexpr const char* kDoctor = R"(Usage: lynctl doctor [--json]

Checks what the platform "linux" needs on this machine: bus, bluetoothd, adapter, power, rights, Wi-Fi, settings.
For what is wrong it says the command that mends it. Changes nothing.

  --json        one JSON object a line: "check" for each, and "summary"

Status: 0 when everything that is needed is there; 1 when not.
)";

constexpr const char* kStatus = R"(
Exit status: 0 success, 1 failure, 2 bad arguments or scenario; more under 'lynctl request --help'.
)";

}  // namespace

std::string HelpText(std::optional<Command> topic)
{
    if (!topic) {
        return std::string(kOverview) + kCommonOptions + kStatus;
    }
    const char* text = "";
    switch (*topic) {
    case Command::scan:
        text = kScan;
        break;
    case Command::request:
        text = kRequest;
        break;
    case Command::advertise:
        text = kAdvertise;
        break;
    case Command::events:
        text = kEvents;
        break;
    case Command::settings:
        return kSettings;
    case Command::doctor:
        return kDoctor;
    case Command::help:
    case Command::version:
        break;
    }
    return std::string(text) + kCommonOptions;
}

}  // namespace lynctl
