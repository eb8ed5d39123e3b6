// SPDX-License-Identifier: Apache-2.0
//
// What happens to links when something goes away below them.
#include "Codes.h"
#include "GattRoom.h"

namespace lyn::linux_tests {
namespace {

using namespace lyn::linux_platform;

/// One way for everything to go away, and back.
struct Surprise {
    const char* name;
    void (*happens)(FakeBluez& bluez);
    void (*ends)(FakeBluez& bluez);
    int code;  ///< of a connect that runs
};

void PrintTo(const Surprise& surprise, std::ostream* out)
{
    *out << surprise.name;
}

const Surprise kSurprises[] = {
    {"BluetoothdDies", [](FakeBluez& bluez) { bluez.Die(); }, [](FakeBluez& bluez) { bluez.Return(); },
     kAdapterOff},
    {"BluetoothdRestarts",
     [](FakeBluez& bluez) {
         bluez.Die();
         bluez.Return();
     },
     [](FakeBluez&) {}, kAdapterOff},
    {"TheAdapterIsUnplugged", [](FakeBluez& bluez) { bluez.RemoveAdapter("hci0"); },
     [](FakeBluez& bluez) { bluez.AddAdapter("hci0", "02:00:00:00:00:10", true); }, kAdapterOff},
    {"TheAdapterIsPoweredOffOrBlocked", [](FakeBluez& bluez) { bluez.SetPowered("hci0", false); },
     [](FakeBluez& bluez) { bluez.SetPowered("hci0", true); }, kAdapterOff},
    {"ThePhoneIsForgotten", [](FakeBluez& bluez) { bluez.ForgetPhone(kPhone); }, [](FakeBluez&) {}, kNotFound},
};

class LinuxSurprise : public GattRoom, public ::testing::WithParamInterface<Surprise> {
protected:
    void Happens() { GetParam().happens(*bluez); }
    /// All is well again, and a request finds it so.
    void AllIsWellAgain()
    {
        GetParam().ends(*bluez);
        WaitForAdapter(true);
        bluez->ChangePhone({});
        reports.clear();
        RunQuietly(20);
        Connect();
    }
};

TEST_P(LinuxSurprise, IsReportedOnceAsALostLink)
{
    Connect();
    MakeClient();
    Listen();
    Happens();
    ASSERT_TRUE(WaitForReports(2));
    RunQuietly(50);
    EXPECT_EQ(reports, (std::vector<Report>{{0, true, kPhone}, {kLinkLost, false, kPhone}}));
    EXPECT_EQ(bt_gatt_disconnect(kPhone), kNotConnected);
    EXPECT_EQ(Write("late"), kNotConnected);
    AllIsWellAgain();
}

TEST_P(LinuxSurprise, IsReportedOnceAsAFailedConnect)
{
    bluez->ChangePhone({.inReach = false});
    TimeLimits().connect = 10'000;
    Register();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("Device1.Connect") == 1; }));
    Happens();
    ASSERT_TRUE(WaitForReports(1));
    RunQuietly(50);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_TRUE(reports[0].connected);
    EXPECT_NE(reports[0].result, 0);
    EXPECT_NE(reports[0].result, kConnectTimedOut) << "nobody has waited";
    AllIsWellAgain();
}

TEST_P(LinuxSurprise, IsReportedOnceWhileServicesAreResolved)
{
    bluez->ChangePhone({.resolves = false});
    TimeLimits().connect = 10'000;
    Register();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("Properties.GetAll") == 1; }));
    RunQuietly(20);
    Happens();
    ASSERT_TRUE(WaitForReports(1));
    RunQuietly(50);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_TRUE(reports[0].connected);
    EXPECT_NE(reports[0].result, 0);
    AllIsWellAgain();
}

TEST_P(LinuxSurprise, IsReportedOnceAsTheEndThatWasAskedFor)
{
    Connect();
    TimeLimits().takeDown = 10'000;
    bluez->Treat("Device1.Disconnect", 1, Treatment::Ignored());
    ASSERT_EQ(bt_gatt_disconnect(kPhone), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("Device1.Disconnect") == 1; }));
    Happens();
    ASSERT_TRUE(WaitForReports(2));
    RunQuietly(50);
    EXPECT_EQ(reports, (std::vector<Report>{{0, true, kPhone}, {0, false, kPhone}}));
    AllIsWellAgain();
}

TEST_P(LinuxSurprise, EndsAWriteOnce)
{
    Connect();
    MakeClient();
    TimeLimits().write = 300;
    bluez->Treat("GattCharacteristic1.WriteValue", 1, Treatment::Ignored());
    ASSERT_EQ(Write("message"), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("GattCharacteristic1.WriteValue") == 1; }));
    Happens();
    ASSERT_TRUE(WaitForReports(2));
    ASSERT_TRUE(RunUntil([&] { return written.size() == 1; }));
    RunQuietly(50);
    EXPECT_EQ(written.size(), 1U);
    EXPECT_NE(written[0], 0);
}

INSTANTIATE_TEST_SUITE_P(When, LinuxSurprise, ::testing::ValuesIn(kSurprises),
                         [](const auto& tested) { return tested.param.name; });

class LinuxForgotten : public GattRoom {};

TEST_F(LinuxForgotten, TheAdapterGoingOffDuringTheSearchIsReportedOnce)
{
    TimeLimits().connect = 10'000;
    bluez->ChangePhone({.inReach = false});
    bluez->ForgetPhone(kPhone);
    Register();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(RunUntil([&] { return bluez->IsDiscovering(); }));
    bluez->SetPowered("hci0", false);
    ASSERT_TRUE(WaitForReports(1));
    RunQuietly(50);
    EXPECT_EQ(reports, (std::vector<Report>{{kAdapterOff, true, kPhone}}));
}

TEST_F(LinuxForgotten, AnAdapterThatTakesOverLetsTheOldLinksGo)
{
    bluez->AddAdapter("hci1", "02:00:00:00:00:11", true);
    Connect();
    bluez->RemoveAdapter("hci0");
    ASSERT_TRUE(WaitForReports(2));
    EXPECT_EQ(reports[1], (Report{kLinkLost, false, kPhone}));
}

}  // namespace
}  // namespace lyn::linux_tests
