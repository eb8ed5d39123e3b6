// SPDX-License-Identifier: Apache-2.0
//
// What the service manager asks of a service, and what a service's parts report to it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "FSM/LynFsmEvent.h"
#include "Scanner/ScanState.h"
#include "lyn_service.h"

namespace lyn {

using RequestInitiatingResultCb = std::function<void(lyn_request_initiating_result_e)>;

class IService : public std::enable_shared_from_this<IService> {
public:
    IService() = default;
    virtual ~IService() = default;
    IService(const IService&) = delete;
    IService& operator=(const IService&) = delete;

    /// The object's own address, as the application's handle.
    virtual void* GetHandle() = 0;
    virtual lyn_error_e Init() = 0;
    virtual lyn_error_e Deinit() = 0;
    virtual void ProcessEvent(LynFsmEvent event, EventArgPtr arg) = 0;
    virtual std::string GetServiceName() = 0;
    virtual void StartScan(const DeviceFoundCb& cb) = 0;
    virtual void StopScan() = 0;
    virtual void RequestInitiating(const RequestInitiatingResultCb& cb, const std::string& deviceId,
                                   const std::string& extraData) = 0;
    virtual void StartAdvertisement(int interval) = 0;
    virtual void StopAdvertisement() = 0;
    virtual void SetNodlinkVersion(const std::string& version) = 0;
    virtual std::string GetRequestIntiatingErrorString(lyn_request_initiating_result_e result) = 0;
    virtual void OnStateChanged(lyn_state_e state) = 0;
    virtual void OnRequestResult(lyn_request_initiating_result_e result) = 0;
    virtual void OnDeviceFound(const lyn_device_info_t& info) = 0;
    virtual int GetNodlinkType() = 0;

    /// The service is held by its shared pointer: from now on its parts' reports reach it, on whatever thread.
    virtual void Open() = 0;
    /// The application has destroyed the service: nothing is reported to it any more, and every further event is
    /// refused. A call in progress may still hold the object.
    virtual void Retire() = 0;
};

}  // namespace lyn
