// SPDX-License-Identifier: Apache-2.0
//
// One transition: what is logged, stored and reported, and what is left when it fails.
#include <stdexcept>

#include "Common/LynException.h"
#include "fsm/Machine.h"
#include "support/LogOrder.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class Transition : public MachineTest {
protected:
    Transition() { machine->Init(KeepReports()); }
};

TEST_F(Transition, LogsTheNewStateBeforeTheOldOneAndReportsOnceEvenWithoutAChange)
{
    for (const lyn_state_e from : kStates) {
        for (const lyn_state_e to : kStates) {
            SCOPED_TRACE(TransitLine(to, from));
            Enter(from);
            machine->TransitState(to);
            EXPECT_EQ(Messages(WARN), Texts({TransitLine(to, from)}));
            EXPECT_EQ(reports, States({to}));
            EXPECT_EQ(State(), to);
        }
    }
}

TEST_F(Transition, IsLoggedAndStoredBeforeItIsReported)
{
    int calls = 0;
    machine->Init([&](lyn_state_e state) {
        ++calls;
        EXPECT_EQ(state, LYN_STATE_SCANNING);
        EXPECT_EQ(State(), LYN_STATE_SCANNING);
        EXPECT_EQ(Messages(WARN), Texts({TransitLine(LYN_STATE_SCANNING, LYN_STATE_READY)}));
    });
    machine->TransitState(LYN_STATE_SCANNING);
    EXPECT_EQ(calls, 1);
}

TEST_F(Transition, LetsItsCallbackReadTheState)
{
    int calls = 0;
    machine->Init([&](lyn_state_e) {
        ++calls;
        EXPECT_EQ(machine->GetCurrentState(), LYN_STATE_NOT_READY);
    });
    machine->TransitState(LYN_STATE_NOT_READY);
    EXPECT_EQ(calls, 1);
}

TEST_F(Transition, IsRefusedWithoutACallback)
{
    machine->Init(nullptr);
    for (const lyn_state_e state : kStates) {
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { machine->TransitState(state); }),
                  "m_StateChangedCb is nullptr");
        EXPECT_EQ(Messages(ERROR), Texts({"m_StateChangedCb is nullptr"}));
        EXPECT_TRUE(Messages(WARN).empty());
        EXPECT_EQ(State(), LYN_STATE_READY);
    }
}

TEST_F(Transition, WithoutACallbackComesAfterTheWork)
{
    machine->Init(nullptr);
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work()); }),
              "m_StateChangedCb is nullptr");
    EXPECT_EQ(worked, 1);
    EXPECT_EQ(State(), LYN_STATE_READY);
}

TEST_F(Transition, LeavesNothingLockedWhenItsCallbackThrows)
{
    machine->Init([&](lyn_state_e state) {
        reports.push_back(state);
        if (state == LYN_STATE_SCANNING) {
            throw std::runtime_error("the application has failed");
        }
    });
    EXPECT_EQ(ThrownBy<std::runtime_error>([&] { machine->TransitState(LYN_STATE_SCANNING); }),
              "the application has failed");
    machine->TransitState(LYN_STATE_READY);
    EXPECT_EQ(reports, States({LYN_STATE_SCANNING, LYN_STATE_READY}));
}

TEST_F(Transition, NestsOnTheThreadThatReports)
{
    Texts order;
    machine->Init([&](lyn_state_e state) {
        order.push_back("begin " + std::to_string(state));
        if (state == LYN_STATE_SCANNING) {
            machine->TransitState(LYN_STATE_NOT_READY);
        }
        if (state == LYN_STATE_NOT_READY) {
            machine->TransitState(LYN_STATE_READY);
        }
        order.push_back("end " + std::to_string(state));
    });
    machine->TransitState(LYN_STATE_SCANNING);
    EXPECT_EQ(order, Texts({"begin 1", "begin 3", "begin 0", "end 0", "end 3", "end 1"}));
    EXPECT_EQ(State(), LYN_STATE_READY);
    machine->TransitState(LYN_STATE_REQUESTING);
    EXPECT_EQ(State(), LYN_STATE_REQUESTING) << "nothing stays locked";
}

TEST_F(Transition, IsTooEarlyInsideAReportButForAStopThatStays)
{
    for (const lyn_state_e state : kStates) {
        int calls = 0;
        const auto expect = [&](bool reporting) {
            for (const LynFsmEvent event : kEvents) {
                const bool stays = state == LYN_STATE_REQUESTING && event == LYN_FSM_EVENT_STOP_SCAN;
                EXPECT_EQ(machine->IsTooEarly(event), reporting && !stays)
                    << "event " << event << " in state " << state;
            }
        };
        machine->Init([&](lyn_state_e) {
            ++calls;
            expect(true);
        });
        machine->TransitState(state);
        EXPECT_EQ(calls, 1);
        expect(false);
    }
}

TEST_F(Transition, IsStillTooEarlyAfterANestedReport)
{
    int outer = 0;
    machine->Init([&](lyn_state_e state) {
        if (state == LYN_STATE_SCANNING) {
            machine->TransitState(LYN_STATE_READY);
            EXPECT_TRUE(machine->IsTooEarly(LYN_FSM_EVENT_START_SCAN));
            ++outer;
        }
    });
    machine->TransitState(LYN_STATE_SCANNING);
    EXPECT_EQ(outer, 1);
    EXPECT_FALSE(machine->IsTooEarly(LYN_FSM_EVENT_START_SCAN));
}

TEST_F(Transition, IsTooEarlyNoLongerWhenItsCallbackHasThrown)
{
    machine->Init([](lyn_state_e) { throw std::runtime_error("the application has failed"); });
    EXPECT_THROW(machine->TransitState(LYN_STATE_SCANNING), std::runtime_error);
    EXPECT_FALSE(machine->IsTooEarly(LYN_FSM_EVENT_STOP_SCAN));
}

TEST_F(Transition, InsideAReportOfAnotherMachineIsNotTooEarly)
{
    OpenMachine other;
    int calls = 0;
    other.Init([&](lyn_state_e) {
        ++calls;
        EXPECT_FALSE(machine->IsTooEarly(LYN_FSM_EVENT_START_SCAN));
        machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
    });
    other.TransitState(LYN_STATE_READY);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(reports, States({LYN_STATE_SCANNING}));
}

TEST_F(Transition, WritesItsLinesFromTheMachinesOwnFile)
{
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
    std::vector<std::pair<std::string, std::string>> places;
    for (const Line& line : LogLines()) {
        if (line.priority == WARN) {
            places.emplace_back(line.file, line.function);
        }
    }
    const std::vector<std::pair<std::string, std::string>> expected = {{"CServiceFSM.cpp", "GetCurrentState"},
                                                                       {"CServiceFSM.cpp", "TransitState"}};
    EXPECT_EQ(places, expected);
}

}  // namespace
}  // namespace lyn::test
