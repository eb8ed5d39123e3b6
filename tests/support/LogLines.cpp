// SPDX-License-Identifier: Apache-2.0
#include "support/LogLines.h"

#include <algorithm>
#include <cstdlib>

namespace lyn::test {

Line Parse(const simulator::LogLine& line)
{
    const std::size_t colon = line.text.find(": ");
    const std::size_t arrow = line.text.find(") > ", colon);
    const std::size_t bracket = line.text.rfind('(', arrow);  // "operator()" has brackets of its own.
    if (colon == std::string::npos || arrow == std::string::npos || bracket == std::string::npos ||
        bracket < colon) {
        return {line.priority, "", "", line.text, 0};
    }
    return {line.priority, line.text.substr(0, colon), line.text.substr(colon + 2, bracket - colon - 2),
            line.text.substr(arrow + 4), std::atoi(line.text.c_str() + bracket + 1)};
}

std::vector<Line> LogLines()
{
    std::vector<Line> lines;
    for (const simulator::LogLine& line : simulator::Log()) {
        lines.push_back(Parse(line));
    }
    return lines;
}

std::vector<std::string> Messages(Priority priority)
{
    std::vector<std::string> messages;
    for (const Line& line : LogLines()) {
        if (line.priority == priority) {
            messages.push_back(line.message);
        }
    }
    return messages;
}

std::set<std::string> FunctionsThatSay(const std::string& text)
{
    std::set<std::string> functions;
    for (const Line& line : LogLines()) {
        if (line.message.find(text) != line.message.npos) {
            functions.insert(line.function);
        }
    }
    return functions;
}

int CountLog(Priority priority, const std::string& message)
{
    const std::vector<std::string> messages = Messages(priority);
    return static_cast<int>(std::count(messages.begin(), messages.end(), message));
}

bool HasLog(Priority priority, const std::string& message)
{
    return CountLog(priority, message) > 0;
}

bool HasLogWith(Priority priority, const std::string& text)
{
    const std::vector<std::string> messages = Messages(priority);
    return std::any_of(messages.begin(), messages.end(),
                       [&](const std::string& message) { return message.find(text) != std::string::npos; });
}

}  // namespace lyn::test
