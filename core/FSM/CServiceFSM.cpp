// SPDX-License-Identifier: Apache-2.0
#include "FSM/CServiceFSM.h"

#include <utility>

#include "Common/Failure.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr const char* STATE_LEGEND = "(0: READY, 1: SCANNING, 2: REQUESTING, 3: NOT_READY)";

void CheckArg(const EventArgPtr& arg)
{
    if (!arg) {
        LYN_LOGE("%s", "arg is nullptr");
        throw LynExceptionInternal("event argument is nullptr");
    }
}

void RunAction(const EventArgPtr& arg)
{
    if (arg && arg->m_Action) {
        arg->m_Action();
    }
}

[[noreturn]] void RefuseEvent()
{
    LogAndThrow<LynExceptionInvalidState>("Invalid State");
}

}  // namespace

CServiceFSM::~CServiceFSM() = default;

lyn_error_e CServiceFSM::Init(StateChangedCb stateChangedCb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    m_StateChangedCb = std::move(stateChangedCb);
    return InitStateMap() ? LYN_ERROR_NONE : LYN_ERROR_INTERNAL;
}

lyn_error_e CServiceFSM::Deinit()
{
    if (!m_StateChangedCb) {
        return LYN_ERROR_NONE;
    }
    m_StateChangedCb = nullptr;
    return DeinitStateMap() ? LYN_ERROR_NONE : LYN_ERROR_INTERNAL;
}

bool CServiceFSM::InitStateMap()
{
    const EventHandler stopScan = &CServiceFSM::HandleStopScanOnScanning;
    const EventHandler controlAdvertise = &CServiceFSM::HandleControlAdvertise;

    m_StateMap = {
        {LYN_STATE_READY,
         {{LYN_FSM_EVENT_START_SCAN, &CServiceFSM::HandleStartScanOnReady},
          {LYN_FSM_EVENT_STOP_SCAN, stopScan},
          {LYN_FSM_EVENT_REQUEST_INITIATING, &CServiceFSM::HandleReqInitiatingOnReady},
          {LYN_FSM_EVENT_START_ADVERTISE, controlAdvertise},
          {LYN_FSM_EVENT_STOP_ADVERTISE, controlAdvertise}}},
        {LYN_STATE_SCANNING,
         {{LYN_FSM_EVENT_STOP_SCAN, stopScan},
          {LYN_FSM_EVENT_SCAN_STOPPED, &CServiceFSM::HandleScanStoppedOnScanning},
          {LYN_FSM_EVENT_REQUEST_INITIATING, &CServiceFSM::HandleReqInitiatingOnScanning},
          {LYN_FSM_EVENT_START_ADVERTISE, controlAdvertise},
          {LYN_FSM_EVENT_STOP_ADVERTISE, controlAdvertise}}},
        {LYN_STATE_REQUESTING,
         {{LYN_FSM_EVENT_STOP_SCAN, &CServiceFSM::HandleStopScanOnReqeusting},
          {LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, &CServiceFSM::HandleReqInitiatingResultOnRequesting}}},
        {LYN_STATE_NOT_READY, {{LYN_FSM_EVENT_STOP_SCAN, stopScan}}},
    };
    return true;
}

bool CServiceFSM::DeinitStateMap()
{
    m_StateMap.clear();
    return true;
}

lyn_state_e CServiceFSM::GetCurrentState() const
{
    const lyn_state_e state = m_CurrentState;
    LYN_LOGW("current state : %d %s", state, STATE_LEGEND);
    return state;
}

CServiceFSM::EventScope::EventScope(CServiceFSM& fsm) : m_Fsm(fsm)
{
    m_Fsm.m_EventMutex.lock();
    if (++m_Fsm.m_EventDepth == 1) {
        m_Fsm.m_pOutermostEvent = this;
        m_Fsm.m_EventThread = std::this_thread::get_id();
    }
}

CServiceFSM::EventScope::~EventScope()
{
    Release();
}

void CServiceFSM::EventScope::Release()
{
    if (m_bReleased) {
        return;
    }
    m_bReleased = true;
    if (--m_Fsm.m_EventDepth == 0) {
        m_Fsm.m_pOutermostEvent = nullptr;
        m_Fsm.m_EventThread = std::thread::id();
    }
    m_Fsm.m_EventMutex.unlock();
}

void CServiceFSM::ReleaseOutermostEvent()
{
    if (m_EventThread.load() == std::this_thread::get_id() && m_EventDepth == 1) {
        m_pOutermostEvent->Release();
    }
}

void CServiceFSM::ProcessEvent(LynFsmEvent event, const EventArgPtr& arg)
{
    const EventScope scope(*this);
    const auto state = m_StateMap.find(GetCurrentState());
    if (state == m_StateMap.end()) {
        RefuseEvent();
    }
    const auto found = state->second.find(event);
    if (found == state->second.end()) {
        RefuseEvent();
    }
    const EventHandler handler = found->second;
    if (handler == nullptr) {
        LogAndThrow<LynExceptionInternal>("function pointer is nullptr");
    }
    (this->*handler)(arg);
}

void CServiceFSM::TransitState(lyn_state_e state)
{
    if (!m_StateChangedCb) {
        LogAndThrow<LynExceptionInternal>("m_StateChangedCb is nullptr");
    }
    const std::lock_guard lock(m_Mutex);
    LYN_LOGW("transit to %d from %d %s", state, m_CurrentState.load(), STATE_LEGEND);
    m_CurrentState = state;
    ++m_Transitions;
    ReleaseOutermostEvent();
    m_StateChangedCb(state);
}

void CServiceFSM::HandleStartScanOnReady(const EventArgPtr& arg)
{
    CheckArg(arg);
    const unsigned int transitions = m_Transitions;
    RunAction(arg);
    if (m_Transitions != transitions) {
        return;  // A phone was reported inside the work, and the application has gone on from there.
    }
    TransitState(LYN_STATE_SCANNING);
}

void CServiceFSM::HandleStopScanOnScanning(const EventArgPtr& arg)
{
    RunAction(arg);
    TransitState(LYN_STATE_READY);
}

void CServiceFSM::HandleScanStoppedOnScanning(const EventArgPtr& /*arg*/)
{
    TransitState(LYN_STATE_READY);
}

void CServiceFSM::HandleReqInitiatingOnReady(const EventArgPtr& arg)
{
    CheckArg(arg);
    RunAction(arg);
    TransitState(LYN_STATE_REQUESTING);
}

void CServiceFSM::HandleReqInitiatingOnScanning(const EventArgPtr& arg)
{
    CheckArg(arg);
    RunAction(arg);
    TransitState(LYN_STATE_REQUESTING);
}

void CServiceFSM::HandleReqInitiatingResultOnRequesting(const EventArgPtr& /*arg*/)
{
    TransitState(LYN_STATE_READY);
}

void CServiceFSM::HandleStopScanOnReqeusting(const EventArgPtr& arg)
{
    CheckArg(arg);
    RunAction(arg);
}

void CServiceFSM::HandleControlAdvertise(const EventArgPtr& arg)
{
    CheckArg(arg);
    RunAction(arg);
}

}  // namespace lyn
