// SPDX-License-Identifier: Apache-2.0
#include "Service/CNodLinkService.h"

#include "FSM/CNodLinkServiceFSM.h"
#include "Requester/CNodLinkRequester.h"
#include "Scanner/CNodLinkScanner.h"
#include "lyn_service_log.h"

namespace lyn {

CNodLinkService::CNodLinkService() : CNodLinkService("", nullptr) {}

CNodLinkService::CNodLinkService(const std::string& serviceName, const StateChangedCb& stateChangeCb)
    : CService(serviceName, stateChangeCb)
{
}

CNodLinkService::~CNodLinkService() = default;

lyn_error_e CNodLinkService::Init()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return InitVariant<CNodLinkScanner, CNodLinkRequester>([this] { return SetFsm(new CNodLinkServiceFSM); });
}

lyn_error_e CNodLinkService::Deinit()
{
    return DeinitVariant();
}

}  // namespace lyn
