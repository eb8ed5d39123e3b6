// SPDX-License-Identifier: Apache-2.0
#include "answers.h"

namespace lynphone {
namespace {

using lyn::simulator::Answer;

TEST(PhoneAnswers, WithoutAnyThePhoneIsSilent)
{
    Answers answers({}, false);
    EXPECT_EQ(answers.Next(1).kind, Answer::Kind::silent);
}

TEST(PhoneAnswers, ComeInOrderAndTheLastOneAgainAndAgain)
{
    Answers answers({Answer{.text = "one"}, Answer{.text = "two"}}, false);
    EXPECT_EQ(answers.Next(1).text, "one");
    EXPECT_EQ(answers.Next(1).text, "two");
    EXPECT_EQ(answers.Next(2).text, "two");
    EXPECT_EQ(answers.Next(3).text, "two");
}

TEST(PhoneAnswers, BeginAnewOnEachLinkWhenTheScriptSaysSo)
{
    Answers answers({Answer{.text = "one"}, Answer{.text = "two"}}, true);
    EXPECT_EQ(answers.Next(1).text, "one");
    EXPECT_EQ(answers.Next(1).text, "two");
    EXPECT_EQ(answers.Next(2).text, "one");
}

}  // namespace
}  // namespace lynphone
