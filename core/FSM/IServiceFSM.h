// SPDX-License-Identifier: Apache-2.0
//
// A state machine decides by state and event whether the work of an operation may run, runs it on the
// calling thread, and moves the state. It is held by a shared pointer, so that an event in progress
// keeps it while another thread destroys the service.
#pragma once

#include <memory>

#include "FSM/LynFsmEvent.h"

namespace lyn {

class IServiceFSM : public std::enable_shared_from_this<IServiceFSM> {
public:
    IServiceFSM() = default;
    virtual ~IServiceFSM() = default;
    IServiceFSM(const IServiceFSM&) = delete;
    IServiceFSM& operator=(const IServiceFSM&) = delete;

    virtual lyn_error_e Init(StateChangedCb stateChangedCb) = 0;
    virtual lyn_error_e Deinit() = 0;
    /// The service is in place: what the machine watches by itself is reported from now on.
    virtual void Start() {}
    /// Throws LynExceptionInvalidState for an event that the state refuses, and what the work throws; the
    /// state then stays.
    virtual void ProcessEvent(LynFsmEvent event, const EventArgPtr& arg) = 0;

    /// How often the machine has moved.
    virtual unsigned int GetMoves() const = 0;
    /// ProcessEvent(), with every event refused when the machine has moved since it had made `moves`.
    virtual void ProcessEventSince(unsigned int moves, LynFsmEvent event, const EventArgPtr& arg) = 0;
    /// True for an event that would move the machine while the calling thread reports a state of it.
    virtual bool IsTooEarly(LynFsmEvent event) const = 0;
};

}  // namespace lyn
