// SPDX-License-Identifier: Apache-2.0
#include "Service/CScreenMirroringService.h"

#include "Requester/CScreenMirroringRequester.h"
#include "Scanner/CScreenMirroringScanner.h"
#include "lyn_service_log.h"

namespace lyn {

CScreenMirroringService::CScreenMirroringService() : CScreenMirroringService("", nullptr) {}

CScreenMirroringService::CScreenMirroringService(const std::string& serviceName,
                                                 const StateChangedCb& stateChangeCb)
    : CService(serviceName, stateChangeCb)
{
}

CScreenMirroringService::~CScreenMirroringService() = default;

lyn_error_e CScreenMirroringService::Init()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return InitVariant<CScreenMirroringScanner, CScreenMirroringRequester>([this] { return CService::Init(); });
}

lyn_error_e CScreenMirroringService::Deinit()
{
    return DeinitVariant();
}

}  // namespace lyn
