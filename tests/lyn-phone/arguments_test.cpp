// SPDX-License-Identifier: Apache-2.0
#include "arguments.h"

#include "failure.h"

namespace lynphone {
namespace {

std::string Rejection(const std::vector<std::string>& words)
{
    try {
        ParseArguments(words);
    } catch (const lynctl::Failure& failure) {
        EXPECT_EQ(failure.Status(), lynctl::kExitUsage);
        return failure.what();
    }
    return "accepted";
}

TEST(PhoneArguments, AFeatureWithAllItsOptions)
{
    const Arguments arguments = ParseArguments(
        {"--adapter=hci1", "--feature", "kov", "--name", "Hall", "--answer", "one", "--answer=two", "--json"});
    EXPECT_EQ(arguments.adapter, "hci1");
    EXPECT_EQ(arguments.feature, "kov");
    EXPECT_EQ(arguments.name, "Hall");
    EXPECT_EQ(arguments.answers, (std::vector<std::string>{"one", "two"}));
    EXPECT_TRUE(arguments.json);
}

TEST(PhoneArguments, AnAnswerMayHoldAnEqualsSignAndBeginWithADash)
{
    EXPECT_EQ(ParseArguments({"--feature", "kov", "--answer=a=b"}).answers, std::vector<std::string>{"a=b"});
    EXPECT_EQ(ParseArguments({"--feature", "kov", "--answer", "--x"}).answers, std::vector<std::string>{"--x"});
}

TEST(PhoneArguments, HelpNeedsNothingElse)
{
    EXPECT_TRUE(ParseArguments({"--help"}).help);
    EXPECT_TRUE(ParseArguments({"--version"}).version);
}

TEST(PhoneArguments, WhatIsWrongIsSaid)
{
    EXPECT_EQ(Rejection({}), "either --scenario or --feature is needed; try 'lyn-phone --help'");
    EXPECT_EQ(Rejection({"--feature", "kov", "--scenario", "x"}),
              "either --scenario or --feature is needed; try 'lyn-phone --help'");
    EXPECT_EQ(Rejection({"--feature", "kov", "--phone", "x"}), "--phone is for --scenario only");
    EXPECT_EQ(Rejection({"--scenario", "x", "--answer", "x"}), "--answer is for --feature only");
    EXPECT_EQ(Rejection({"--feature"}), "option '--feature' needs a value");
    EXPECT_EQ(Rejection({"--what"}), "unknown argument '--what'; try 'lyn-phone --help'");
    for (const char* adapter : {"", "hci", "hcix", "hci1x", "eth0", "hci12345"}) {
        EXPECT_EQ(Rejection({"--feature", "kov", "--adapter", adapter}),
                  std::string("bad --adapter '") + adapter + "': hci and a number, such as hci1");
    }
}

}  // namespace
}  // namespace lynphone
