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
// A result must get through even when memory is short, so neither dispatching an event nor moving the
// state allocates.
#pragma once

#include <atomic>
#include <map>
#include <mutex>
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

    lyn_state_e GetCurrentState() const;
    /// Moves to a state, the present one included, and reports it. The report comes under the machine's
    /// lock: the callback must not move the same machine. Throws LynExceptionInternal without a callback.
    void TransitState(lyn_state_e state);

    void HandleStartScanOnReady(const EventArgPtr& arg);
    void HandleStopScanOnScanning(const EventArgPtr& arg);
    void HandleScanStoppedOnScanning(const EventArgPtr& arg);
    void HandleReqInitiatingOnReady(const EventArgPtr& arg);
    void HandleReqInitiatingOnScanning(const EventArgPtr& arg);
    void HandleReqInitiatingResultOnRequesting(const EventArgPtr& arg);
    void HandleStopScanOnReqeusting(const EventArgPtr& arg);
    void HandleControlAdvertise(const EventArgPtr& arg);

protected:
    using EventHandler = void (CServiceFSM::*)(const EventArgPtr&);
    using EventMap = std::map<LynFsmEvent, EventHandler>;

    /// An event, or a move from outside, of this thread, which may nest them. They come one at a time from
    /// the look at the state to the writing of the next one, whichever threads they come from, so that no
    /// work runs in a state that is left meanwhile. The report of a state does not keep other events waiting.
    class EventScope {
    public:
        explicit EventScope(CServiceFSM& fsm);
        ~EventScope();
        EventScope(const EventScope&) = delete;
        EventScope& operator=(const EventScope&) = delete;

        void Release();

    private:
        CServiceFSM& m_Fsm;
        bool m_bReleased = false;
    };

    bool InitStateMap();
    bool DeinitStateMap();

    StateChangedCb m_StateChangedCb;
    std::atomic<lyn_state_e> m_CurrentState{LYN_STATE_READY};
    std::map<lyn_state_e, EventMap> m_StateMap;
    std::mutex m_Mutex;

private:
    void ReleaseOutermostEvent();

    std::recursive_mutex m_EventMutex;
    std::atomic<std::thread::id> m_EventThread{};  ///< The thread that holds m_EventMutex, which guards the rest.
    EventScope* m_pOutermostEvent = nullptr;
    int m_EventDepth = 0;
    unsigned int m_Transitions = 0;
};

}  // namespace lyn
