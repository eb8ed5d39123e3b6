// SPDX-License-Identifier: Apache-2.0
#include "Service/ServiceBuilder.h"

#include <memory>

#include "Common/LynException.h"
#include "Service/CDummyService.h"
#include "Service/CKovService.h"
#include "Service/CNodLinkService.h"
#include "Service/CScreenMirroringService.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

template <typename Service>
IService* Build(const char* name, const StateChangedCb& cb)
{
    auto service = std::make_unique<Service>(name, cb);
    service->Init();
    return service.release();
}

}  // namespace

IService* CServiceBuilder::BuildService(const std::string& name, const StateChangedCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    InitServiceBuilderMap();
    const ServiceBuilderFunc build = GetServiceBuilder(name);
    return build(cb);
}

void CServiceBuilder::InitServiceBuilderMap()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    m_ServiceBuilderMap.emplace("kov", [this](const StateChangedCb& cb) { return BuildKovService(cb); });
    m_ServiceBuilderMap.emplace("nodlink", [this](const StateChangedCb& cb) { return BuildNodLinkService(cb); });
    m_ServiceBuilderMap.emplace("mirroring",
                                [this](const StateChangedCb& cb) { return BuildMirroringService(cb); });
    m_ServiceBuilderMap.emplace("dummy", [this](const StateChangedCb& cb) { return BuildDummyService(cb); });
}

CServiceBuilder::ServiceBuilderFunc CServiceBuilder::GetServiceBuilder(const std::string& name)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const auto found = m_ServiceBuilderMap.find(name);
    if (found == m_ServiceBuilderMap.end()) {
        LYN_LOGE("%s is not defined service", name.c_str());
        throw LynExceptionInvalidParam("not defined service");
    }
    return found->second;
}

IService* CServiceBuilder::BuildDummyService(const StateChangedCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Build<CDummyService>("dummy", cb);
}

IService* CServiceBuilder::BuildMirroringService(const StateChangedCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Build<CScreenMirroringService>("mirroring", cb);
}

IService* CServiceBuilder::BuildNodLinkService(const StateChangedCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Build<CNodLinkService>("nodlink", cb);
}

IService* CServiceBuilder::BuildKovService(const StateChangedCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Build<CKovService>("kov", cb);
}

}  // namespace lyn
