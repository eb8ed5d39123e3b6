// SPDX-License-Identifier: Apache-2.0
//
// The life of a plain state machine, from before Init() to after Deinit().
#include "Common/LynException.h"
#include "fsm/Machine.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class StateMachine : public MachineTest {
protected:
    void ExpectEveryEventRefused()
    {
        for (const LynFsmEvent event : kEvents) {
            SCOPED_TRACE("event " + std::to_string(event));
            simulator::ClearLog();
            EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { machine->ProcessEvent(event, Work()); }),
                      "Invalid State");
            EXPECT_EQ(Messages(ERROR), Texts({"Invalid State"}));
        }
        EXPECT_EQ(worked, 0);
        EXPECT_TRUE(reports.empty());
    }
};

TEST_F(StateMachine, IsReadyFromItsConstruction)
{
    EXPECT_EQ(State(), LYN_STATE_READY);
    EXPECT_EQ(machine->GetCurrentState(), LYN_STATE_READY);
}

TEST_F(StateMachine, LogsTheStateWheneverItIsAsked)
{
    machine->Init(KeepReports());
    for (const lyn_state_e state : kStates) {
        Enter(state);
        EXPECT_EQ(machine->GetCurrentState(), state);
        EXPECT_EQ(machine->GetCurrentState(), state);
        EXPECT_EQ(Messages(WARN), Texts({CurrentLine(state), CurrentLine(state)}));
    }
}

TEST_F(StateMachine, RefusesEveryEventBeforeItsInit)
{
    ExpectEveryEventRefused();
    EXPECT_EQ(State(), LYN_STATE_READY);
}

TEST_F(StateMachine, ReportsNothingDuringItsInit)
{
    EXPECT_EQ(machine->Init(KeepReports()), LYN_ERROR_NONE);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(State(), LYN_STATE_READY);
    EXPECT_TRUE(Messages(WARN).empty());
}

TEST_F(StateMachine, ReportsToTheLatestCallback)
{
    States earlier;
    machine->Init([&](lyn_state_e state) { earlier.push_back(state); });
    EXPECT_EQ(machine->Init(KeepReports()), LYN_ERROR_NONE);
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
    EXPECT_TRUE(earlier.empty());
    EXPECT_EQ(reports, States({LYN_STATE_SCANNING}));
}

TEST_F(StateMachine, KeepsItsStateThroughASecondInit)
{
    machine->Init(KeepReports());
    Enter(LYN_STATE_REQUESTING);
    EXPECT_EQ(machine->Init(KeepReports()), LYN_ERROR_NONE);
    EXPECT_EQ(State(), LYN_STATE_REQUESTING);
    EXPECT_TRUE(reports.empty());
    machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, nullptr);
    EXPECT_EQ(reports, States({LYN_STATE_READY}));
}

TEST_F(StateMachine, LivesThroughAScanAndARequest)
{
    machine->Init(KeepReports());
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_START_ADVERTISE, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_SCAN_STOPPED, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_STOP_ADVERTISE, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, Work());
    machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, Work());
    EXPECT_EQ(reports, States({LYN_STATE_SCANNING, LYN_STATE_READY, LYN_STATE_SCANNING, LYN_STATE_READY,
                               LYN_STATE_REQUESTING, LYN_STATE_READY}));
    EXPECT_EQ(worked, 7);
}

TEST_F(StateMachine, ReportsReadyTwiceWhenTheScanStopsInsideItsStop)
{
    machine->Init(KeepReports());
    Enter(LYN_STATE_SCANNING);
    const auto stop = [&] { machine->ProcessEvent(LYN_FSM_EVENT_SCAN_STOPPED, std::make_shared<EventArg>()); };
    machine->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, std::make_shared<EventArg>(stop));
    EXPECT_EQ(reports, States({LYN_STATE_READY, LYN_STATE_READY}));
    EXPECT_EQ(Messages(WARN), Texts({CurrentLine(LYN_STATE_SCANNING), CurrentLine(LYN_STATE_SCANNING),
                                     TransitLine(LYN_STATE_READY, LYN_STATE_SCANNING),
                                     TransitLine(LYN_STATE_READY, LYN_STATE_READY)}));
}

TEST_F(StateMachine, IsNotTakenToScanningWhenTheWorkOfAScanHasAlreadyMovedIt)
{
    machine->Init(KeepReports());
    const auto request = [&] { machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING, Work()); };
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, std::make_shared<EventArg>(request));
    EXPECT_EQ(reports, States({LYN_STATE_REQUESTING})) << "the request would never end otherwise";
    machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, nullptr);
    EXPECT_EQ(reports, States({LYN_STATE_REQUESTING, LYN_STATE_READY}));
}

TEST_F(StateMachine, IsNotTakenToRequestingWhenTheWorkOfARequestHasAlreadyMovedIt)
{
    machine->Init(KeepReports());
    for (const lyn_state_e from : {LYN_STATE_READY, LYN_STATE_SCANNING}) {
        SCOPED_TRACE(from);
        Enter(from);
        const auto move = [&] { machine->TransitState(LYN_STATE_NOT_READY); };
        EXPECT_NO_THROW(machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING, std::make_shared<EventArg>(move)));
        EXPECT_EQ(reports, States({LYN_STATE_NOT_READY}));
        EXPECT_EQ(Messages(WARN), Texts({CurrentLine(from), TransitLine(LYN_STATE_NOT_READY, from)}));
    }
}

TEST_F(StateMachine, IsNotMovedByWorkDuringWhichItHasGoneAndComeBack)
{
    machine->Init(KeepReports());
    const auto move = [&] {
        machine->TransitState(LYN_STATE_NOT_READY);
        machine->TransitState(LYN_STATE_READY);
    };
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, std::make_shared<EventArg>(move));
    EXPECT_EQ(reports, States({LYN_STATE_NOT_READY, LYN_STATE_READY}));
    EXPECT_EQ(State(), LYN_STATE_READY);
}

TEST_F(StateMachine, CountsItsMoves)
{
    const unsigned int before = machine->GetMoves();
    machine->Init(KeepReports());
    EXPECT_EQ(machine->GetMoves(), before);
    machine->TransitState(LYN_STATE_READY);
    EXPECT_EQ(machine->GetMoves(), before + 1) << "to the same state, too";
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
    EXPECT_EQ(machine->GetMoves(), before + 2);
    machine->ProcessEvent(LYN_FSM_EVENT_START_ADVERTISE, Work());
    EXPECT_THROW(machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work()), LynExceptionInvalidState);
    EXPECT_EQ(machine->GetMoves(), before + 2);
}

TEST_F(StateMachine, TakesAnEventSinceItsLastMoveAsAnyOther)
{
    machine->Init(KeepReports());
    Enter(LYN_STATE_REQUESTING);
    machine->ProcessEventSince(machine->GetMoves(), LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, nullptr);
    EXPECT_EQ(reports, States({LYN_STATE_READY}));
    EXPECT_EQ(Messages(WARN),
              Texts({CurrentLine(LYN_STATE_REQUESTING), TransitLine(LYN_STATE_READY, LYN_STATE_REQUESTING)}));
    machine->ProcessEventSince(machine->GetMoves(), LYN_FSM_EVENT_START_SCAN, Work());
    EXPECT_EQ(reports, States({LYN_STATE_READY, LYN_STATE_SCANNING}));
    EXPECT_EQ(worked, 1);
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>(
                  [&] { machine->ProcessEventSince(machine->GetMoves(), LYN_FSM_EVENT_START_SCAN, Work()); }),
              "Invalid State");
}

TEST_F(StateMachine, RefusesEveryEventSinceAnEarlierMove)
{
    machine->Init(KeepReports());
    for (const lyn_state_e state : kStates) {
        const unsigned int moves = machine->GetMoves();
        Enter(state);
        for (const LynFsmEvent event : kEvents) {
            SCOPED_TRACE("event " + std::to_string(event) + " in state " + std::to_string(state));
            simulator::ClearLog();
            EXPECT_EQ(
                ThrownBy<LynExceptionInvalidState>([&] { machine->ProcessEventSince(moves, event, Work()); }),
                "Invalid State");
            EXPECT_EQ(Messages(ERROR), Texts({"Invalid State"}));
        }
        EXPECT_EQ(State(), state);
    }
    EXPECT_EQ(worked, 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(StateMachine, RefusesEveryEventAfterItsDeinitAndKeepsItsState)
{
    for (const lyn_state_e state : kStates) {
        machine->Init(KeepReports());
        Enter(state);
        EXPECT_EQ(machine->Deinit(), LYN_ERROR_NONE);
        EXPECT_EQ(State(), state);
        ExpectEveryEventRefused();
        EXPECT_EQ(State(), state);
    }
}

TEST_F(StateMachine, CannotMoveAfterItsDeinit)
{
    machine->Init(KeepReports());
    Enter(LYN_STATE_SCANNING);
    machine->Deinit();
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { machine->TransitState(LYN_STATE_READY); }),
              "m_StateChangedCb is nullptr");
    EXPECT_EQ(State(), LYN_STATE_SCANNING);
    EXPECT_TRUE(reports.empty());
}

TEST_F(StateMachine, CannotMoveWhenTheWorkHasEndedIt)
{
    machine->Init(KeepReports());
    const auto end = [&] { machine->Deinit(); };
    EXPECT_EQ(ThrownBy<LynExceptionInternal>(
                  [&] { machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, std::make_shared<EventArg>(end)); }),
              "m_StateChangedCb is nullptr");
    EXPECT_EQ(State(), LYN_STATE_READY);
}

TEST_F(StateMachine, AcceptsADeinitThatHasNothingToDo)
{
    EXPECT_EQ(machine->Deinit(), LYN_ERROR_NONE);
    machine->Init(KeepReports());
    EXPECT_EQ(machine->Deinit(), LYN_ERROR_NONE);
    EXPECT_EQ(machine->Deinit(), LYN_ERROR_NONE);
}

TEST_F(StateMachine, WorksAgainInTheStateItWasLeftIn)
{
    machine->Init(KeepReports());
    Enter(LYN_STATE_SCANNING);
    machine->Deinit();
    EXPECT_EQ(machine->Init(KeepReports()), LYN_ERROR_NONE);
    machine->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, Work());
    EXPECT_EQ(reports, States({LYN_STATE_READY}));
    EXPECT_EQ(worked, 1);
}

TEST_F(StateMachine, CanBeUsedThroughItsInterface)
{
    const std::shared_ptr<IServiceFSM> fsm = std::make_shared<CServiceFSM>();
    EXPECT_EQ(fsm->Init(KeepReports()), LYN_ERROR_NONE);
    fsm->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
    EXPECT_EQ(reports, States({LYN_STATE_SCANNING}));
    EXPECT_EQ(fsm->Deinit(), LYN_ERROR_NONE);
    EXPECT_THROW(fsm->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, Work()), LynExceptionInvalidState);
}

}  // namespace
}  // namespace lyn::test
