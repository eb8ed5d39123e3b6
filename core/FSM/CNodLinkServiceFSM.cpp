// SPDX-License-Identifier: Apache-2.0
#include "FSM/CNodLinkServiceFSM.h"

#include <utility>

#include "lyn_service_log.h"

namespace lyn {
namespace {

void DeleteChecker(CDeviceStateChecekr* checker)
{
    LYN_LOGD("%s", "in custom deleter of CDeviceStateChecekr");
    checker->Deinit();
    delete checker;
}

}  // namespace

CNodLinkServiceFSM::~CNodLinkServiceFSM() = default;

lyn_error_e CNodLinkServiceFSM::Init(StateChangedCb stateChangedCb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    m_pDeviceStateChecker = std::shared_ptr<CDeviceStateChecekr>(new CDeviceStateChecekr, DeleteChecker);
    m_pDeviceStateChecker->Init([weak = weak_from_this()](bool enabled) {
        if (const auto self = weak.lock()) {
            static_cast<CNodLinkServiceFSM&>(*self).OnDeviceEnableStateChaned(enabled);
        }
    });
    if (!m_pDeviceStateChecker->IsEnableState()) {
        // No callback is stored yet, so this throws: a service that cannot serve is not created.
        TransitState(LYN_STATE_NOT_READY);
    }
    return CServiceFSM::Init(std::move(stateChangedCb));
}

void CNodLinkServiceFSM::Start()
{
    m_pDeviceStateChecker->Start();
}

void CNodLinkServiceFSM::OnDeviceEnableStateChaned(bool enabled)
{
    TransitState(enabled ? LYN_STATE_READY : LYN_STATE_NOT_READY);
}

}  // namespace lyn
