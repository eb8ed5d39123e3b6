// SPDX-License-Identifier: Apache-2.0
#include "arguments.h"

#include <algorithm>
#include <cctype>

#include "failure.h"
#include "text.h"

namespace lynphone {

namespace {

constexpr const char* kHelp = R"(lyn-phone - a phone for a real Bluetooth adapter

Usage: lyn-phone [--adapter hciN] --scenario FILE [--phone ADDRESS|NAME] [--json]
       lyn-phone [--adapter hciN] --feature mirroring|nodlink|kov [--name NAME] [--id ID] [--answer TEXT]...
                 [--json]

Advertises what the phone advertises, packet and scan response, serves its GATT services through bluetoothd,
and answers as its script says, until Ctrl-C or SIGTERM. Needs CAP_NET_ADMIN to advertise.

  --adapter hciN    the adapter (default: hci0); it is turned on
  --scenario FILE   a scenario as the simulator reads it
  --phone WHICH     its phone with this address or name (needed unless it has only one)
  --feature WHICH   a phone of this feature, without a scenario
  --name NAME       what it is called (default: Phone; nodlink phones have no name)
  --id ID           its unique id of 22 bytes (nodlink phones have none)
  --answer TEXT     what it answers; the second one answers the second message, and so on, and the last one
                    all that follow. Without any the phone is silent
  --json            one JSON object a line for what happens
  -h, --help        this text
  --version         the version

Status: 0 ended by a signal, 1 something failed, 2 bad arguments or a bad scenario.
)";

[[noreturn]] void Reject(const std::string& text)
{
    throw lynctl::Failure(lynctl::kExitUsage, text);
}

std::string Quoted(const std::string& word)
{
    return "'" + lynctl::Fit(lynctl::Printable(word, false), 60, false) + "'";
}

/// The member that an option sets, or null.
std::string* Target(Arguments& arguments, const std::string& option)
{
    const struct {
        const char* name;
        std::string* target;
    } options[] = {
        {"--adapter", &arguments.adapter}, {"--scenario", &arguments.scenario}, {"--phone", &arguments.phone},
        {"--feature", &arguments.feature}, {"--name", &arguments.name},         {"--id", &arguments.uniqueId},
    };
    for (const auto& known : options) {
        if (option == known.name) {
            return known.target;
        }
    }
    return option == "--answer" ? &arguments.answers.emplace_back() : nullptr;
}

bool SetFlag(Arguments& arguments, const std::string& word)
{
    if (word == "--help" || word == "-h") {
        arguments.help = true;
    } else if (word == "--version") {
        arguments.version = true;
    } else if (word == "--json") {
        arguments.json = true;
    } else {
        return false;
    }
    return true;
}

void Check(const Arguments& arguments)
{
    const std::string& adapter = arguments.adapter;
    const bool isAdapter =
        adapter.size() > 3 && adapter.size() < 8 && adapter.compare(0, 3, "hci") == 0 &&
        std::all_of(adapter.begin() + 3, adapter.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
    if (!isAdapter) {
        Reject("bad --adapter " + Quoted(adapter) + ": hci and a number, such as hci1");
    }
    if (arguments.scenario.empty() == arguments.feature.empty()) {
        Reject("either --scenario or --feature is needed; try 'lyn-phone --help'");
    }
    if (!arguments.phone.empty() && arguments.scenario.empty()) {
        Reject("--phone is for --scenario only");
    }
    if (!arguments.answers.empty() && !arguments.scenario.empty()) {
        Reject("--answer is for --feature only");
    }
}

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words)
{
    Arguments arguments;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (SetFlag(arguments, words[i])) {
            continue;
        }
        const std::size_t equals = words[i].find('=');
        const std::string option = words[i].substr(0, equals);
        std::string* const target = Target(arguments, option);
        if (target == nullptr) {
            Reject("unknown argument " + Quoted(words[i]) + "; try 'lyn-phone --help'");
        }
        if (equals == std::string::npos && i + 1 == words.size()) {
            Reject("option '" + option + "' needs a value");
        }
        *target = equals != std::string::npos ? words[i].substr(equals + 1) : words[++i];
    }
    if (!arguments.help && !arguments.version) {
        Check(arguments);
    }
    return arguments;
}

const char* HelpText()
{
    return kHelp;
}

}  // namespace lynphone
