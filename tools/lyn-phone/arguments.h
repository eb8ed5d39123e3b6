// SPDX-License-Identifier: Apache-2.0
//
// What the command line asks for.
#pragma once

#include <string>
#include <vector>

namespace lynphone {

struct Arguments {
    bool help = false;
    bool version = false;
    bool json = false;
    std::string adapter = "hci0";
    std::string scenario;  ///< a file; empty: a phone made of the members below
    std::string phone;     ///< which one of the scenario: its address or its name; empty: the only one
    std::string feature;   ///< mirroring, nodlink or kov
    std::string name = "Phone";
    std::string uniqueId = "lyn-phone-000000000001";
    std::vector<std::string> answers;
};

/// Reads the words behind the program's name. Throws lynctl::Failure (kExitUsage).
Arguments ParseArguments(const std::vector<std::string>& words);

const char* HelpText();

}  // namespace lynphone
