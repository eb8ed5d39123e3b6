// SPDX-License-Identifier: Apache-2.0
//
// The library's log, as captured by the simulator, without the "file: function(line) > " in front.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "lyn_simulator/simulator.h"

namespace lyn::test {

enum Priority : int { DEBUG = 3, INFO = 4, WARN = 5, ERROR = 6 };

struct Line {
    int priority = 0;
    std::string file;
    std::string function;
    std::string message;
    int number = 0;  ///< of the source line
};

/// What stands in front of the message: "file: function(line) > "; all is message where it does not.
Line Parse(const simulator::LogLine& line);

/// All lines of the library so far, oldest first.
std::vector<Line> LogLines();
/// The messages of one priority.
std::vector<std::string> Messages(Priority priority);
/// The functions that have said something with this text in it.
std::set<std::string> FunctionsThatSay(const std::string& text);
/// How many lines of this priority carry exactly this message.
int CountLog(Priority priority, const std::string& message);
/// True when a line of this priority carries exactly this message.
bool HasLog(Priority priority, const std::string& message);
/// True when a line of this priority carries a message that contains the text.
bool HasLogWith(Priority priority, const std::string& text);

}  // namespace lyn::test
