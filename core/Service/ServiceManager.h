// SPDX-License-Identifier: Apache-2.0
//
// The process-wide owner of the one live service. It checks every handle that comes in and forwards the
// operation. Any thread: the lock is held to look the service up, to put it there and to take it away. Building,
// releasing and forwarded calls run without it; a forwarded call keeps the service alive until it ends.
//
// Operations throw the exceptions of Common/LynException.h, and what the service throws.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Common/LynException.h"
#include "Service/IService.h"

namespace lyn {

class CServiceManager {
public:
    static CServiceManager& GetInstance();

    CServiceManager(const CServiceManager&) = delete;
    CServiceManager& operator=(const CServiceManager&) = delete;

    void* CreateService(const std::string& name, const StateChangedCb& cb);
    void DestroyService(lyn_service_h handle);
    void StartScan(lyn_service_h handle, const DeviceFoundCb& cb);
    void StopScan(lyn_service_h handle);
    void RequestInitiating(lyn_service_h handle, const std::string& deviceId, const std::string& extraData,
                           const RequestInitiatingResultCb& cb);
    void StartAdvertisement(lyn_service_h handle, int interval);
    void StopAdvertisement(lyn_service_h handle);
    void SetNodlinkVersion(lyn_service_h handle, const std::string& version);
    int GetNodlinkType(lyn_service_h handle);
    std::string GetRequestIntiatingErrorString(lyn_service_h handle, lyn_request_initiating_result_e result);

private:
    CServiceManager();
    ~CServiceManager();

    std::shared_ptr<IService> _GetService(lyn_service_h handle);  // NOLINT(bugprone-reserved-identifier)

    /// False when there is a service, or one is being created.
    bool Reserve();
    void Occupy(const std::shared_ptr<IService>& service);
    std::shared_ptr<IService> Take(lyn_service_h handle);
    std::shared_ptr<IService> Find(lyn_service_h handle);
    std::shared_ptr<IService> End();

    std::shared_ptr<IService> m_pService;
    bool m_bCreating = false;
    bool m_bEnded = false;  ///< The process ends.
    std::recursive_mutex m_Mutex;
};

}  // namespace lyn
