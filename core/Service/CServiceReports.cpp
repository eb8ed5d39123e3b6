// SPDX-License-Identifier: Apache-2.0
#include "Service/CServiceReports.h"

#include <glib.h>

#include <utility>

#include "Common/Failure.h"

namespace lyn {
namespace {

// Results that may be waiting at once without a further allocation; one is the rule.
constexpr std::size_t EXPECTED_POSTPONED = 4;

}  // namespace

CServiceReports::CServiceReports(StateChangedCb stateChangeCb) : m_StateChangeCb(std::move(stateChangeCb)) {}

void CServiceReports::SetDeviceFoundCb(const DeviceFoundCb& cb)
{
    DeviceFoundCb replaced = cb;
    const std::lock_guard lock(m_Mutex);
    m_DeviceFoundCb.swap(replaced);
}

void CServiceReports::SetRequestResultCb(const RequestInitiatingResultCb& cb)
{
    RequestInitiatingResultCb replaced = cb;
    const std::lock_guard lock(m_Mutex);
    m_RequestResultCb.swap(replaced);
}

std::shared_ptr<IServiceFSM> CServiceReports::SetFsm(std::shared_ptr<IServiceFSM> fsm)
{
    const std::lock_guard lock(m_Mutex);
    return std::exchange(m_pFsm, std::move(fsm));
}

std::shared_ptr<IServiceFSM> CServiceReports::GetFsm() const
{
    const std::lock_guard lock(m_Mutex);
    return m_bClosed ? nullptr : m_pFsm;
}

void CServiceReports::Stop()
{
    const std::lock_guard lock(m_Mutex);
    m_bClosed = true;
    m_Postponed.clear();
}

std::shared_ptr<IServiceFSM> CServiceReports::Close()
{
    Stop();
    const std::lock_guard lock(m_Mutex);
    return std::move(m_pFsm);
}

void CServiceReports::ReportDeviceFound(const lyn_device_info_t& info) const
{
    DeviceFoundCb callback;
    {
        const std::lock_guard lock(m_Mutex);
        if (m_bClosed) {
            return;
        }
        callback = m_DeviceFoundCb;
    }
    if (!callback) {
        LYN_LOGE("%s", "m_DeviceFoundCb is NULL");
        return;
    }
    callback(info);
}

void CServiceReports::ReportState(lyn_state_e state) const
{
    StateChangedCb callback;
    {
        const std::lock_guard lock(m_Mutex);
        if (m_bClosed) {
            return;
        }
        callback = m_StateChangeCb;
    }
    LYN_LOGI("state : %d", state);
    if (!callback) {
        LYN_LOGE("%s", "m_StateChangeCb is null");
        return;
    }
    callback(state);
}

void CServiceReports::RaiseResultEvent() const
{
    const auto fsm = GetFsm();
    if (!fsm) {
        LogAndThrow<LynExceptionInternal>("m_pFsm is NULL");
    }
    fsm->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, nullptr);  // The event has no work.
}

void CServiceReports::ReportRequestResult(lyn_request_initiating_result_e result)
{
    if (Postpone(result)) {
        return;
    }
    try {
        RaiseResultEvent();
    } catch (const std::exception& e) {
        LYN_LOGE("exception : %s", e.what());
        return;
    }
    RequestInitiatingResultCb callback;
    {
        const std::lock_guard lock(m_Mutex);
        if (m_bClosed) {
            return;  // The state callback has destroyed the service.
        }
        callback = m_RequestResultCb;
    }
    if (!callback) {
        LYN_LOGE("%s", "m_RequestResultCb is NULL");
        return;
    }
    callback(result);
}

// True also when there is nobody to report to any more.
bool CServiceReports::Postpone(lyn_request_initiating_result_e result)
{
    const std::lock_guard lock(m_Mutex);
    if (m_bClosed) {
        return true;
    }
    if (m_RequestCalls == 0) {
        return false;
    }
    m_Postponed.push_back(result);
    return true;
}

void CServiceReports::EndRequestCall()
{
    std::size_t waiting = 0;
    {
        const std::lock_guard lock(m_Mutex);
        --m_RequestCalls;
        waiting = m_RequestCalls == 0 ? m_Postponed.size() : 0;
    }
    for (; waiting > 0; --waiting) {
        g_idle_add(ReportPostponed, m_Live.UserData());
    }
}

int CServiceReports::ReportPostponed(void* userData)
{
    CallShared<CServiceReports>(userData, [](CServiceReports& reports) {
        if (const auto result = reports.TakePostponed()) {
            reports.ReportRequestResult(*result);
        }
    });
    return G_SOURCE_REMOVE;
}

std::optional<lyn_request_initiating_result_e> CServiceReports::TakePostponed()
{
    const std::lock_guard lock(m_Mutex);
    if (m_Postponed.empty()) {
        return std::nullopt;
    }
    const lyn_request_initiating_result_e result = m_Postponed.front();
    m_Postponed.erase(m_Postponed.begin());
    return result;
}

CServiceReports::RequestCall::RequestCall(std::shared_ptr<CServiceReports> reports)
    : m_pReports(std::move(reports))
{
    const std::lock_guard lock(m_pReports->m_Mutex);
    m_pReports->m_Postponed.reserve(EXPECTED_POSTPONED);
    ++m_pReports->m_RequestCalls;
}

CServiceReports::RequestCall::~RequestCall()
{
    m_pReports->EndRequestCall();
}

}  // namespace lyn
