// SPDX-License-Identifier: Apache-2.0
//
// What is asked of a state machine.
#pragma once

#include <functional>
#include <memory>

#include "lyn_service.h"

namespace lyn {

enum LynFsmEvent : int {
    LYN_FSM_EVENT_START_SCAN = 0,
    LYN_FSM_EVENT_STOP_SCAN = 1,
    LYN_FSM_EVENT_SCAN_STOPPED = 2,
    LYN_FSM_EVENT_REQUEST_INITIATING = 3,
    LYN_FSM_EVENT_REQUEST_INITIATING_RESULT = 4,
    LYN_FSM_EVENT_START_ADVERTISE = 5,
    LYN_FSM_EVENT_STOP_ADVERTISE = 6
};

/// The work of an event, with all it needs captured. It may be empty.
struct EventArg {
    EventArg() = default;
    explicit EventArg(std::function<void()> action) : m_Action(std::move(action)) {}

    std::function<void()> m_Action;
};

using EventArgPtr = std::shared_ptr<EventArg>;
using StateChangedCb = std::function<void(lyn_state_e)>;

}  // namespace lyn
