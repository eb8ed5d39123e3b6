// SPDX-License-Identifier: Apache-2.0
//
// Turns a service name into a service.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "Service/IService.h"

namespace lyn {

class IServiceBuilder {
public:
    IServiceBuilder() = default;
    virtual ~IServiceBuilder() = default;
    IServiceBuilder(const IServiceBuilder&) = delete;
    IServiceBuilder& operator=(const IServiceBuilder&) = delete;

    /// The caller owns the result.
    virtual IService* BuildService(const std::string& name, const StateChangedCb& cb) = 0;
};

class CServiceBuilder : public IServiceBuilder {
public:
    using ServiceBuilderFunc = std::function<IService*(const StateChangedCb&)>;

    /// The new service has been through Init(), whatever that returned; what Init() throws leaves, and
    /// nothing stays behind. Throws LynExceptionInvalidParam for an unknown name.
    IService* BuildService(const std::string& name, const StateChangedCb& cb) override;

    void InitServiceBuilderMap();
    ServiceBuilderFunc GetServiceBuilder(const std::string& name);

    IService* BuildDummyService(const StateChangedCb& cb);
    IService* BuildMirroringService(const StateChangedCb& cb);
    IService* BuildNodLinkService(const StateChangedCb& cb);
    IService* BuildKovService(const StateChangedCb& cb);

private:
    std::map<std::string, ServiceBuilderFunc> m_ServiceBuilderMap;
};

}  // namespace lyn
