// SPDX-License-Identifier: Apache-2.0
//
// The state machine of the "nodlink" service: NOT_READY while the device cannot serve, whatever else
// the service is doing.
#pragma once

#include <memory>

#include "FSM/CDeviceStateChecker.h"
#include "FSM/CServiceFSM.h"

namespace lyn {

class CNodLinkServiceFSM : public CServiceFSM {
public:
    CNodLinkServiceFSM() = default;
    ~CNodLinkServiceFSM() override;

    /// Must be held by a shared pointer. Throws LynExceptionInternal "m_StateChangedCb is nullptr" when the
    /// device is not enabled.
    lyn_error_e Init(StateChangedCb stateChangedCb) override;
    void Start() override;

    void OnDeviceEnableStateChaned(bool enabled);

private:
    std::shared_ptr<CDeviceStateChecekr> m_pDeviceStateChecker;
};

}  // namespace lyn
