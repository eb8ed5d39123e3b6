// SPDX-License-Identifier: Apache-2.0
//
// The "nodlink" service, out of service while the device cannot serve.
#pragma once

#include "Service/CService.h"

namespace lyn {

class CNodLinkService : public CService {
public:
    CNodLinkService();
    CNodLinkService(const std::string& serviceName, const StateChangedCb& stateChangeCb);
    ~CNodLinkService() override;

    lyn_error_e Init() override;
    lyn_error_e Deinit() override;
};

}  // namespace lyn
