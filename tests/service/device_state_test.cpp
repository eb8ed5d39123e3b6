// SPDX-License-Identifier: Apache-2.0
//
// "nodlink" while Bluetooth goes off and on and the TV goes to sleep.
#include <thread>

#include "service/AppTest.h"

namespace lyn::test {
namespace {

constexpr std::uint32_t kSuspend = 0x40000000;

class NodLinkAndItsDevice : public AppTest {
protected:
    NodLinkAndItsDevice() { Begin("nodlink"); }

    static void AmbientPowerOff()
    {
        simulator::AmbientPowerOff();
        simulator::Settle();
    }

    // A phone that answers after everything else that is under way.
    static void AddLatePhone()
    {
        simulator::Phone phone = PhoneFor("nodlink", "Success");
        phone.services[0].characteristics[0].answers[0].delayMs = 50;
        simulator::AddPhone(phone);
    }

    bool RunUntilRefused()
    {
        return simulator::RunUntil([] { return HasLog(ERROR, "exception : Invalid State"); });
    }
};

TEST_F(NodLinkAndItsDevice, ReportsTheDeviceWhileReady)
{
    SetBluetooth(BT_ADAPTER_DISABLED);
    SetBluetooth(BT_ADAPTER_ENABLED);
    simulator::PowerOff(kSuspend);
    simulator::Settle();
    SetBluetooth(BT_ADAPTER_ENABLED);
    AmbientPowerOff();
    AmbientPowerOff();
    EXPECT_EQ(app.states, States({LYN_STATE_NOT_READY, LYN_STATE_READY, LYN_STATE_NOT_READY, LYN_STATE_READY,
                                  LYN_STATE_NOT_READY}));
}

TEST_F(NodLinkAndItsDevice, MindsNoOtherPowerOff)
{
    simulator::PowerOff(0xBFFFFFFF);
    simulator::Settle();
    EXPECT_TRUE(app.states.empty());
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
}

TEST_F(NodLinkAndItsDevice, SaysAndForgetsABluetoothReportWithoutUserData)
{
    simulator::AdapterRegistration().callback(0, BT_ADAPTER_DISABLED, nullptr);
    EXPECT_EQ(Messages(ERROR), Texts{"userData is nullptr"});
    EXPECT_TRUE(app.states.empty());
}

TEST_F(NodLinkAndItsDevice, SaysAndForgetsAPowerOffWithoutUserData)
{
    const device_power_off_info_s info{kSuspend};
    EXPECT_EQ(simulator::PowerOffRegistration().callback(&info, nullptr), 0);
    EXPECT_EQ(Messages(ERROR), Texts{"userData is nullptr"});
    EXPECT_TRUE(app.states.empty());
}

TEST_F(NodLinkAndItsDevice, SaysAndForgetsAnAmbientPowerOffWithoutUserData)
{
    EXPECT_EQ(simulator::AmbientPowerOffRegistration().callback(nullptr, nullptr), 0);
    EXPECT_EQ(Messages(ERROR), Texts{"userData is nullptr"});
    EXPECT_TRUE(app.states.empty());
}

TEST_F(NodLinkAndItsDevice, SaysAndForgetsAPowerOffThatTellsNothing)
{
    const auto registration = simulator::PowerOffRegistration();
    EXPECT_EQ(registration.callback(nullptr, registration.userData), 0);
    EXPECT_EQ(Messages(ERROR), Texts{"info is nullptr"});
    EXPECT_TRUE(app.states.empty());
}

TEST_F(NodLinkAndItsDevice, IsToldOnTheThreadThatDelivers)
{
    const auto registration = simulator::AdapterRegistration();
    std::thread::id reportedOn;
    std::thread::id deliveredOn;
    app.onState = [&](lyn_state_e) { reportedOn = std::this_thread::get_id(); };
    std::thread([&] {
        deliveredOn = std::this_thread::get_id();
        registration.callback(0, BT_ADAPTER_DISABLED, registration.userData);
        EXPECT_EQ(app.states, States({LYN_STATE_NOT_READY})) << "the report has been posted";
    }).join();
    EXPECT_EQ(reportedOn, deliveredOn);
}

TEST_F(NodLinkAndItsDevice, DoesNotStopTheScanOfADisabledDevice)
{
    app.StartScan();
    Forget();
    AmbientPowerOff();
    EXPECT_EQ(app.states, States({LYN_STATE_NOT_READY}));
    EXPECT_TRUE(simulator::JournalText().empty());
    EXPECT_TRUE(simulator::Alive().scanning);
    SetBluetooth(BT_ADAPTER_ENABLED);
    EXPECT_EQ(app.states, States({LYN_STATE_NOT_READY, LYN_STATE_READY})) << "although the scan runs";
}

TEST_F(NodLinkAndItsDevice, ReportsPhonesWhileNotReady)
{
    simulator::AddPhone(PhoneFor("nodlink", ""));
    app.StartScan();
    AmbientPowerOff();
    const std::size_t found = app.phones.size();
    EXPECT_TRUE(simulator::RunUntil([&] { return app.phones.size() > found; }));
    EXPECT_EQ(app.states.back(), LYN_STATE_NOT_READY);
}

TEST_F(NodLinkAndItsDevice, StopsItsScanWhileNotReadyAndIsReadyThen)
{
    app.StartScan();
    AmbientPowerOff();
    Forget();
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_READY}));
    EXPECT_EQ(CountCalls("bt_adapter_le_stop_scan"), 1);
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE) << "the machine does not know that the device is disabled";
}

TEST_F(NodLinkAndItsDevice, IsReadyWithBluetoothOffAfterAStopButCannotScan)
{
    SetBluetooth(BT_ADAPTER_DISABLED);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_NOT_READY, LYN_STATE_READY}));
    EXPECT_EQ(app.StartScan(), LYN_ERROR_OPERATION_FAILED);
    SetBluetooth(BT_ADAPTER_ENABLED);
    EXPECT_EQ(app.states, States({LYN_STATE_NOT_READY, LYN_STATE_READY, LYN_STATE_READY}));
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
}

TEST_F(NodLinkAndItsDevice, LosesTheResultThatComesWhileNotReady)
{
    AddLatePhone();
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    AmbientPowerOff();
    EXPECT_EQ(app.states, States({LYN_STATE_READY, LYN_STATE_REQUESTING, LYN_STATE_NOT_READY}));
    ASSERT_TRUE(RunUntilRefused());
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
    EXPECT_EQ(app.states.back(), LYN_STATE_NOT_READY);
}

TEST_F(NodLinkAndItsDevice, LosesTheResultThatComesWhenItIsReadyAgain)
{
    AddLatePhone();
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    simulator::AmbientPowerOff();
    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    ASSERT_TRUE(RunUntilRefused());
    simulator::Settle();
    EXPECT_EQ(app.events, Texts({"state 0", "state 2", "state 3", "state 0"}));
}

TEST_F(NodLinkAndItsDevice, AsksAgainAfterALostResult)
{
    AddLatePhone();
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    AmbientPowerOff();
    ASSERT_TRUE(RunUntilRefused());
    simulator::Settle();
    SetBluetooth(BT_ADAPTER_ENABLED);
    Forget();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.events, Texts({"state 0", "state 2", "state 0", "result 0"}));
}

TEST_F(NodLinkAndItsDevice, IsReportedNothingAfterItsDestruction)
{
    app.Destroy();
    SetBluetooth(BT_ADAPTER_DISABLED);
    simulator::PowerOff(kSuspend);
    AmbientPowerOff();
    EXPECT_TRUE(app.events.empty());
}

}  // namespace
}  // namespace lyn::test
