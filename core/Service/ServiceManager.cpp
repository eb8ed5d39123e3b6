// SPDX-License-Identifier: Apache-2.0
#include "Service/ServiceManager.h"

#include <utility>

#include "Common/Failure.h"
#include "Service/ServiceBuilder.h"

namespace lyn {
namespace {

void DeleteService(IService* service)
{
    if (service == nullptr) {
        return;
    }
    LYN_LOGI("%s", "In custom deleter of IService");
    service->Deinit();
    delete service;
}

void CheckHandle(lyn_service_h handle, const char* function = __builtin_FUNCTION(), int line = __builtin_LINE())
{
    if (handle == nullptr) {
        LogAndThrow<LynExceptionInvalidHandle>("service is NULL", __FILE__, function, line);
    }
}

}  // namespace

CServiceManager::CServiceManager() = default;

// An object that is destroyed after this one may still call: it finds no service.
CServiceManager::~CServiceManager()
{
    m_pService.reset();
}

CServiceManager& CServiceManager::GetInstance()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    static CServiceManager instance;
    return instance;
}

void* CServiceManager::CreateService(const std::string& name, const StateChangedCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const std::lock_guard lock(m_Mutex);
    if (m_pService) {
        LYN_LOGE("%s", "already service is running");
        throw LynExceptionAlreadyDone("Already Done exception");
    }
    LYN_LOGI("create new sevice for %s", name.c_str());
    CServiceBuilder builder;
    m_pService = std::shared_ptr<IService>(builder.BuildService(name, cb), DeleteService);
    if (!m_pService) {
        LogAndThrow<LynExceptionInternal>("fail to alloc service");
    }
    return m_pService->GetHandle();
}

void CServiceManager::DestroyService(lyn_service_h handle)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const std::lock_guard lock(m_Mutex);
    CheckHandle(handle);
    if (handle != m_pService.get()) {
        throw LynExceptionInvalidHandle("not mached service");
    }
    m_pService->StopReports();
    m_pService.reset();
}

std::shared_ptr<IService> CServiceManager::_GetService(lyn_service_h handle)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const std::lock_guard lock(m_Mutex);
    if (handle == nullptr || handle != m_pService.get()) {
        LYN_LOGW("%s", "no service");
        throw LynExceptionInvalidParam();
    }
    return m_pService;
}

void CServiceManager::StartScan(lyn_service_h handle, const DeviceFoundCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    if (!cb) {
        LogAndThrow<LynExceptionInvalidParam>("deviceFoundCb is NULL");
    }
    _GetService(handle)->StartScan(cb);
}

void CServiceManager::StopScan(lyn_service_h handle)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    _GetService(handle)->StopScan();
}

void CServiceManager::RequestInitiating(lyn_service_h handle, const std::string& deviceId,
                                        const std::string& extraData, const RequestInitiatingResultCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    if (!cb) {
        LogAndThrow<LynExceptionInvalidParam>("requestIntiatingResultCb is NULL");
    }
    _GetService(handle)->RequestInitiating(cb, deviceId, extraData);
}

void CServiceManager::StartAdvertisement(lyn_service_h handle, int interval)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    _GetService(handle)->StartAdvertisement(interval);
}

void CServiceManager::StopAdvertisement(lyn_service_h handle)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    _GetService(handle)->StopAdvertisement();
}

void CServiceManager::SetNodlinkVersion(lyn_service_h handle, const std::string& version)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    _GetService(handle)->SetNodlinkVersion(version);
}

int CServiceManager::GetNodlinkType(lyn_service_h handle)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    return _GetService(handle)->GetNodlinkType();
}

std::string CServiceManager::GetRequestIntiatingErrorString(lyn_service_h handle,
                                                            lyn_request_initiating_result_e result)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    return _GetService(handle)->GetRequestIntiatingErrorString(result);
}

}  // namespace lyn
