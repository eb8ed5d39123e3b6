// SPDX-License-Identifier: Apache-2.0
#include "FSM/CServiceFSM.h"

#include <utility>

#include "Common/Failure.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr const char* STATE_LEGEND = "(0: READY, 1: SCANNING, 2: REQUESTING, 3: NOT_READY)";
constexpr const char* PROCESS_EVENT = "ProcessEvent";

void CheckArg(const EventArgPtr& arg, const char* handler)
{
    if (!arg) {
        LYN_LOGE_AS(handler, "%s", "arg is nullptr");
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
    LogAndThrow<LynExceptionInvalidState>("Invalid State", __FILE__, PROCESS_EVENT);
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

CServiceFSM::Position CServiceFSM::LookAtState() const
{
    const Position position = m_CurrentState;
    LYN_LOGW_AS("GetCurrentState", "current state : %d %s", position.state, STATE_LEGEND);
    return position;
}

lyn_state_e CServiceFSM::GetCurrentState() const
{
    return LookAtState().state;
}

void CServiceFSM::ProcessEvent(LynFsmEvent event, const EventArgPtr& arg)
{
    Dispatch(LookAtState(), event, arg);
}

void CServiceFSM::ProcessEventSince(unsigned int moves, LynFsmEvent event, const EventArgPtr& arg)
{
    const Position position = LookAtState();
    if (position.moves != moves) {
        RefuseEvent();
    }
    Dispatch(position, event, arg);
}

void CServiceFSM::Dispatch(const Position& position, LynFsmEvent event, const EventArgPtr& arg)
{
    const auto state = m_StateMap.find(position.state);
    if (state == m_StateMap.end()) {
        RefuseEvent();
    }
    const auto found = state->second.find(event);
    if (found == state->second.end()) {
        RefuseEvent();
    }
    const EventHandler handler = found->second;
    if (handler == nullptr) {
        LogAndThrow<LynExceptionInternal>("function pointer is nullptr", __FILE__, PROCESS_EVENT);
    }
    (this->*handler)(arg, position.moves);
}

bool CServiceFSM::IsTooEarly(LynFsmEvent event) const
{
    const bool stays = event == LYN_FSM_EVENT_STOP_SCAN && m_CurrentState.load().state == LYN_STATE_REQUESTING;
    return !stays && IsReporting();
}

void CServiceFSM::TransitState(lyn_state_e state)
{
    TransitState(state, std::nullopt);
}

bool CServiceFSM::TransitState(lyn_state_e state, std::optional<unsigned int> moves)
{
    if (!m_StateChangedCb) {
        LogAndThrow<LynExceptionInternal>("m_StateChangedCb is nullptr");
    }
    std::unique_lock lock(m_Mutex, std::defer_lock);
    if (!IsReporting()) {  // Else this thread has it: the state callback runs the main loop.
        lock.lock();
    }
    const Position old = m_CurrentState;
    if (moves && *moves != old.moves) {
        return false;
    }
    LYN_LOGW("transit to %d from %d %s", state, old.state, STATE_LEGEND);
    m_CurrentState = {state, old.moves + 1};
    Report(state);
    return true;
}

void CServiceFSM::Report(lyn_state_e state)
{
    struct Restore {
        std::atomic<std::thread::id>& reporter;
        std::thread::id before;
        ~Restore() { reporter = before; }
    };
    const Restore restore{m_Reporter, m_Reporter.exchange(std::this_thread::get_id())};
    m_StateChangedCb(state);
}

void CServiceFSM::HandleStartScanOnReady(const EventArgPtr& arg, unsigned int moves)
{
    CheckArg(arg, __func__);
    RunAction(arg);
    // Not when the machine has been moved meanwhile: by the device, or by an application that a phone was
    // reported to inside the work.
    TransitState(LYN_STATE_SCANNING, moves);
}

void CServiceFSM::HandleStopScanOnScanning(const EventArgPtr& arg, unsigned int /*moves*/)
{
    RunAction(arg);
    TransitState(LYN_STATE_READY);
}

void CServiceFSM::HandleScanStoppedOnScanning(const EventArgPtr& /*arg*/, unsigned int /*moves*/)
{
    TransitState(LYN_STATE_READY);
}

void CServiceFSM::HandleReqInitiatingOnReady(const EventArgPtr& arg, unsigned int moves)
{
    CheckArg(arg, __func__);
    RunAction(arg);
    TransitState(LYN_STATE_REQUESTING, moves);
}

void CServiceFSM::HandleReqInitiatingOnScanning(const EventArgPtr& arg, unsigned int moves)
{
    CheckArg(arg, __func__);
    RunAction(arg);
    TransitState(LYN_STATE_REQUESTING, moves);
}

void CServiceFSM::HandleReqInitiatingResultOnRequesting(const EventArgPtr& /*arg*/, unsigned int moves)
{
    if (!TransitState(LYN_STATE_READY, moves)) {
        RefuseEvent();
    }
}

void CServiceFSM::HandleStopScanOnReqeusting(const EventArgPtr& arg, unsigned int /*moves*/)
{
    CheckArg(arg, __func__);
    RunAction(arg);
}

void CServiceFSM::HandleControlAdvertise(const EventArgPtr& arg, unsigned int /*moves*/)
{
    CheckArg(arg, __func__);
    RunAction(arg);
}

}  // namespace lyn
