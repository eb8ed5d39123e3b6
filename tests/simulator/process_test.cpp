// SPDX-License-Identifier: Apache-2.0
//
// What happens when a process starts and ends.
#include <stdio.h>
#include <sys/wait.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

/// What simulator_process prints on both outputs, started with this environment.
std::string Output(const std::string& environment)
{
    const std::string command = "env -u LYN_LOG_LEVEL -u LYN_SIMULATOR_SCENARIO " + environment + " " +
                                std::string(SIMULATOR_PROCESS) + " 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string output;
    std::array<char, 256> part{};
    while (pipe != nullptr && std::fgets(part.data(), part.size(), pipe) != nullptr) {
        output += part.data();
    }
    EXPECT_EQ(pipe != nullptr ? ::pclose(pipe) : -1, 0) << output;
    return output;
}

/// The rest of the line of the output that begins with a word.
std::string Line(const std::string& output, const std::string& word)
{
    const std::string text = "\n" + output;
    const std::size_t begin = text.find("\n" + word + " ");
    if (begin == std::string::npos) {
        return "(no line)";
    }
    const std::size_t value = begin + word.size() + 2;
    return text.substr(value, text.find('\n', value) - value);
}

TEST(Process, StartsInTheLivingRoom)
{
    const std::string output = Output("");
    EXPECT_EQ(Line(output, "check"), "0");
    EXPECT_EQ(Line(output, "error"), "");
    EXPECT_EQ(Line(output, "init"), "0");
    EXPECT_EQ(Line(output, "phones"), "13");
    EXPECT_EQ(Line(output, "exists"), "1");
}

TEST(Process, StartsWithTheScenarioItIsGiven)
{
    const std::string output =
        Output("LYN_SIMULATOR_SCENARIO=" + std::string(SIMULATOR_SCENARIOS) + "/coming_and_going.json");
    EXPECT_EQ(Line(output, "check"), "0");
    EXPECT_EQ(Line(output, "phones"), "2");
}

TEST(Process, SaysOnceWhyItsScenarioIsBadAndHasAnEmptyRoom)
{
    const std::string output = Output("LYN_SIMULATOR_SCENARIO=/no/such/room.json");
    EXPECT_EQ(output.find("/no/such/room.json: cannot be read\n"), 0U) << output;
    EXPECT_EQ(Line(output, "check"), "1");
    EXPECT_EQ(Line(output, "error"), "/no/such/room.json: cannot be read");
    EXPECT_EQ(Line(output, "brief"), "/no/");
    EXPECT_EQ(Line(output, "init"), "1");
    EXPECT_EQ(Line(output, "phones"), "0");
    EXPECT_EQ(Line(output, "late init"), "1");
    EXPECT_EQ(output.find("cannot be read", output.find("\nbrief")), std::string::npos) << "said again";
}

TEST(Process, KeepsNoJournalUnlessAsked)
{
    EXPECT_EQ(Line(Output(""), "journal"), "0");
}

TEST(Process, MayUseThePlatformWhileItEnds)
{
    EXPECT_EQ(Line(Output(""), "late init"), "0");
}

TEST(Process, LeavesNoFilesBehind)
{
    std::string folder = (std::filesystem::temp_directory_path() / "lyn-test-XXXXXX").string();
    ASSERT_NE(::mkdtemp(folder.data()), nullptr);
    const std::string output = Output("TMPDIR=" + folder);
    EXPECT_EQ(Line(output, "file").find(folder), 0U) << output;
    EXPECT_EQ(Line(output, "exists"), "1");
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    std::filesystem::remove_all(folder);
}

TEST(Process, HasNoPlaceForFilesWhereNoneCanBeMade)
{
    EXPECT_NE(Line(Output("TMPDIR=/no/such/folder"), "path"), "0");
}

TEST(Process, ShowsTheLogAsTheEnvironmentSays)
{
    const std::string quiet = Output("");
    EXPECT_EQ(quiet.find("line"), std::string::npos) << quiet;
    EXPECT_EQ(Output("LYN_LOG_LEVEL=none").find("line"), std::string::npos);
    const std::string errors = Output("LYN_LOG_LEVEL=error");
    EXPECT_EQ(errors.find("a debug line"), std::string::npos);
    EXPECT_NE(errors.find(" E/TAG: an error line\n"), std::string::npos) << errors;
    const std::string all = Output("LYN_LOG_LEVEL=debug");
    EXPECT_NE(all.find(" D/TAG: a debug line\n"), std::string::npos) << all;
    EXPECT_NE(all.find(" I/TAG: late\n"), std::string::npos) << all;
    EXPECT_EQ(all.find('\033'), std::string::npos) << "colours are for terminals";
}

TEST(Process, WritesOutInTheShownLogWhatCouldSteerATerminal)
{
    const std::string output = Output("LYN_LOG_LEVEL=error");
    const std::string shown =
        " E/TAG: hostile \\x1b[2J\\x0d\\x0a\\x7f\\xc2\\x9b\\x9b Zo\xc3\xab \\xe2\\x80\\xae.\n";
    EXPECT_NE(output.find(shown), std::string::npos) << output;
}

}  // namespace
}  // namespace lyn::simulator::test
