// SPDX-License-Identifier: Apache-2.0
#include "chosen_phone.h"

#include "failure.h"

namespace lynphone {
namespace {

using lyn::simulator::Phone;

std::string Rejection(const Arguments& arguments)
{
    try {
        ChoosePhone(arguments);
    } catch (const lynctl::Failure& failure) {
        EXPECT_EQ(failure.Status(), lynctl::kExitUsage);
        return failure.what();
    }
    return "accepted";
}

Arguments InLivingRoom(const std::string& phone)
{
    Arguments arguments;
    arguments.scenario = LIVING_ROOM;
    arguments.phone = phone;
    return arguments;
}

TEST(ChosenPhone, IsFoundByItsAddressInEitherCase)
{
    EXPECT_EQ(ChoosePhone(InLivingRoom("A0:00:00:00:00:05")).address, "A0:00:00:00:00:05");
    EXPECT_EQ(ChoosePhone(InLivingRoom("a0:00:00:00:00:05")).address, "A0:00:00:00:00:05");
}

TEST(ChosenPhone, IsFoundByItsName)
{
    EXPECT_EQ(ChoosePhone(InLivingRoom("Kitchen phone")).address, "A0:00:00:00:00:01");
}

TEST(ChosenPhone, MustBeThere)
{
    EXPECT_EQ(Rejection(InLivingRoom("Nobody")), LIVING_ROOM " has no phone 'Nobody'");
    EXPECT_EQ(Rejection(InLivingRoom("A0:00:00:00:00:99")), LIVING_ROOM " has no phone 'A0:00:00:00:00:99'");
    EXPECT_NE(Rejection(InLivingRoom("")).find("--phone is needed"), std::string::npos);
    Arguments nowhere;
    nowhere.scenario = "/nowhere.json";
    EXPECT_EQ(Rejection(nowhere), "/nowhere.json: cannot be read");
}

TEST(ChosenPhone, OfAFeatureHasItsBytesItsServiceAndTheAnswers)
{
    Arguments arguments;
    arguments.feature = "mirroring";
    arguments.name = "Hall";
    arguments.uniqueId = "abcdefghijklmnopqrstuv";
    arguments.answers = {"first", "second"};
    const Phone made = ChoosePhone(arguments);
    const Phone wanted = [] {
        Phone phone;
        phone.advertising = {2, 1, 6, 27, 0xFF, 0x75, 0, 1, 25};
        for (char c = 'a'; c <= 'v'; ++c) {
            phone.advertising.push_back(static_cast<std::uint8_t>(c));
        }
        return phone;
    }();
    EXPECT_EQ(made.advertising, wanted.advertising);
    EXPECT_EQ(made.scanResponse, (lyn::simulator::Bytes{9, 0xFF, 0x75, 0, 1, 25, 'H', 'a', 'l', 'l'}));
    ASSERT_EQ(made.services.size(), 1U);
    EXPECT_EQ(made.services[0].uuid, "f7608236-13bd-4a99-bbcd-9426bccb6c24");
    ASSERT_EQ(made.services[0].characteristics[0].answers.size(), 2U);
    EXPECT_EQ(made.services[0].characteristics[0].answers[1].text, "second");
}

TEST(ChosenPhone, OfAFeatureThatDoesNotExistIsRefused)
{
    Arguments arguments;
    arguments.feature = "music";
    EXPECT_EQ(Rejection(arguments), "unknown feature 'music': mirroring, nodlink or kov");
    arguments.feature = "kov";
    arguments.uniqueId = "short";
    EXPECT_EQ(Rejection(arguments), "--id must have 22 bytes");
}

TEST(ChosenPhone, SaysWhatAnAdapterCannotDo)
{
    Phone phone;
    EXPECT_TRUE(LeftOut(phone).empty());
    phone.connects = {{133, 0}};
    phone.maxMtu = 100;
    phone.leavesAtMs = 5;
    EXPECT_EQ(LeftOut(phone).size(), 3U);
}

}  // namespace
}  // namespace lynphone
