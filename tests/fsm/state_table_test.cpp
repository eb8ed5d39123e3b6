// SPDX-License-Identifier: Apache-2.0
//
// Every state with every event: who refuses, who wants an argument, who runs its work, where it leads.
#include <optional>

#include "Common/LynException.h"
#include "fsm/Machine.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

// What a state does with an event.
struct Cell {
    bool accepts = false;
    bool wantsArgument = false;
    bool works = false;
    std::optional<lyn_state_e> leadsTo;
};

constexpr Cell kRefused = {};
constexpr Cell kStartScan = {true, true, true, LYN_STATE_SCANNING};
constexpr Cell kStopScan = {true, false, true, LYN_STATE_READY};
constexpr Cell kStopScanStaying = {true, true, true, std::nullopt};
constexpr Cell kScanStopped = {true, false, false, LYN_STATE_READY};
constexpr Cell kRequest = {true, true, true, LYN_STATE_REQUESTING};
constexpr Cell kResult = {true, false, false, LYN_STATE_READY};
constexpr Cell kAdvertise = {true, true, true, std::nullopt};

// A row is an event, a column a state; both in the order of their values.
constexpr Cell kTable[7][4] = {
    {kStartScan, kRefused, kRefused, kRefused},   {kStopScan, kStopScan, kStopScanStaying, kStopScan},
    {kRefused, kScanStopped, kRefused, kRefused}, {kRequest, kRequest, kRefused, kRefused},
    {kRefused, kRefused, kResult, kRefused},      {kAdvertise, kAdvertise, kRefused, kRefused},
    {kAdvertise, kAdvertise, kRefused, kRefused},
};

class StateTable : public MachineTest {
protected:
    StateTable() { machine->Init(KeepReports()); }

    // Calls `check` for every cell with a machine in the cell's state.
    template <typename Check>
    void ForEachCell(const Check& check)
    {
        for (const lyn_state_e state : kStates) {
            for (const LynFsmEvent event : kEvents) {
                SCOPED_TRACE("event " + std::to_string(event) + " in state " + std::to_string(state));
                Enter(state);
                worked = 0;
                check(kTable[event][state], state, event);
            }
        }
    }

    // The lines of a machine that has dispatched one event, and what it has reported.
    void ExpectDispatched(lyn_state_e before, const std::optional<lyn_state_e>& leadsTo)
    {
        Texts lines = {CurrentLine(before)};
        States reported;
        if (leadsTo) {
            lines.push_back(TransitLine(*leadsTo, before));
            reported.push_back(*leadsTo);
        }
        EXPECT_EQ(Messages(WARN), lines);
        EXPECT_EQ(reports, reported);
        EXPECT_EQ(State(), leadsTo.value_or(before));
    }

    void ExpectUntouched(lyn_state_e before) { ExpectDispatched(before, std::nullopt); }
};

TEST_F(StateTable, HasTheStatesAndEventsWithTheirValues)
{
    EXPECT_EQ(LYN_STATE_READY, 0);
    EXPECT_EQ(LYN_STATE_SCANNING, 1);
    EXPECT_EQ(LYN_STATE_REQUESTING, 2);
    EXPECT_EQ(LYN_STATE_NOT_READY, 3);
    EXPECT_EQ(LYN_FSM_EVENT_START_SCAN, 0);
    EXPECT_EQ(LYN_FSM_EVENT_STOP_SCAN, 1);
    EXPECT_EQ(LYN_FSM_EVENT_SCAN_STOPPED, 2);
    EXPECT_EQ(LYN_FSM_EVENT_REQUEST_INITIATING, 3);
    EXPECT_EQ(LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, 4);
    EXPECT_EQ(LYN_FSM_EVENT_START_ADVERTISE, 5);
    EXPECT_EQ(LYN_FSM_EVENT_STOP_ADVERTISE, 6);
}

TEST_F(StateTable, RunsTheWorkThenMovesAndReportsOnce)
{
    ForEachCell([&](const Cell& cell, lyn_state_e state, LynFsmEvent event) {
        if (!cell.accepts) {
            return;
        }
        machine->ProcessEvent(event, Work());
        EXPECT_EQ(worked, cell.works ? 1 : 0);
        ExpectDispatched(state, cell.leadsTo);
        EXPECT_TRUE(Messages(ERROR).empty());
    });
}

TEST_F(StateTable, RunsTheWorkBeforeTheStateMoves)
{
    ForEachCell([&](const Cell& cell, lyn_state_e state, LynFsmEvent event) {
        if (!cell.works) {
            return;
        }
        const auto look = [&] {
            ++worked;
            EXPECT_EQ(State(), state);
            EXPECT_TRUE(reports.empty());
        };
        machine->ProcessEvent(event, std::make_shared<EventArg>(look));
        EXPECT_EQ(worked, 1);
    });
}

TEST_F(StateTable, RefusesEveryOtherEventAsAnInvalidState)
{
    int refused = 0;
    ForEachCell([&](const Cell& cell, lyn_state_e state, LynFsmEvent event) {
        if (cell.accepts) {
            return;
        }
        ++refused;
        EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { machine->ProcessEvent(event, Work()); }),
                  "Invalid State");
        EXPECT_EQ(worked, 0);
        ExpectUntouched(state);
        EXPECT_EQ(Messages(ERROR), Texts({"Invalid State"}));
    });
    EXPECT_EQ(refused, 15);
}

TEST_F(StateTable, CarriesTheCodeOfAnInvalidStateInARefusal)
{
    Enter(LYN_STATE_REQUESTING);
    try {
        machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work());
        ADD_FAILURE() << "not refused";
    } catch (const LynException& e) {
        EXPECT_EQ(e.GetCode(), LYN_ERROR_INVALID_STATE);
    }
}

TEST_F(StateTable, MovesWithoutWork)
{
    ForEachCell([&](const Cell& cell, lyn_state_e state, LynFsmEvent event) {
        if (!cell.accepts) {
            return;
        }
        machine->ProcessEvent(event, std::make_shared<EventArg>());
        ExpectDispatched(state, cell.leadsTo);
        EXPECT_TRUE(Messages(ERROR).empty());
    });
}

TEST_F(StateTable, MovesWithoutAnArgumentWhereNoneIsWanted)
{
    ForEachCell([&](const Cell& cell, lyn_state_e state, LynFsmEvent event) {
        if (!cell.accepts || cell.wantsArgument) {
            return;
        }
        machine->ProcessEvent(event, nullptr);
        ExpectDispatched(state, cell.leadsTo);
        EXPECT_TRUE(Messages(ERROR).empty());
    });
}

TEST_F(StateTable, FailsWithoutAnArgumentWhereOneIsWanted)
{
    int wanted = 0;
    ForEachCell([&](const Cell& cell, lyn_state_e state, LynFsmEvent event) {
        if (!cell.wantsArgument) {
            return;
        }
        ++wanted;
        EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { machine->ProcessEvent(event, nullptr); }),
                  "event argument is nullptr");
        ExpectUntouched(state);
        EXPECT_EQ(Messages(ERROR), Texts({"arg is nullptr"}));
    });
    EXPECT_EQ(wanted, 8);
}

TEST_F(StateTable, StaysWhereItIsWhenTheWorkFails)
{
    ForEachCell([&](const Cell& cell, lyn_state_e state, LynFsmEvent event) {
        if (!cell.works) {
            return;
        }
        const auto fail = [] { throw LynExceptionOperationFailed("the work has failed"); };
        EXPECT_EQ(ThrownBy<LynExceptionOperationFailed>(
                      [&] { machine->ProcessEvent(event, std::make_shared<EventArg>(fail)); }),
                  "the work has failed");
        ExpectUntouched(state);
        EXPECT_TRUE(Messages(ERROR).empty());
    });
}

TEST_F(StateTable, RefusesEventsThatAreNone)
{
    for (const lyn_state_e state : kStates) {
        for (const int event : {-1, 7, 1000}) {
            SCOPED_TRACE("event " + std::to_string(event) + " in state " + std::to_string(state));
            Enter(state);
            EXPECT_EQ(ThrownBy<LynExceptionInvalidState>(
                          [&] { machine->ProcessEvent(static_cast<LynFsmEvent>(event), Work()); }),
                      "Invalid State");
            ExpectUntouched(state);
        }
    }
}

TEST_F(StateTable, RefusesEveryEventInAStateThatIsNone)
{
    const auto state = static_cast<lyn_state_e>(4);
    for (const LynFsmEvent event : kEvents) {
        SCOPED_TRACE("event " + std::to_string(event));
        Enter(state);
        EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { machine->ProcessEvent(event, Work()); }),
                  "Invalid State");
        ExpectUntouched(state);
        EXPECT_EQ(Messages(ERROR), Texts({"Invalid State"}));
    }
}

TEST_F(StateTable, FailsForAnEntryWithoutAHandler)
{
    machine->m_StateMap[LYN_STATE_READY][LYN_FSM_EVENT_START_SCAN] = nullptr;
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, Work()); }),
              "function pointer is nullptr");
    ExpectUntouched(LYN_STATE_READY);
    EXPECT_EQ(worked, 0);
    EXPECT_EQ(Messages(ERROR), Texts({"function pointer is nullptr"}));
}

TEST_F(StateTable, IsNotAskedAgainWhileTheWorkChangesIt)
{
    const auto clear = [&] { machine->m_StateMap.clear(); };
    machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, std::make_shared<EventArg>(clear));
    EXPECT_EQ(reports, States({LYN_STATE_SCANNING}));
}

// The handlers do not look at the state that they are named after.
TEST_F(StateTable, HasHandlersThatActByThemselves)
{
    struct Handler {
        void (CServiceFSM::*handle)(const EventArgPtr&, unsigned int moves);
        Cell cell;
    };
    const Handler handlers[] = {{&CServiceFSM::HandleStartScanOnReady, kStartScan},
                                {&CServiceFSM::HandleStopScanOnScanning, kStopScan},
                                {&CServiceFSM::HandleScanStoppedOnScanning, kScanStopped},
                                {&CServiceFSM::HandleReqInitiatingOnReady, kRequest},
                                {&CServiceFSM::HandleReqInitiatingOnScanning, kRequest},
                                {&CServiceFSM::HandleReqInitiatingResultOnRequesting, kResult},
                                {&CServiceFSM::HandleStopScanOnReqeusting, kStopScanStaying},
                                {&CServiceFSM::HandleControlAdvertise, kAdvertise}};
    int index = 0;
    for (const Handler& handler : handlers) {
        SCOPED_TRACE("handler " + std::to_string(index++));
        Enter(LYN_STATE_NOT_READY);
        worked = 0;
        ((*machine).*handler.handle)(Work(), machine->GetMoves());
        EXPECT_EQ(worked, handler.cell.works ? 1 : 0);
        EXPECT_EQ(State(), handler.cell.leadsTo.value_or(LYN_STATE_NOT_READY));
        EXPECT_EQ(reports.size(), handler.cell.leadsTo ? 1U : 0U);
    }
}

TEST_F(StateTable, HasHandlersOfBeginningsThatDoTheirWorkButDoNotMoveAMachineThatHasMoved)
{
    for (const auto handle : {&CServiceFSM::HandleStartScanOnReady, &CServiceFSM::HandleReqInitiatingOnReady,
                              &CServiceFSM::HandleReqInitiatingOnScanning}) {
        const unsigned int moves = machine->GetMoves();
        Enter(LYN_STATE_NOT_READY);
        worked = 0;
        EXPECT_NO_THROW(((*machine).*handle)(Work(), moves));
        EXPECT_EQ(worked, 1);
        EXPECT_EQ(State(), LYN_STATE_NOT_READY);
        EXPECT_TRUE(reports.empty());
        EXPECT_TRUE(LogLines().empty());
    }
}

TEST_F(StateTable, HasAHandlerOfResultsThatRefusesOneOfAMachineThatHasMoved)
{
    const unsigned int moves = machine->GetMoves();
    Enter(LYN_STATE_REQUESTING);
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>(
                  [&] { machine->HandleReqInitiatingResultOnRequesting(nullptr, moves); }),
              "Invalid State");
    EXPECT_EQ(Messages(ERROR), Texts({"Invalid State"}));
    EXPECT_EQ(State(), LYN_STATE_REQUESTING);
    EXPECT_TRUE(reports.empty());
}

TEST_F(StateTable, HasHandlersOfEndsThatMoveTheMachineWhereverItIs)
{
    for (const auto handle : {&CServiceFSM::HandleStopScanOnScanning, &CServiceFSM::HandleScanStoppedOnScanning}) {
        const unsigned int moves = machine->GetMoves();
        Enter(LYN_STATE_NOT_READY);
        ((*machine).*handle)(Work(), moves);
        EXPECT_EQ(State(), LYN_STATE_READY);
        EXPECT_EQ(reports, States({LYN_STATE_READY}));
    }
}

}  // namespace
}  // namespace lyn::test
