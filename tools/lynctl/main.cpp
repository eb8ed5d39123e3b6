// SPDX-License-Identifier: Apache-2.0
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "arguments.h"
#include "commands.h"
#include "failure.h"
#include "help.h"
#include "library.h"
#include "lyn_simulator/air.h"
#include "terminal.h"
#include "text.h"

namespace lynctl {

namespace {

int Complain(const char* text, int status)
{
    std::fflush(stdout);
    std::fprintf(stderr, "lynctl: %s\n", Printable(text, false).c_str());
    return status;
}

/// The platform and the library read these when they are loaded.
void PrepareEnvironment(const Arguments& arguments)
{
    if (!arguments.scenario.empty()) {
        setenv("LYN_SIMULATOR_SCENARIO", arguments.scenario.c_str(), 1);
    }
    if (arguments.verbose) {
        setenv("LYN_LOG_LEVEL", "debug", 1);
    }
}

/// False when the simulator could not use its scenario; it has told why in one line on standard error.
bool ScenarioIsUsable(const Library& library)
{
    const auto check = library.PlatformFunction<decltype(&lyn_simulator_check)>("lyn_simulator_check");
    return !check || check(nullptr, 0) == 0;
}

int RunCommand(const Arguments& arguments)
{
    PrepareEnvironment(arguments);
    const Library library(arguments.libraryFolder, arguments.platform);
    if (!ScenarioIsUsable(library)) {
        return kExitUsage;
    }
    switch (arguments.command) {
    case Command::scan:
        return Scan(arguments, library);
    case Command::request:
        return Request(arguments, library);
    case Command::advertise:
        return Advertise(arguments, library);
    case Command::events:
        return FollowEvents(arguments, library);
    default:
        return kExitFailure;
    }
}

int Main(const std::vector<std::string>& words)
{
    const Arguments arguments = ParseArguments(words);
    if (arguments.command == Command::help) {
        Print(HelpText(arguments.helpTopic));
        return kExitSuccess;
    }
    if (arguments.command == Command::version) {
        Print("lynctl " LYN_VERSION "\n");
        return kExitSuccess;
    }
    if (arguments.command == Command::settings) {
        return Settings(arguments);
    }
    if (arguments.command == Command::doctor) {
        return Doctor(arguments);
    }
    return RunCommand(arguments);
}

}  // namespace

}  // namespace lynctl

int main(int argc, char** argv)
{
    std::setlocale(LC_CTYPE, "");
    try {
        return lynctl::Main(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    } catch (const lynctl::Failure& failure) {
        return lynctl::Complain(failure.what(), failure.Status());
    } catch (const std::exception& error) {
        return lynctl::Complain(error.what(), lynctl::kExitFailure);
    }
}
