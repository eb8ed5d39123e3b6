// SPDX-License-Identifier: Apache-2.0
#include "Service/CKovService.h"

#include "Requester/CKovRequester.h"
#include "Scanner/CKovScanner.h"
#include "lyn_service_log.h"

namespace lyn {

CKovService::CKovService() : CKovService("", nullptr) {}

CKovService::CKovService(const std::string& serviceName, const StateChangedCb& stateChangeCb)
    : CService(serviceName, stateChangeCb)
{
}

CKovService::~CKovService() = default;

lyn_error_e CKovService::Init()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return InitVariant<CKovScanner, CKovRequester>([this] { return CService::Init(); });
}

lyn_error_e CKovService::Deinit()
{
    return DeinitVariant();
}

}  // namespace lyn
