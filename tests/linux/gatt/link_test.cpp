// SPDX-License-Identifier: Apache-2.0
//
// Connects: how they succeed and fail.
#include <gmock/gmock.h>

#include "Codes.h"
#include "GattRoom.h"
#include "bluez/Adapter.h"

namespace lyn::linux_tests {
namespace {

using namespace lyn::linux_platform;
using ::testing::Test;

constexpr const char* kFailedName = "org.bluez.Error.Failed";

class LinuxLink : public GattRoom {
protected:
    int Begin()
    {
        Register();
        return bt_gatt_connect(kPhone, false);
    }
    /// The one report of a connect that fails.
    int Failure()
    {
        EXPECT_EQ(Begin(), 0);
        EXPECT_TRUE(WaitForReports(1));
        RunQuietly(50);
        EXPECT_EQ(reports.size(), 1U);
        EXPECT_TRUE(reports.at(0).connected);
        return reports.at(0).result;
    }
    void ConnectsAgain()
    {
        UseLongLimits();
        reports.clear();
        bluez->TreatWell();
        bluez->ChangePhone({});
        Connect();
    }
    static void HearNothing(int, bt_adapter_le_device_scan_result_info_s*, void*) {}
};

TEST_F(LinuxLink, IsReportedOnceWhenTheServicesAreResolved)
{
    Connect();
    RunQuietly(50);
    EXPECT_EQ(reports.size(), 1U);
    EXPECT_TRUE(bluez->IsConnected(kPhone));
    MakeClient();
}

TEST_F(LinuxLink, IsReportedWithTheAddressAsItWasGiven)
{
    Register();
    ASSERT_EQ(bt_gatt_connect("a0:00:00:00:00:01", false), 0);
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(reports[0], (Report{0, true, "a0:00:00:00:00:01"}));
    EXPECT_EQ(bt_gatt_disconnect(kPhone), 0) << "any letter case means the phone";
    ASSERT_TRUE(WaitForReports(2));
    EXPECT_EQ(reports[1], (Report{0, false, "a0:00:00:00:00:01"}));
}

TEST_F(LinuxLink, WhatIsNoAddressIsRefused)
{
    Register();
    for (const char* text : {"", "A0:00:00:00:00:0", "A0:00:00:00:00:011", "A0-00-00-00-00-01",
                             "A0:00:00:00:00:0g", "../../../../../.."}) {
        EXPECT_EQ(bt_gatt_connect(text, false), kInvalidArgument) << text;
        EXPECT_EQ(bt_gatt_disconnect(text), kInvalidArgument) << text;
    }
    EXPECT_EQ(bt_gatt_connect(nullptr, false), kInvalidArgument);
    EXPECT_EQ(bt_gatt_disconnect(nullptr), kInvalidArgument);
}

TEST_F(LinuxLink, APhoneThatIsGoneIsReportedInBoundedTimeAndTheConnectIsCancelled)
{
    UseShortLimits();
    bluez->ChangePhone({.inReach = false});
    EXPECT_EQ(Failure(), kConnectTimedOut);
    EXPECT_EQ(bluez->Count("Device1.Disconnect"), 1);
    ConnectsAgain();
}

TEST_F(LinuxLink, ServicesThatNeverResolveAreReportedInBoundedTimeAndTheLinkIsTakenDown)
{
    UseShortLimits();
    bluez->ChangePhone({.resolves = false});
    EXPECT_EQ(Failure(), kConnectTimedOut);
    EXPECT_TRUE(RunUntil([&] { return !bluez->IsConnected(kPhone); }));
    ConnectsAgain();
}

TEST_F(LinuxLink, AReplyThatNeverComesDoesNotHideALinkThatIsUp)
{
    bluez->Treat("Device1.Connect", 1, Treatment::DoneWithoutAnswer());
    Connect();
}

TEST_F(LinuxLink, AFailedConnectHasTheErrorsCodeAndMayBeTriedAgainAtOnce)
{
    bluez->Treat("Device1.Connect", 1, Treatment::Fails(kFailedName, "le-connection-abort-by-remote"));
    onReport = [&] {
        if (reports.size() == 1) {
            EXPECT_EQ(bt_gatt_connect(kPhone, false), 0);
        }
    };
    EXPECT_EQ(Begin(), 0);
    ASSERT_TRUE(WaitForReports(2));
    RunQuietly(50);
    EXPECT_EQ(reports, (std::vector<Report>{{kFailed, true, kPhone}, {0, true, kPhone}}));
    EXPECT_EQ(bluez->Calls(),
              (std::vector<std::string>{"Properties.GetAll", "Device1.Connect", "Device1.Disconnect",
                                        "Properties.GetAll", "Device1.Connect", "Properties.GetAll",
                                        "ObjectManager.GetManagedObjects"}));
}

TEST_F(LinuxLink, AFailedConnectIsLoggedWithWhatBluezSays)
{
    bluez->Treat("Device1.Connect", 1, Treatment::Fails(kFailedName, "le-connection-abort-by-remote"));
    testing::internal::CaptureStderr();
    EXPECT_EQ(Failure(), kFailed);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, ::testing::HasSubstr("W/LYN_PLATFORM"));
    EXPECT_THAT(log, ::testing::HasSubstr("Connect of /org/bluez/hci0/dev_A0_00_00_00_00_01 failed: "
                                          "le-connection-abort-by-remote (org.bluez.Error.Failed)"));
}

TEST_F(LinuxLink, ARetryWaitsUntilWhatTheFailedConnectLeftIsDown)
{
    UseShortLimits();
    bluez->ChangePhone({.resolves = false});
    bluez->Treat("Device1.Disconnect", 1, Treatment::Late(100));
    EXPECT_EQ(Begin(), 0);
    ASSERT_TRUE(WaitForReports(1));
    UseLongLimits();
    bluez->ChangePhone({});
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(WaitForReports(2));
    EXPECT_EQ(reports[1].result, 0);
    EXPECT_EQ(bluez->Count("Device1.Connect"), 2);
}

TEST_F(LinuxLink, ThatAnotherProgramHoldsServesAsWell)
{
    bluez->ConnectByAnother(kPhone);
    Connect();
    MakeClient();
}

TEST_F(LinuxLink, ThatAnotherProgramGivesUpIsNotJoined)
{
    TimeLimits().strangersLink = 10'000;
    bluez->ConnectByAnother(kPhone);
    EXPECT_EQ(Begin(), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("Properties.GetAll") == 1; }));
    RunQuietly(20);
    EXPECT_EQ(bluez->Count("Device1.Connect"), 0) << "while it may be on its way down";
    bluez->DropLink(kPhone);
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(reports[0], (Report{0, true, kPhone}));
    EXPECT_TRUE(bluez->IsConnected(kPhone));
}

TEST_F(LinuxLink, ThatAnotherProgramIsMakingServesAsWell)
{
    bluez->Treat("Device1.Connect", 1,
                 Treatment::Fails("org.bluez.Error.InProgress", "Operation already in progress"));
    EXPECT_EQ(Begin(), 0);
    RunQuietly(30);
    bluez->ConnectByAnother(kPhone);
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(reports[0].result, 0);
}

TEST_F(LinuxLink, APhoneThatWasForgottenIsFoundAgain)
{
    bluez->ForgetPhone(kPhone);
    Connect();
    EXPECT_FALSE(bluez->IsDiscovering()) << "the discovery ends before the connect";
    EXPECT_EQ(bluez->Count("Adapter1.SetDiscoveryFilter"), 1);
    EXPECT_EQ(bluez->Count("Adapter1.StopDiscovery"), 1);
}

TEST_F(LinuxLink, APhoneThatIsFoundAgainBeforeTheSearchListensIsFoundAllTheSame)
{
    bluez->Treat("Device1.Connect", 1, Treatment::Fails("org.freedesktop.DBus.Error.UnknownObject"));
    Connect();
    EXPECT_EQ(bluez->Count("Device1.Connect"), 2);
    EXPECT_FALSE(bluez->IsDiscovering());
}

TEST_F(LinuxLink, APhoneThatWasForgottenAndIsGoneIsReportedInBoundedTime)
{
    UseShortLimits();
    bluez->ChangePhone({.inReach = false});
    bluez->ForgetPhone(kPhone);
    EXPECT_EQ(Failure(), kConnectTimedOut);
    EXPECT_TRUE(RunUntil([&] { return !bluez->IsDiscovering(); }));
    bluez->AddPhone({});
    ConnectsAgain();
}

TEST_F(LinuxLink, AScanOfThisProcessServesToFindAPhoneAndGoesOn)
{
    bluez->ForgetPhone(kPhone);
    bluez->Treat("Adapter1.StartDiscovery", 1, Treatment::Fails("org.bluez.Error.InProgress"));
    EXPECT_EQ(Begin(), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("Adapter1.StartDiscovery") == 1; }));
    RunQuietly(30);
    bluez->AddPhone({});
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(reports[0].result, 0);
    EXPECT_EQ(bluez->Count("Adapter1.StopDiscovery"), 0);
}

TEST_F(LinuxLink, AScanThatBeginsDuringASearchGoesOnAfterIt)
{
    bluez->ChangePhone({.inReach = false});
    bluez->ForgetPhone(kPhone);
    EXPECT_EQ(Begin(), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->IsDiscovering(); }));
    ASSERT_EQ(bt_adapter_le_start_scan(&HearNothing, nullptr), 0);
    bluez->AddPhone({});
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(reports[0].result, 0);
    EXPECT_TRUE(bluez->IsDiscovering());
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_TRUE(RunUntil([&] { return !bluez->IsDiscovering(); }));
}

TEST_F(LinuxLink, AScanThatBeginsDuringASearchGoesOnWhenTheSearchIsGivenUp)
{
    UseShortLimits();
    bluez->ChangePhone({.inReach = false});
    bluez->ForgetPhone(kPhone);
    EXPECT_EQ(Begin(), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->IsDiscovering(); }));
    ASSERT_EQ(bt_adapter_le_start_scan(&HearNothing, nullptr), 0);
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(reports[0].result, kConnectTimedOut);
    RunQuietly();
    EXPECT_TRUE(bluez->IsDiscovering());
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_TRUE(RunUntil([&] { return !bluez->IsDiscovering(); }));
}

TEST_F(LinuxLink, ASearchGoesOnWhenTheScanThatServesItEnds)
{
    ASSERT_EQ(bt_adapter_le_start_scan(&HearNothing, nullptr), 0);
    bluez->ChangePhone({.inReach = false});
    bluez->ForgetPhone(kPhone);
    EXPECT_EQ(Begin(), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("Adapter1.StartDiscovery") == 2; }));
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    ASSERT_TRUE(RunUntil([&] { return !bluez->IsDiscovering(); }));
    ASSERT_TRUE(RunUntil([&] { return bluez->IsDiscovering(); }));
    bluez->AddPhone({});
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(reports[0].result, 0);
    EXPECT_FALSE(bluez->IsDiscovering()) << "the discovery ends before the connect";
}

TEST_F(LinuxLink, ADiscoveryThatIsRefusedFailsTheConnectWithItsCode)
{
    bluez->ForgetPhone(kPhone);
    bluez->Treat("Adapter1.StartDiscovery", 0, Treatment::Fails("org.bluez.Error.NotReady"));
    EXPECT_EQ(Failure(), kAdapterOff);
}

TEST_F(LinuxLink, APhoneWhoseServicesComeLateIsLookedAtTwice)
{
    bluez->ChangePhone({.service = "", .characteristic = ""});
    Connect();
    EXPECT_EQ(bluez->Count("ObjectManager.GetManagedObjects"), 2);
    ASSERT_EQ(bt_gatt_client_create(kPhone, &client), 0);
    EXPECT_EQ(bt_gatt_client_get_service(client, kServiceUuid, &service), kNotFound);
}

TEST_F(LinuxLink, ServicesThatCannotBeLookedUpFailTheConnect)
{
    bluez->Treat("ObjectManager.GetManagedObjects", 1, Treatment::Fails(kFailedName));
    EXPECT_EQ(Failure(), kFailed);
    ConnectsAgain();
}

TEST_F(LinuxLink, IsReportedOnceAlsoWhenEverySignalComesTwice)
{
    bluez->SendSignalsTwice(true);
    Connect();
    RunQuietly(30);
    ASSERT_EQ(bt_gatt_disconnect(kPhone), 0);
    ASSERT_TRUE(WaitForReports(2));
    RunQuietly(50);
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(LinuxLink, IsRefusedWhileTheSameRegistrationHasOne)
{
    EXPECT_EQ(Begin(), 0);
    EXPECT_EQ(bt_gatt_connect(kPhone, false), kAlreadyDone);
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(bt_gatt_connect(kPhone, false), kAlreadyDone);
    RunQuietly(30);
    EXPECT_EQ(reports.size(), 1U);
}

TEST_F(LinuxLink, IsRefusedWhileTheAdapterIsOff)
{
    bluez->SetPowered("hci0", false);
    WaitForAdapter(false);
    EXPECT_EQ(Begin(), kAdapterOff);
    RunQuietly(30);
    EXPECT_TRUE(reports.empty());
}

TEST_F(LinuxLink, APhoneIsConnectedWhereTheAdapterInUseSeesIt)
{
    bluez->AddAdapter("hci1", "02:00:00:00:00:11", true);
    bluez->SetPowered("hci0", false);
    ASSERT_TRUE(RunUntil([] { return Adapter::Instance().Known().path == "/org/bluez/hci1"; }));
    bluez->AddPhone({.address = "A0:00:00:00:00:02", .adapter = "hci1"});
    Register();
    ASSERT_EQ(bt_gatt_connect("A0:00:00:00:00:02", false), 0);
    ASSERT_TRUE(WaitForReports(1));
    EXPECT_EQ(reports[0].result, 0);
    EXPECT_TRUE(bluez->IsConnected("A0:00:00:00:00:02"));
}

TEST_F(LinuxLink, TwoPhonesHaveTwo)
{
    const std::string other = "A0:00:00:00:00:02";
    bluez->AddPhone({.address = other});
    Connect();
    ASSERT_EQ(bt_gatt_connect(other.c_str(), false), 0);
    ASSERT_TRUE(WaitForReports(2));
    EXPECT_EQ(reports[1], (Report{0, true, other}));
    ASSERT_EQ(bt_gatt_disconnect(kPhone), 0);
    ASSERT_TRUE(WaitForReports(3));
    EXPECT_EQ(reports[2], (Report{0, false, kPhone}));
    EXPECT_TRUE(bluez->IsConnected(other));
}

}  // namespace
}  // namespace lyn::linux_tests
