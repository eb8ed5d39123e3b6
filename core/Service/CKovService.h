// SPDX-License-Identifier: Apache-2.0
//
// The "kov" service.
#pragma once

#include "Service/CService.h"

namespace lyn {

class CKovService : public CService {
public:
    CKovService();
    CKovService(const std::string& serviceName, const StateChangedCb& stateChangeCb);
    ~CKovService() override;

    lyn_error_e Init() override;
    lyn_error_e Deinit() override;
};

}  // namespace lyn
