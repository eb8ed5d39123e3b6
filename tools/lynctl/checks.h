// SPDX-License-Identifier: Apache-2.0
//
// What the platform "linux" needs of this machine, one thing at a time.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace lynctl {

enum class Level {
    good,
    note,     ///< works, with less than it could
    problem,  ///< scans or requests fail
};

struct Check {
    std::string name;
    Level level;
    std::string found;  ///< what is so
    std::string mend;   ///< a command, or what to do; empty when nothing is to do
};

/// Files and folders of the system that are looked at.
struct Places {
    std::filesystem::path mainConf = "/etc/bluetooth/main.conf";
    std::filesystem::path switches = "/sys/class/rfkill";
    std::filesystem::path process = "/proc/self/status";
};

/// Makes all checks. Changes nothing. Takes some seconds when other programs do not answer.
std::vector<Check> CheckMachine(const Places& places = {});

/// The MTU that a main.conf of bluetoothd asks for; 0 when it asks for none.
int ExchangeMtuIn(const std::string& mainConf);

}  // namespace lynctl
