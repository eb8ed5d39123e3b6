// SPDX-License-Identifier: Apache-2.0
//
// The way of reports from a service's parts to the application. It is shared with the scanner, the
// requester and the state machine, because a report may be under way on the main loop while another
// thread, or the application's own callback, destroys the service: after Stop() every report finds
// nothing and does nothing.
//
// The lock is held to store and to copy, never during a call. A device or result callback is the last
// step of its report and runs with nothing held, so that a service destroyed there is gone at once. A
// state callback runs inside a transition: the state machine then lives until the transition ends.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Common/LiveObject.h"
#include "FSM/IServiceFSM.h"
#include "Service/IService.h"

namespace lyn {

class CServiceReports : public std::enable_shared_from_this<CServiceReports> {
public:
    explicit CServiceReports(StateChangedCb stateChangeCb);

    void SetDeviceFoundCb(const DeviceFoundCb& cb);
    void SetRequestResultCb(const RequestInitiatingResultCb& cb);
    /// Returns the state machine that was there before.
    std::shared_ptr<IServiceFSM> SetFsm(std::shared_ptr<IServiceFSM> fsm);
    std::shared_ptr<IServiceFSM> GetFsm() const;

    void ReportDeviceFound(const lyn_device_info_t& info) const;
    void ReportState(lyn_state_e state) const;
    /// Moves the state machine out of REQUESTING, then tells the application. While a call that starts a
    /// request is in progress, which may not have moved the machine to REQUESTING yet, the report waits for
    /// its end and is then posted to the main loop again.
    void ReportRequestResult(lyn_request_initiating_result_e result);

    /// Ends all reports; the state machine is not given out any more.
    void Stop();
    /// Stop(), and returns the state machine.
    std::shared_ptr<IServiceFSM> Close();

    /// A call that starts a request, from its first step to its last.
    class RequestCall {
    public:
        explicit RequestCall(std::shared_ptr<CServiceReports> reports);
        ~RequestCall();
        RequestCall(const RequestCall&) = delete;
        RequestCall& operator=(const RequestCall&) = delete;

    private:
        std::shared_ptr<CServiceReports> m_pReports;
    };

private:
    bool Postpone(lyn_request_initiating_result_e result);
    std::optional<lyn_request_initiating_result_e> TakePostponed();
    void EndRequestCall();
    static int ReportPostponed(void* userData);
    void RaiseResultEvent() const;

    mutable std::mutex m_Mutex;
    StateChangedCb m_StateChangeCb;
    DeviceFoundCb m_DeviceFoundCb;
    RequestInitiatingResultCb m_RequestResultCb;
    std::shared_ptr<IServiceFSM> m_pFsm;
    std::vector<lyn_request_initiating_result_e> m_Postponed;
    int m_RequestCalls = 0;
    bool m_bClosed = false;
    LiveObject<CServiceReports> m_Live{this};
};

}  // namespace lyn
