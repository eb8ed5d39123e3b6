// SPDX-License-Identifier: Apache-2.0
#include "Service/CDummyService.h"

#include <utility>

#include "Requester/CRequester.h"
#include "Scanner/CScanner.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

class CDummyScanner : public CScanner {
public:
    CDummyScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb)
        : CScanner(std::move(deviceFoundCb), std::move(scanStateChangedCb), "")
    {
    }

    bool StartScan() override
    {
        NotifyScanStateChanged(SCAN_STATE_STARTED);
        NotifyDeviceFound("myDevice", "11:22:33:44:55:66", "q1w2e3r4t5y6", -48, R"({"appid":"music"})");
        return true;
    }

    bool StopScan() override
    {
        NotifyScanStateChanged(SCAN_STATE_STOPPED);
        return true;
    }

    void StartAdvertisement(int /*interval*/) override {}
    void StopAdvertisement() override {}
};

class CDummyRequester : public CRequester {
public:
    explicit CDummyRequester(RequestResultCb requestResultCb) : CRequester(std::move(requestResultCb), "", "") {}

    bool RequestInitiating(const std::string& /*deviceAddress*/, const std::string& extraData) override
    {
        const auto exchange = BeginExchange(extraData);
        if (exchange) {
            NotifyRequestResult(*exchange, "Success");
        }
        return exchange != nullptr;
    }
};

}  // namespace

CDummyService::CDummyService() : CDummyService("", nullptr) {}

CDummyService::CDummyService(const std::string& serviceName, const StateChangedCb& stateChangeCb)
    : CService(serviceName, stateChangeCb)
{
}

CDummyService::~CDummyService() = default;

lyn_error_e CDummyService::Init()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return InitVariant<CDummyScanner, CDummyRequester>([this] { return CService::Init(); });
}

lyn_error_e CDummyService::Deinit()
{
    return DeinitVariant();
}

}  // namespace lyn
