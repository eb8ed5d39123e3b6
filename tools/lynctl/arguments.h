// SPDX-License-Identifier: Apache-2.0
//
// What the command line asks for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "lyn_service.h"

namespace lynctl {

enum class Command { help, version, scan, request, advertise, events, settings, doctor };

enum class SettingsAction { get, set, watch };

struct Arguments {
    Command command = Command::help;
    std::optional<Command> helpTopic;  ///< --help beside a command
    std::string service;
    std::string address;               ///< upper case
    std::optional<std::string> extra;  ///< text of a JSON object
    std::string nodlinkVersion;        ///< empty: not set
    std::optional<lyn_adv_interval_e> interval;
    bool stop = false;
    SettingsAction settingsAction = SettingsAction::get;
    std::string key;    ///< of a setting
    std::string value;  ///< of a setting, to be set
    bool text = false;  ///< the value is a text, also when it looks like a number
    int seconds = 10;   ///< 0: until a signal
    bool json = false;
    bool verbose = false;
    std::string platform;  ///< empty: the default one
    std::string scenario;
    std::string libraryFolder;
};

/// Reads the words behind the program's name. Throws Failure (kExitUsage) with one line that says what is
/// wrong.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace lynctl
