// SPDX-License-Identifier: Apache-2.0
//
// Ends of links, and whose reports they are.
#include "Codes.h"
#include "GattRoom.h"

namespace lyn::linux_tests {
namespace {

using namespace lyn::linux_platform;

class LinuxLinkEnd : public GattRoom {
protected:
    void Disconnect() { ASSERT_EQ(bt_gatt_disconnect(kPhone), 0); }
    /// Waits without running the main context.
    static bool WaitIdly(const std::function<bool()>& done)
    {
        for (int tries = 0; tries < 4000 && !done(); ++tries) {
            g_usleep(5000);
        }
        return done();
    }
    void OneEndIsReported(int code)
    {
        ASSERT_TRUE(WaitForReports(2));
        RunQuietly(50);
        EXPECT_EQ(reports, (std::vector<Report>{{0, true, kPhone}, {code, false, kPhone}}));
    }
};

TEST_F(LinuxLinkEnd, IsReportedOnceWhenItWasAskedFor)
{
    Connect();
    Disconnect();
    EXPECT_EQ(reports.size(), 1U) << "not from inside the call";
    OneEndIsReported(0);
    EXPECT_FALSE(bluez->IsConnected(kPhone));
}

TEST_F(LinuxLinkEnd, CannotBeAskedForTwice)
{
    Connect();
    Disconnect();
    EXPECT_EQ(bt_gatt_disconnect(kPhone), kNotConnected);
    OneEndIsReported(0);
    EXPECT_EQ(bt_gatt_disconnect(kPhone), kNotConnected);
}

TEST_F(LinuxLinkEnd, IsReportedByTheSignalWhenTheReplyNeverComes)
{
    Connect();
    bluez->Treat("Device1.Disconnect", 1, Treatment::DoneWithoutAnswer());
    Disconnect();
    OneEndIsReported(0);
}

TEST_F(LinuxLinkEnd, IsReportedInBoundedTimeWhenNothingComes)
{
    Connect();
    UseShortLimits();
    bluez->Treat("Device1.Disconnect", 1, Treatment::Ignored());
    Disconnect();
    OneEndIsReported(0);
}

TEST_F(LinuxLinkEnd, IsReportedWhenItIsRefused)
{
    Connect();
    bluez->Treat("Device1.Disconnect", 1, Treatment::Fails("org.bluez.Error.NotConnected"));
    Disconnect();
    OneEndIsReported(0);
}

TEST_F(LinuxLinkEnd, OfALostLinkIsReportedOnceAsLost)
{
    Connect();
    bluez->DropLink(kPhone);
    OneEndIsReported(kLinkLost);
    EXPECT_EQ(bt_gatt_disconnect(kPhone), kNotConnected);
}

TEST_F(LinuxLinkEnd, IsReportedOnceWhenTheLinkIsLostWhileItIsTakenDown)
{
    Connect();
    bluez->DropLink(kPhone);
    Disconnect();
    OneEndIsReported(0);
}

TEST_F(LinuxLinkEnd, LetsTheNextConnectBegin)
{
    Connect();
    bluez->Treat("Device1.Disconnect", 1, Treatment::Late(80));
    Disconnect();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    EXPECT_EQ(bt_gatt_connect(kPhone, false), kAlreadyDone);
    ASSERT_TRUE(WaitForReports(3));
    RunQuietly(100);
    EXPECT_EQ(reports, (std::vector<Report>{{0, true, kPhone}, {0, false, kPhone}, {0, true, kPhone}}));
    EXPECT_TRUE(bluez->IsConnected(kPhone));
}

TEST_F(LinuxLinkEnd, ThatTheRegistrationDidNotWaitForIsDropped)
{
    Connect();
    Disconnect();
    bt_gatt_unset_connection_state_changed_cb();
    ASSERT_TRUE(RunUntil([&] { return !bluez->IsConnected(kPhone); }));
    RunQuietly(50);
    EXPECT_EQ(reports.size(), 1U);
}

TEST_F(LinuxLinkEnd, OfAConnectIsDroppedWhenItsRegistrationWasReplaced)
{
    Register();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    Register();
    bool down = false;
    const auto takeDown = [&] { return down = down || bt_gatt_disconnect(kPhone) == 0; };
    ASSERT_TRUE(RunUntil(takeDown)) << "the link comes up all the same";
    RunQuietly(50);
    EXPECT_TRUE(reports.empty());
}

TEST_F(LinuxLinkEnd, BelongsToTheRegistrationThatTakesTheLinkOver)
{
    Connect();
    Register();
    reports.clear();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(bluez->Count("Device1.Connect"), 1) << "the link was up";
    Disconnect();
    OneEndIsReported(0);
}

TEST_F(LinuxLinkEnd, OfARunningConnectBelongsToTheRegistrationThatJoinsIt)
{
    bluez->Treat("Device1.Connect", 1, Treatment::Late(50));
    Register();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    Register();
    ASSERT_EQ(bt_gatt_connect("a0:00:00:00:00:01", false), 0);
    ASSERT_TRUE(WaitForReports(1));
    RunQuietly(80);
    EXPECT_EQ(reports, (std::vector<Report>{{0, true, "a0:00:00:00:00:01"}}));
}

TEST_F(LinuxLinkEnd, IsAskedForByTheLastUserWhoNeedNotRunTheMainContextAfterwards)
{
    Connect();
    ASSERT_EQ(bt_product_init(), 0);
    EXPECT_EQ(bt_product_deinit(), 0);
    RunQuietly(30);
    EXPECT_TRUE(bluez->IsConnected(kPhone)) << "there is another user";
    EXPECT_EQ(bt_product_deinit(), 0);
    EXPECT_TRUE(WaitIdly([&] { return !bluez->IsConnected(kPhone); }));
    OneEndIsReported(0);
}

TEST_F(LinuxLinkEnd, OfAConnectIsAskedForByTheLastUserToo)
{
    bluez->ChangePhone({.inReach = false});
    Register();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("Device1.Connect") == 1; }));
    EXPECT_EQ(bt_product_deinit(), 0);
    EXPECT_TRUE(WaitIdly([&] { return bluez->Count("Device1.Disconnect") == 1; }));
    ASSERT_TRUE(WaitForReports(1));
    RunQuietly(50);
    EXPECT_EQ(reports, (std::vector<Report>{{kCanceled, true, kPhone}}));
}

TEST_F(LinuxLinkEnd, OfAnotherProgramsLinkIsNotAskedForByTheLastUser)
{
    bluez->ConnectByAnother(kPhone);
    Register();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("Properties.GetAll") == 1; }));
    EXPECT_EQ(bt_product_deinit(), 0);
    ASSERT_TRUE(WaitForReports(1));
    RunQuietly(100);
    EXPECT_EQ(reports, (std::vector<Report>{{kCanceled, true, kPhone}}));
    EXPECT_TRUE(bluez->IsConnected(kPhone));
}

TEST_F(LinuxLinkEnd, ByTheLastUserIsWaitedForByTheNextOne)
{
    Connect();
    bluez->Treat("Device1.Disconnect", 0, Treatment::Late(50));
    EXPECT_EQ(bt_product_deinit(), 0);
    ASSERT_EQ(bt_product_init(), 0);
    Register();
    reports.clear();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(WaitForReports(1));
    RunQuietly(150);
    EXPECT_EQ(reports, (std::vector<Report>{{0, true, kPhone}}));
    EXPECT_TRUE(bluez->IsConnected(kPhone));
}

TEST_F(LinuxLinkEnd, OfATakenOverLinkThatIsLostAtOnceEndsTheConnect)
{
    Connect();
    Register();
    reports.clear();
    bluez->DropLink(kPhone);
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(WaitForReports(1));
    RunQuietly(50);
    EXPECT_TRUE(reports[0].connected);
}

}  // namespace
}  // namespace lyn::linux_tests
