// SPDX-License-Identifier: Apache-2.0
#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

using Report = LinkUser::Report;
using Reports = std::vector<Report>;

class Links : public SimulatorTest {
protected:
    Links() { phone = AnsweringPhone({}); }

    void Connect(const char* address = kPhone)
    {
        ASSERT_EQ(bt_gatt_connect(address, false), 0);
        Settle();
    }

    Phone phone;
    LinkUser user;
};

TEST_F(Links, AConnectIsReportedOnceAndNotBeforeTheMainLoopRuns)
{
    AddPhone(phone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    EXPECT_TRUE(user.reports.empty());
    EXPECT_EQ(Alive().links, 1);
    Settle();
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}}));
}

TEST_F(Links, ADisconnectIsReportedOnce)
{
    AddPhone(phone);
    Connect();
    ASSERT_EQ(bt_gatt_disconnect(kPhone), 0);
    EXPECT_NE(bt_gatt_disconnect(kPhone), 0) << "it is on its way down already";
    EXPECT_EQ(user.reports.size(), 1U);
    Settle();
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}, {0, false, kPhone}}));
    EXPECT_EQ(Alive().links, 0);
}

TEST_F(Links, AnUnknownPhoneFailsByReport)
{
    Connect();
    EXPECT_EQ(user.reports, (Reports{{kConnectTimedOut, true, kPhone}}));
    EXPECT_EQ(Alive().links, 0);
}

TEST_F(Links, WhatIsNoAddressIsRefused)
{
    EXPECT_NE(bt_gatt_connect(nullptr, false), 0);
    EXPECT_NE(bt_gatt_connect("", false), 0);
    EXPECT_NE(bt_gatt_connect("AA:BB:CC:DD:EE", false), 0);
    EXPECT_NE(bt_gatt_connect("AA-BB-CC-DD-EE-01", false), 0);
    EXPECT_NE(bt_gatt_connect("GG:BB:CC:DD:EE:01", false), 0);
    EXPECT_NE(bt_gatt_disconnect(nullptr), 0);
    Settle();
    EXPECT_TRUE(user.reports.empty());
}

TEST_F(Links, AnAddressIsTakenInEitherCaseAndReportedAsItWasGiven)
{
    constexpr const char* kMixed = "aA:bB:cc:dd:ee:01";
    AddPhone(phone);
    Connect("aa:bb:cc:dd:ee:01");
    ASSERT_EQ(bt_gatt_disconnect(kPhone), 0);
    ASSERT_EQ(bt_gatt_connect(kMixed, false), 0) << "while the old link goes down";
    Settle();
    EXPECT_EQ(user.reports,
              (Reports{{0, true, "aa:bb:cc:dd:ee:01"}, {0, false, "aa:bb:cc:dd:ee:01"}, {0, true, kMixed}}));
    user.reports.clear();
    user.Register();
    Connect(kPhone);  // The link that is up is taken over.
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}}));
}

TEST_F(Links, AFailedConnectIsReportedWithTheAddressAsItWasGiven)
{
    Connect("aa:bb:cc:dd:ee:01");
    EXPECT_EQ(user.reports, (Reports{{kConnectTimedOut, true, "aa:bb:cc:dd:ee:01"}}));
}

TEST_F(Links, ConnectsEndAsScriptedAndTheLastOutcomeStays)
{
    phone.connects = {{133, 0}, {0, 1}, {8, 0}};
    AddPhone(phone);
    Connect();
    Connect();
    bt_gatt_disconnect(kPhone);
    Settle();
    Connect();
    Connect();
    EXPECT_EQ(
        user.reports,
        (Reports{
            {133, true, kPhone}, {0, true, kPhone}, {0, false, kPhone}, {8, true, kPhone}, {8, true, kPhone}}));
}

TEST_F(Links, TheCodeOfALinkThatIsThereAlreadyCountsAsUp)
{
    phone.connects = {{static_cast<int>(0xFE400103), 0}};
    AddPhone(phone);
    Connect();
    EXPECT_EQ(bt_gatt_disconnect(kPhone), 0);
}

TEST_F(Links, AConnectThatWouldNeverEndIsEnded)
{
    phone.connects = {{0, 3'600'000}};
    AddPhone(phone);
    SetConnectDeadline(5);
    Connect();
    EXPECT_EQ(user.reports, (Reports{{kConnectTimedOut, true, kPhone}}));
}

TEST_F(Links, AConnectMayWaitForAPhoneThatComesLater)
{
    ASSERT_EQ(bt_gatt_connect(kPhone, true), 0);
    AddPhone(phone);
    Settle();
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}}));
}

TEST_F(Links, AConnectDoesNotWaitForeverForAPhone)
{
    SetConnectDeadline(5);
    ASSERT_EQ(bt_gatt_connect(kPhone, true), 0);
    Settle();
    EXPECT_EQ(user.reports, (Reports{{kConnectTimedOut, true, kPhone}}));
}

TEST_F(Links, ARetryFromInsideTheReportIsAccepted)
{
    phone.connects = {{133, 0}, {133, 0}, {0, 0}};
    AddPhone(phone);
    user.onReport = [](const Report& report) {
        if (report.result != 0) {
            EXPECT_EQ(bt_gatt_connect(kPhone, false), 0);
        }
    };
    Connect();
    EXPECT_EQ(user.reports, (Reports{{133, true, kPhone}, {133, true, kPhone}, {0, true, kPhone}}));
}

TEST_F(Links, ASecondConnectOfTheSameUserIsRefused)
{
    AddPhone(phone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    EXPECT_NE(bt_gatt_connect(kPhone, false), 0) << "on its way";
    Settle();
    EXPECT_NE(bt_gatt_connect(kPhone, false), 0) << "up";
    Settle();
    EXPECT_EQ(user.reports.size(), 1U);
}

TEST_F(Links, AConnectWhileTheOldLinkGoesDownBeginsWhenItIsDown)
{
    phone.disconnectDelayMs = 5;
    AddPhone(phone);
    Connect();
    bt_gatt_disconnect(kPhone);
    EXPECT_EQ(bt_gatt_connect(kPhone, false), 0);
    EXPECT_NE(bt_gatt_connect(kPhone, false), 0) << "one is waiting already";
    Settle();
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}, {0, false, kPhone}, {0, true, kPhone}}));
    EXPECT_EQ(Alive().links, 1);
}

TEST_F(Links, AReportIsDroppedWhenItsRegistrationHasEnded)
{
    AddPhone(phone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    bt_gatt_unset_connection_state_changed_cb();
    Settle();
    EXPECT_TRUE(user.reports.empty());
    EXPECT_EQ(bt_gatt_disconnect(kPhone), 0) << "the link came up all the same";
}

TEST_F(Links, AReportIsDroppedWhenItsRegistrationWasReplacedBySoMuchAsTheSame)
{
    AddPhone(phone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    user.Register();
    Settle();
    EXPECT_TRUE(user.reports.empty());
}

TEST_F(Links, TheLossOfAnOldUsersLinkIsNotToldToTheNewUser)
{
    AddPhone(phone);
    Connect();
    LinkUser second;
    bt_gatt_disconnect(kPhone);
    Settle();
    EXPECT_EQ(user.reports.size(), 1U);
    EXPECT_TRUE(second.reports.empty());
}

TEST_F(Links, ANewUserTakesOverALinkThatWasLeftUp)
{
    AddPhone(phone);
    Connect();
    LinkUser second;
    EXPECT_EQ(bt_gatt_connect(kPhone, false), 0);
    EXPECT_TRUE(second.reports.empty());
    Settle();
    EXPECT_EQ(second.reports, (Reports{{0, true, kPhone}}));
    bt_gatt_disconnect(kPhone);
    Settle();
    EXPECT_EQ(second.reports, (Reports{{0, true, kPhone}, {0, false, kPhone}}));
    EXPECT_EQ(user.reports.size(), 1U);
}

TEST_F(Links, ANewUserTakesOverAConnectThatWasLeftRunning)
{
    phone.connects = {{0, 5}};
    AddPhone(phone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    LinkUser second;
    EXPECT_EQ(bt_gatt_connect(kPhone, false), 0);
    Settle();
    EXPECT_TRUE(user.reports.empty());
    EXPECT_EQ(second.reports, (Reports{{0, true, kPhone}}));
}

TEST_F(Links, ATakenOverLinkThatIsLostBeforeItsReportFailsByOneReport)
{
    AddPhone(phone);
    Connect();
    LinkUser second;
    RemovePhone(kPhone);
    EXPECT_EQ(bt_gatt_connect(kPhone, false), 0);
    Settle();
    EXPECT_EQ(second.reports, (Reports{{kConnectTimedOut, true, kPhone}}));
}

TEST_F(Links, APhoneThatDropsItsLinkIsReportedOnce)
{
    phone.dropAfterConnectMs = 2;
    phone.dropCode = kLinkLost;
    AddPhone(phone);
    Connect();
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}, {kLinkLost, false, kPhone}}));
    EXPECT_NE(bt_gatt_disconnect(kPhone), 0);
}

TEST_F(Links, ADropConcernsOnlyTheLinkThatItWasMeantFor)
{
    phone.dropAfterConnectMs = 20;
    phone.disconnectCode = 7;
    AddPhone(phone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(RunUntil([&] { return !user.reports.empty(); }));
    bt_gatt_disconnect(kPhone);
    ASSERT_TRUE(RunUntil([&] { return user.reports.size() == 2; }));
    phone.dropAfterConnectMs.reset();
    AddPhone(phone);
    Connect();
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}, {7, false, kPhone}, {0, true, kPhone}}));
    EXPECT_EQ(Alive().links, 1);
}

TEST_F(Links, APhoneThatIsRemovedLosesItsLink)
{
    phone.dropCode = 19;
    AddPhone(phone);
    Connect();
    RemovePhone(kPhone);
    Settle();
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}, {19, false, kPhone}}));
}

TEST_F(Links, APhoneThatIsRemovedWhileConnectingFailsTheConnect)
{
    phone.connects = {{0, 5}};
    AddPhone(phone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    RemovePhone(kPhone);
    Settle();
    EXPECT_EQ(user.reports, (Reports{{kConnectTimedOut, true, kPhone}}));
}

TEST_F(Links, EachPhoneHasItsOwn)
{
    AddPhone(phone);
    AddPhone(AnsweringPhone({}, kOther));
    Connect(kPhone);
    Connect(kOther);
    EXPECT_EQ(Alive().links, 2);
    bt_gatt_disconnect(kPhone);
    Settle();
    EXPECT_EQ(Alive().links, 1);
    EXPECT_EQ(user.reports, (Reports{{0, true, kPhone}, {0, true, kOther}, {0, false, kPhone}}));
}

TEST_F(Links, HundredsOfRoundsFromInsideTheReportsEachEnd)
{
    AddPhone(phone);
    int rounds = 0;
    user.onReport = [&](const Report& report) {
        if (report.connected) {
            EXPECT_EQ(bt_gatt_disconnect(kPhone), 0);
            EXPECT_EQ(bt_gatt_connect(kPhone, false), 0);
            ++rounds;
        }
    };
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    EXPECT_TRUE(RunUntil([&] { return rounds >= 300; }));
    user.onReport = nullptr;
    Settle();
    EXPECT_EQ(user.reports.size(), 2U * 300U + 1U);
}

}  // namespace
}  // namespace lyn::simulator::test
