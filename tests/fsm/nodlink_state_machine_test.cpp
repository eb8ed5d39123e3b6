// SPDX-License-Identifier: Apache-2.0
//
// The state machine of "nodlink": the plain one, moved by the device as well.
#include <thread>

#include "Common/LynException.h"
#include "FSM/CNodLinkServiceFSM.h"
#include "fsm/Machine.h"
#include "support/InsideCall.h"
#include "support/LogOrder.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class OpenNodLinkMachine : public CNodLinkServiceFSM {
public:
    using CServiceFSM::m_CurrentState;
};

class NodLinkStateMachine : public SimulatedTv {
protected:
    NodLinkStateMachine() : machine(std::make_shared<OpenNodLinkMachine>()) {}

    lyn_error_e Init()
    {
        const lyn_error_e result = machine->Init([this](lyn_state_e state) { reports.push_back(state); });
        machine->Start();
        return result;
    }

    void Enter(lyn_state_e state)
    {
        machine->TransitState(state);
        reports.clear();
        simulator::ClearLog();
    }

    EventArgPtr Work()
    {
        return std::make_shared<EventArg>([this] { ++worked; });
    }

    static void SetBluetooth(bt_adapter_state_e state)
    {
        simulator::SetAdapterState(state);
        simulator::Settle();
    }

    lyn_state_e State() const { return machine->m_CurrentState.load().state; }

    std::shared_ptr<OpenNodLinkMachine> machine;
    States reports;
    int worked = 0;
};

TEST_F(NodLinkStateMachine, IsReadyOnAnEnabledDeviceAndReportsNothing)
{
    EXPECT_EQ(Init(), LYN_ERROR_NONE);
    EXPECT_EQ(State(), LYN_STATE_READY);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(
        simulator::JournalText(),
        Texts({"device_power_get_state()", "bt_adapter_get_state(-> 1)", "device_power_subscribe_poweroff_event()",
               "device_power_subscribe_ambient_poweroff()", "bt_adapter_set_state_changed_cb()"}));
    EXPECT_TRUE(Messages(WARN).empty());
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(NodLinkStateMachine, FailsItsInitOnADisabledDevice)
{
    simulator::SetAdapterState(BT_ADAPTER_DISABLED, false);
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { Init(); }), "m_StateChangedCb is nullptr");
    EXPECT_EQ(Messages(ERROR), Texts({"m_StateChangedCb is nullptr"}));
    EXPECT_TRUE(Messages(WARN).empty());
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(State(), LYN_STATE_READY);
    EXPECT_THROW(machine->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, Work()), LynExceptionInvalidState);
}

TEST_F(NodLinkStateMachine, FailsItsInitInAPowerStateThatServesNobody)
{
    for (const int power : {3, 5, -1}) {
        SCOPED_TRACE(power);
        machine = std::make_shared<OpenNodLinkMachine>();
        simulator::SetPowerState(power);
        EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { Init(); }), "m_StateChangedCb is nullptr");
        machine.reset();
        EXPECT_EQ(simulator::Alive().registrations, 0);
    }
}

TEST_F(NodLinkStateMachine, UnregistersWhenItsInitHasFailed)
{
    simulator::SetAdapterState(BT_ADAPTER_DISABLED, false);
    EXPECT_THROW(Init(), LynExceptionInternal);
    simulator::ClearJournal();
    machine.reset();
    EXPECT_EQ(simulator::JournalText(),
              Texts({"bt_adapter_unset_state_changed_cb()", "device_power_unsubscribe_ambient_poweroff()",
                     "device_power_unsubscribe_poweroff_event()"}));
    EXPECT_TRUE(HasLog(DEBUG, "in custom deleter of CDeviceStateChecekr"));
}

TEST_F(NodLinkStateMachine, ReleasesItsCheckerWithALine)
{
    Init();
    simulator::ClearJournal();
    simulator::ClearLog();
    machine.reset();
    EXPECT_EQ(simulator::JournalText(),
              Texts({"bt_adapter_unset_state_changed_cb()", "device_power_unsubscribe_ambient_poweroff()",
                     "device_power_unsubscribe_poweroff_event()"}));
    EXPECT_EQ(CountLog(DEBUG, "in custom deleter of CDeviceStateChecekr"), 1);
}

TEST_F(NodLinkStateMachine, FollowsTheDeviceFromWhateverState)
{
    Init();
    for (const lyn_state_e state : kStates) {
        for (const bool enabled : {false, true}) {
            SCOPED_TRACE(std::to_string(state) + (enabled ? " enabled" : " disabled"));
            Enter(state);
            const lyn_state_e expected = enabled ? LYN_STATE_READY : LYN_STATE_NOT_READY;
            machine->OnDeviceEnableStateChaned(enabled);
            EXPECT_EQ(State(), expected);
            EXPECT_EQ(reports, States({expected}));
            EXPECT_EQ(Messages(WARN), Texts({TransitLine(expected, state)}));
        }
    }
}

TEST_F(NodLinkStateMachine, FollowsTheReportsOfThePlatform)
{
    Init();
    SetBluetooth(BT_ADAPTER_DISABLED);
    SetBluetooth(BT_ADAPTER_ENABLED);
    simulator::PowerOff(0x40000000);
    simulator::Settle();
    SetBluetooth(BT_ADAPTER_ENABLED);
    simulator::AmbientPowerOff();
    simulator::Settle();
    simulator::AmbientPowerOff();
    simulator::Settle();
    EXPECT_EQ(reports, States({LYN_STATE_NOT_READY, LYN_STATE_READY, LYN_STATE_NOT_READY, LYN_STATE_READY,
                               LYN_STATE_NOT_READY}));
}

TEST_F(NodLinkStateMachine, HasThePlainTable)
{
    Init();
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_START_ADVERTISE, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_SCAN_STOPPED, nullptr);
    machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, nullptr);
    EXPECT_EQ(reports, States({LYN_STATE_SCANNING, LYN_STATE_READY, LYN_STATE_REQUESTING, LYN_STATE_READY}));
    EXPECT_EQ(worked, 3);
}

TEST_F(NodLinkStateMachine, OnlyStopsAScanWhileNotReady)
{
    Init();
    SetBluetooth(BT_ADAPTER_DISABLED);
    for (const LynFsmEvent event : kEvents) {
        if (event != LYN_FSM_EVENT_STOP_SCAN) {
            EXPECT_THROW(machine->ProcessEvent(event, Work()), LynExceptionInvalidState) << event;
        }
    }
    EXPECT_EQ(worked, 0);
    machine->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, Work());
    EXPECT_EQ(worked, 1);
    EXPECT_EQ(State(), LYN_STATE_READY) << "although Bluetooth is off";
    EXPECT_EQ(reports, States({LYN_STATE_NOT_READY, LYN_STATE_READY}));
}

TEST_F(NodLinkStateMachine, StaysReadyAfterAStoppedScanWhenTheDeviceIsDisabledAgain)
{
    Init();
    SetBluetooth(BT_ADAPTER_DISABLED);
    machine->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, Work());
    simulator::AmbientPowerOff();
    simulator::Settle();
    EXPECT_EQ(State(), LYN_STATE_READY);
    EXPECT_TRUE(HasLog(ERROR, "same enabled state"));
}

// On a thread of the platform, as soon as the callbacks are registered.
TEST_F(NodLinkStateMachine, HearsOfAReportThatComesDuringItsInitFromTheMainLoop)
{
    InsideCall("bt_adapter_set_state_changed_cb", [] {
        const auto registration = simulator::AmbientPowerOffRegistration();
        std::thread([&] { registration.callback(nullptr, registration.userData); }).join();
    });
    EXPECT_EQ(Init(), LYN_ERROR_NONE);
    EXPECT_EQ(State(), LYN_STATE_READY);
    EXPECT_TRUE(reports.empty());
    simulator::Settle();
    EXPECT_EQ(State(), LYN_STATE_NOT_READY);
    EXPECT_EQ(reports, States({LYN_STATE_NOT_READY}));
}

TEST_F(NodLinkStateMachine, FailsItsInitWhenBluetoothGoesOffMeanwhile)
{
    InsideCall("bt_adapter_set_state_changed_cb", [] {
        const auto registration = simulator::AdapterRegistration();
        std::thread([&] { registration.callback(0, BT_ADAPTER_DISABLED, registration.userData); }).join();
    });
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { Init(); }), "m_StateChangedCb is nullptr");
    machine.reset();
    simulator::Settle();
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(simulator::Alive().registrations, 0);
}

TEST_F(NodLinkStateMachine, LetsTheDeviceOvertakeTheWorkOfAScan)
{
    Init();
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, std::make_shared<EventArg>([this] {
                              ++worked;
                              machine->OnDeviceEnableStateChaned(false);
                          }));
    EXPECT_EQ(worked, 1);
    EXPECT_EQ(State(), LYN_STATE_NOT_READY);
    EXPECT_EQ(reports, States({LYN_STATE_NOT_READY})) << "it does not scan";
}

TEST_F(NodLinkStateMachine, DropsAReportOfTheDeviceAfterItsDeinit)
{
    Init();
    EXPECT_EQ(machine->Deinit(), LYN_ERROR_NONE);
    SetBluetooth(BT_ADAPTER_DISABLED);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(State(), LYN_STATE_READY);
    EXPECT_TRUE(HasLog(ERROR, "m_StateChangedCb is nullptr"));
}

}  // namespace
}  // namespace lyn::test
