// SPDX-License-Identifier: Apache-2.0
//
// The state machine of every service but "nodlink".
//
//   event \ state                READY     SCANNING   REQUESTING   NOT_READY
//   START_SCAN                   scan      -          -            -
//   STOP_SCAN                    stop      stop       stop, stay   stop
//   SCAN_STOPPED                 -         READY      -            -
//   REQUEST_INITIATING           request   request    -            -
//   REQUEST_INITIATING_RESULT    -         -          READY        -
//   START_, STOP_ADVERTISE       stay      stay       -            -
//
// Any thread. An event is looked up without a lock, and its work runs without one. The lock is held to write a
// state and to report it, so that states are reported in the order in which they come.
//
// A result must get through even when memory is short, so neither dispatching an event nor moving the
// state allocates.
#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "FSM/IServiceFSM.h"

namespace lyn {

class CServiceFSM : public IServiceFSM {
public:
    CServiceFSM() = default;
    ~CServiceFSM() override;

    /// Stores the callback and builds the table. Reports nothing.
    lyn_error_e Init(StateChangedCb stateChangedCb) override;
    /// Clears both; every later event is refused.
    lyn_error_e Deinit() override;
    void ProcessEvent(LynFsmEvent event, const EventArgPtr& arg) override;

    unsigned int GetMoves() const override { return m_CurrentState.load().moves; }
    void ProcessEventSince(unsigned int moves, LynFsmEvent event, const EventArgPtr& arg) override;
    bool IsTooEarly(LynFsmEvent event) const override;

    lyn_state_e GetCurrentState() const;
    /// Moves to a state, the present one included, and reports it. Other threads that want to move the machine
    /// wait for the report to end. Throws LynExceptionInternal without a callback.
    void TransitState(lyn_state_e state);

    // `moves` is how often the machine had moved when the event was looked up.
    void HandleStartScanOnReady(const EventArgPtr& arg, unsigned int moves);
    void HandleStopScanOnScanning(const EventArgPtr& arg, unsigned int moves);
    void HandleScanStoppedOnScanning(const EventArgPtr& arg, unsigned int moves);
    void HandleReqInitiatingOnReady(const EventArgPtr& arg, unsigned int moves);
    void HandleReqInitiatingOnScanning(const EventArgPtr& arg, unsigned int moves);
    void HandleReqInitiatingResultOnRequesting(const EventArgPtr& arg, unsigned int moves);
    void HandleStopScanOnReqeusting(const EventArgPtr& arg, unsigned int moves);
    void HandleControlAdvertise(const EventArgPtr& arg, unsigned int moves);

protected:
    using EventHandler = void (CServiceFSM::*)(const EventArgPtr&, unsigned int moves);
    using EventMap = std::map<LynFsmEvent, EventHandler>;

    /// Where the machine is, and how often it had moved to get there.
    struct alignas(8) Position {  // One word, read and written as a whole.
        lyn_state_e state = LYN_STATE_READY;
        unsigned int moves = 0;
    };
    static_assert(std::atomic<Position>::is_always_lock_free);

    bool InitStateMap();
    bool DeinitStateMap();

    StateChangedCb m_StateChangedCb;
    std::atomic<Position> m_CurrentState;
    std::map<lyn_state_e, EventMap> m_StateMap;
    std::mutex m_Mutex;

private:
    Position LookAtState() const;
    void Dispatch(const Position& position, LynFsmEvent event, const EventArgPtr& arg);
    /// False, and nothing moved, when the machine has moved since it had made `moves`.
    bool TransitState(lyn_state_e state, std::optional<unsigned int> moves);
    void Report(lyn_state_e state);
    bool IsReporting() const { return m_Reporter.load() == std::this_thread::get_id(); }

    std::atomic<std::thread::id> m_Reporter;  ///< The thread inside the state callback.
};

}  // namespace lyn
