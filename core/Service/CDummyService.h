// SPDX-License-Identifier: Apache-2.0
//
// A service without a radio: one fixed phone, which agrees to every request. For building and trying
// applications.
#pragma once

#include "Service/CService.h"

namespace lyn {

class CDummyService : public CService {
public:
    CDummyService();
    CDummyService(const std::string& serviceName, const StateChangedCb& stateChangeCb);
    ~CDummyService() override;

    lyn_error_e Init() override;
    lyn_error_e Deinit() override;
};

}  // namespace lyn
