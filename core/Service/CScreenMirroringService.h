// SPDX-License-Identifier: Apache-2.0
//
// The "mirroring" service.
#pragma once

#include "Service/CService.h"

namespace lyn {

class CScreenMirroringService : public CService {
public:
    CScreenMirroringService();
    CScreenMirroringService(const std::string& serviceName, const StateChangedCb& stateChangeCb);
    ~CScreenMirroringService() override;

    lyn_error_e Init() override;
    lyn_error_e Deinit() override;
};

}  // namespace lyn
