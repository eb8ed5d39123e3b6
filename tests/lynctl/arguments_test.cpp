// SPDX-License-Identifier: Apache-2.0
#include "arguments.h"

#include <gtest/gtest.h>

#include "failure.h"

namespace lynctl {
namespace {

/// What is wrong with the words, or "" when they are accepted.
std::string Complaint(const std::vector<std::string>& words)
{
    try {
        ParseArguments(words);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Status(), kExitUsage);
        return failure.what();
    }
    return "";
}

TEST(Arguments, AScanHasDefaults)
{
    const Arguments arguments = ParseArguments({"scan", "mirroring"});
    EXPECT_EQ(arguments.command, Command::scan);
    EXPECT_EQ(arguments.service, "mirroring");
    EXPECT_EQ(arguments.seconds, 10);
    EXPECT_EQ(arguments.platform, "");
    EXPECT_FALSE(arguments.json);
    EXPECT_FALSE(arguments.verbose);
    EXPECT_FALSE(arguments.extra);
}

TEST(Arguments, EventsFollowWithoutEndByDefault)
{
    EXPECT_EQ(ParseArguments({"events", "nodlink"}).seconds, 0);
}

TEST(Arguments, OptionsStandAnywhereAndTakeTheirValueEitherWay)
{
    const Arguments arguments =
        ParseArguments({"--platform", "linux", "scan", "--seconds=3", "kov", "--json", "--verbose"});
    EXPECT_EQ(arguments.platform, "linux");
    EXPECT_EQ(arguments.seconds, 3);
    EXPECT_EQ(arguments.service, "kov");
    EXPECT_TRUE(arguments.json);
    EXPECT_TRUE(arguments.verbose);
}

TEST(Arguments, TheLastOfARepeatedOptionCounts)
{
    EXPECT_EQ(ParseArguments({"scan", "dummy", "--seconds", "3", "--seconds", "4"}).seconds, 4);
}

TEST(Arguments, AnAddressIsTakenInEitherCase)
{
    EXPECT_EQ(ParseArguments({"request", "mirroring", "aa:bb:cc:0d:ee:f1"}).address, "AA:BB:CC:0D:EE:F1");
}

TEST(Arguments, ExtraDataIsHandedOnAsWritten)
{
    const std::string extra = R"({ "appid" : "music" })";
    EXPECT_EQ(ParseArguments({"request", "mirroring", "AA:BB:CC:DD:EE:01", "--extra", extra}).extra, extra);
}

TEST(Arguments, AnEmptyObjectIsExtraDataToo)
{
    EXPECT_EQ(ParseArguments({"request", "mirroring", "AA:BB:CC:DD:EE:01", "--extra={}"}).extra, "{}");
}

TEST(Arguments, EveryIntervalHasItsValue)
{
    EXPECT_EQ(ParseArguments({"advertise", "kov", "--interval", "50"}).interval, LYN_ADV_INTERVAL_50);
    EXPECT_EQ(ParseArguments({"advertise", "kov", "--interval", "100"}).interval, LYN_ADV_INTERVAL_100);
    EXPECT_EQ(ParseArguments({"advertise", "kov", "--interval", "150"}).interval, LYN_ADV_INTERVAL_150);
    EXPECT_EQ(ParseArguments({"advertise", "kov", "--interval", "200"}).interval, LYN_ADV_INTERVAL_200);
    EXPECT_EQ(ParseArguments({"advertise", "kov", "--interval", "300"}).interval, LYN_ADV_INTERVAL_300);
}

TEST(Arguments, HelpWinsOverEverythingThatIsMissing)
{
    EXPECT_EQ(ParseArguments({"--help"}).helpTopic, std::nullopt);
    EXPECT_EQ(ParseArguments({"request", "--help"}).helpTopic, Command::request);
    EXPECT_EQ(ParseArguments({"-h", "scan", "--version"}).helpTopic, Command::scan);
    EXPECT_EQ(ParseArguments({"--version"}).command, Command::version);
}

struct Refused {
    std::vector<std::string> words;
    const char* complaint;
};

void ExpectRefused(const std::vector<Refused>& all)
{
    for (const Refused& refused : all) {
        EXPECT_EQ(Complaint(refused.words), refused.complaint);
    }
}

const char* const kPhone = "AA:BB:CC:DD:EE:01";

TEST(Arguments, UnknownAndMissingWordsAreTold)
{
    ExpectRefused({
        Refused{{}, "no command; try 'lynctl --help'"},
        Refused{{"find", "kov"}, "unknown command 'find'; try 'lynctl --help'"},
        Refused{{"scan", "kov", "--fast"}, "unknown option '--fast'; try 'lynctl --help'"},
        Refused{{"scan", "kov", "-s"}, "unknown option '-s'; try 'lynctl --help'"},
        Refused{{"scan", "kov", "--seconds"}, "option '--seconds' needs a value"},
        Refused{{"scan", "kov", "--json=yes"}, "option '--json' takes no value"},
        Refused{{"scan", "kov", "--stop"}, "option '--stop' is not for 'scan'"},
        Refused{{"advertise", "kov", "--json"}, "option '--json' is not for 'advertise'"},
        Refused{{"request", "kov", kPhone, "--seconds", "1"}, "option '--seconds' is not for 'request'"},
        Refused{{"scan"}, "'scan' needs a service: mirroring, nodlink, kov or dummy"},
        Refused{{"scan", "Kov"}, "unknown service 'Kov': mirroring, nodlink, kov or dummy"},
        Refused{{"scan", "kov", "more"}, "unexpected argument 'more'"},
        Refused{{"request", "kov"}, "'request' needs the address of a phone"},
        Refused{{"request", "kov", kPhone, "more"}, "unexpected argument 'more'"},
    });
}

TEST(Arguments, BadValuesAreTold)
{
    ExpectRefused({
        Refused{{"scan", "kov", "--seconds", "-1"}, "bad --seconds '-1': a whole number from 0 to 86400"},
        Refused{{"scan", "kov", "--seconds", "86401"}, "bad --seconds '86401': a whole number from 0 to 86400"},
        Refused{{"scan", "kov", "--seconds", "99999999999"},
                "bad --seconds '99999999999': a whole number from 0 to 86400"},
        Refused{{"scan", "kov", "--seconds", "2s"}, "bad --seconds '2s': a whole number from 0 to 86400"},
        Refused{{"scan", "kov", "--seconds="}, "bad --seconds '': a whole number from 0 to 86400"},
        Refused{{"request", "kov", "AA:BB:CC:DD:EE"},
                "bad address 'AA:BB:CC:DD:EE': six hexadecimal pairs such as AA:BB:CC:DD:EE:01"},
        Refused{{"request", "kov", "AA:BB:CC:DD:EE:0G"},
                "bad address 'AA:BB:CC:DD:EE:0G': six hexadecimal pairs such as AA:BB:CC:DD:EE:01"},
        Refused{{"request", "kov", "AA-BB-CC-DD-EE-01"},
                "bad address 'AA-BB-CC-DD-EE-01': six hexadecimal pairs such as AA:BB:CC:DD:EE:01"},
        Refused{{"request", "mirroring", kPhone, "--extra", "[1]"}, "bad --extra '[1]': not a JSON object"},
        Refused{{"request", "mirroring", kPhone, "--extra", "{} x"}, "bad --extra '{} x': not a JSON object"},
        Refused{{"request", "mirroring", kPhone, "--extra="}, "bad --extra '': not a JSON object"},
        Refused{{"request", "mirroring", kPhone, "--extra", "\x1b[2J"},
                "bad --extra '\\x1b[2J': not a JSON object"},
        Refused{{"request", "nodlink", kPhone, "--nodlink-version", "4.0"},
                "bad --nodlink-version '4.0': 2.0 or 3.0"},
        Refused{{"advertise", "kov", "--interval", "99"}, "bad --interval '99': 50, 100, 150, 200 or 300"},
        Refused{{"scan", "kov", "--platform", "../x"}, "bad --platform '../x': a name such as simulator or linux"},
        Refused{{"scan", "kov", "--scenario="}, "bad --scenario '': the name of a file"},
        Refused{{"scan", "kov", "--lib-dir="}, "bad --lib-dir '': the name of a folder"},
    });
}

TEST(Arguments, WhatDoesNotGoTogetherIsTold)
{
    ExpectRefused({
        Refused{{"request", "kov", kPhone, "--extra", "{}"}, "--extra is for 'mirroring' only"},
        Refused{{"request", "kov", kPhone, "--nodlink-version", "3.0"}, "--nodlink-version is for 'nodlink' only"},
        Refused{{"advertise", "kov"}, "'advertise' needs --interval or --stop"},
        Refused{{"advertise", "kov", "--interval", "50", "--stop"}, "--interval and --stop exclude each other"},
        Refused{{"scan", "kov", "--platform", "linux", "--scenario", "x.json"},
                "--scenario is for the platform 'simulator' only"},
    });
}

TEST(Arguments, DeeplyNestedExtraDataIsRefusedNotACrash)
{
    const std::string deep = "{\"a\":" + std::string(5000, '[') + std::string(5000, ']') + "}";
    const std::string complaint = Complaint({"request", "mirroring", kPhone, "--extra", deep});
    EXPECT_EQ(complaint.substr(0, 20), "bad --extra '{\"a\":[[");
    EXPECT_NE(complaint.find("': not a JSON object"), std::string::npos);
    EXPECT_LT(complaint.size(), 120U);
}

}  // namespace
}  // namespace lynctl
