// SPDX-License-Identifier: Apache-2.0
//
// What the tests of this folder share: a state machine that keeps what it reports, events with work that
// is counted, and the lines that a machine writes.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "FSM/CServiceFSM.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

inline constexpr std::array kStates = {LYN_STATE_READY, LYN_STATE_SCANNING, LYN_STATE_REQUESTING,
                                       LYN_STATE_NOT_READY};

inline constexpr std::array kEvents = {LYN_FSM_EVENT_START_SCAN,
                                       LYN_FSM_EVENT_STOP_SCAN,
                                       LYN_FSM_EVENT_SCAN_STOPPED,
                                       LYN_FSM_EVENT_REQUEST_INITIATING,
                                       LYN_FSM_EVENT_REQUEST_INITIATING_RESULT,
                                       LYN_FSM_EVENT_START_ADVERTISE,
                                       LYN_FSM_EVENT_STOP_ADVERTISE};

inline constexpr const char* kLegend = "(0: READY, 1: SCANNING, 2: REQUESTING, 3: NOT_READY)";

using States = std::vector<lyn_state_e>;
using Texts = std::vector<std::string>;

inline std::string CurrentLine(lyn_state_e state)
{
    return "current state : " + std::to_string(state) + " " + kLegend;
}

inline std::string TransitLine(lyn_state_e to, lyn_state_e from)
{
    return "transit to " + std::to_string(to) + " from " + std::to_string(from) + " " + kLegend;
}

/// A machine whose table and state are open to tests.
class OpenMachine : public CServiceFSM {
public:
    using CServiceFSM::m_CurrentState;
    using CServiceFSM::m_StateMap;
};

class MachineTest : public SimulatedTv {
protected:
    MachineTest() : machine(std::make_shared<OpenMachine>()) {}

    StateChangedCb KeepReports()
    {
        return [this](lyn_state_e state) { reports.push_back(state); };
    }

    /// Brings the machine into a state, and forgets that it was brought there.
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

    lyn_state_e State() const { return machine->m_CurrentState.load().state; }

    std::shared_ptr<OpenMachine> machine;
    States reports;
    int worked = 0;
};

}  // namespace lyn::test
