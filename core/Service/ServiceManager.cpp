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

std::shared_ptr<IService> Build(const std::string& name, const StateChangedCb& cb)
{
    constexpr const char* operation = "CreateService";
    LYN_LOGI_AS(operation, "create new sevice for %s", name.c_str());
    CServiceBuilder builder;
    std::shared_ptr<IService> service(builder.BuildService(name, cb), DeleteService);
    if (!service) {
        LogAndThrow<LynExceptionInternal>("fail to alloc service", __FILE__, operation);
    }
    return service;
}

void CheckHandle(lyn_service_h handle, const char* function = __builtin_FUNCTION(), int line = __builtin_LINE())
{
    if (handle == nullptr) {
        LogAndThrow<LynExceptionInvalidHandle>("service is NULL", __FILE__, function, line);
    }
}

}  // namespace

CServiceManager::CServiceManager() = default;

// Other threads, and objects that are destroyed after this one, may still call: they find no service, and create
// none.
CServiceManager::~CServiceManager()
{
    if (const auto service = End()) {
        service->Retire();
    }
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
    if (!Reserve()) {
        LYN_LOGE("%s", "already service is running");
        throw LynExceptionAlreadyDone("Already Done exception");
    }
    std::shared_ptr<IService> service;
    try {
        service = Build(name, cb);
    } catch (...) {
        Occupy(nullptr);
        throw;
    }
    Occupy(service);
    service->Open();
    return service->GetHandle();
}

bool CServiceManager::Reserve()
{
    const std::lock_guard lock(m_Mutex);
    if (m_pService || m_bCreating || m_bEnded) {
        return false;
    }
    m_bCreating = true;
    return true;
}

void CServiceManager::Occupy(const std::shared_ptr<IService>& service)
{
    const std::lock_guard lock(m_Mutex);
    m_bCreating = false;
    if (!m_bEnded) {
        m_pService = service;
    }
}

std::shared_ptr<IService> CServiceManager::End()
{
    const std::lock_guard lock(m_Mutex);
    m_bEnded = true;
    return std::exchange(m_pService, nullptr);
}

void CServiceManager::DestroyService(lyn_service_h handle)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    CheckHandle(handle);
    const std::shared_ptr<IService> service = Take(handle);
    if (!service) {
        throw LynExceptionInvalidHandle("not mached service");
    }
    service->Retire();
}

std::shared_ptr<IService> CServiceManager::Take(lyn_service_h handle)
{
    const std::lock_guard lock(m_Mutex);
    return handle == m_pService.get() ? std::exchange(m_pService, nullptr) : nullptr;
}

std::shared_ptr<IService> CServiceManager::Find(lyn_service_h handle)
{
    const std::lock_guard lock(m_Mutex);
    return handle == m_pService.get() ? m_pService : nullptr;
}

std::shared_ptr<IService> CServiceManager::_GetService(lyn_service_h handle)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    std::shared_ptr<IService> service = Find(handle);
    if (!service) {
        LYN_LOGW("%s", "no service");
        throw LynExceptionInvalidParam();
    }
    return service;
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
