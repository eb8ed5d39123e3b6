// SPDX-License-Identifier: Apache-2.0
//
// What all services share. A public operation packs its work into an event for the state machine, which
// runs it on the calling thread or refuses it. Reports of the parts go through CServiceReports.
//
// Unusable until Init() of the variant has installed scanner, requester and state machine. Operations may
// be called from any thread.
#pragma once

#include <memory>
#include <string>

#include "FSM/IServiceFSM.h"
#include "Requester/CRequester.h"
#include "Scanner/IScanner.h"
#include "Service/BtProduct.h"
#include "Service/CServiceReports.h"
#include "Service/IService.h"
#include "Service/RequestResults.h"

namespace lyn {

class CService : public IService {
public:
    CService(std::string serviceName, StateChangedCb stateChangeCb);
    /// Releases scanner, requester and state machine, in this order.
    ~CService() override;

    void* GetHandle() override;
    /// Installs a plain state machine.
    lyn_error_e Init() override;
    lyn_error_e Deinit() override;
    void ProcessEvent(LynFsmEvent event, EventArgPtr arg) override;
    std::string GetServiceName() override;
    void StartScan(const DeviceFoundCb& cb) override;
    void StopScan() override;
    void RequestInitiating(const RequestInitiatingResultCb& cb, const std::string& deviceId,
                           const std::string& extraData) override;
    void StartAdvertisement(int interval) override;
    void StopAdvertisement() override;
    void SetNodlinkVersion(const std::string& version) override;
    std::string GetRequestIntiatingErrorString(lyn_request_initiating_result_e result) override;
    void OnStateChanged(lyn_state_e state) override;
    void OnRequestResult(lyn_request_initiating_result_e result) override;
    void OnDeviceFound(const lyn_device_info_t& info) override;
    int GetNodlinkType() override;
    void StopReports() override;

    // Each takes ownership, and throws LynExceptionInternal for null.
    lyn_error_e SetFsm(IServiceFSM* pFsm);
    void SetRequester(IRequester* pRequester);
    void SetScanner(IScanner* pScanner);

    // The work of the events.
    void OnStartScan();
    void OnStopScan();
    void OnRequestInitiating(const std::string& deviceId, const std::string& extraData);
    void OnStartAdvertisement(int interval);
    void OnStopAdvertisement();

    /// Only SCAN_STATE_STOPPED matters. Nothing is thrown.
    void OnScanStateChangedCallback(ScanState state);
    lyn_request_initiating_result_e ConvertResultToErrCode(const std::string& text);

protected:
    /// Init() of every variant: Bluetooth, scanner, requester, then `initFsm` for the state machine. What it
    /// began is undone when a step throws. LYN_ERROR_INTERNAL, and nothing made, without Bluetooth.
    template <typename Scanner, typename Requester, typename InitFsm>
    lyn_error_e InitVariant(const InitFsm& initFsm)
    {
        BtProduct product;
        if (!product.IsReady()) {
            return LYN_ERROR_INTERNAL;
        }
        SetScanner(new Scanner(DeviceFoundReport(), ScanStateReport()));
        SetRequester(new Requester(RequestResultReport()));
        const lyn_error_e result = initFsm();
        product.Keep();
        return result;
    }

    /// Deinit() of every variant. Scanner, requester and state machine stay until destruction.
    lyn_error_e DeinitVariant();

private:
    // What the parts report to; the first two live on by themselves when the service is gone.
    DeviceFoundCb DeviceFoundReport() const;
    RequestResultCb RequestResultReport() const;
    ScanStateChangedCb ScanStateReport();

    struct RequesterDeleter {
        void operator()(IRequester* requester) const;
    };

    void InitResultMap();
    IScanner& GetScanner() const;
    void StopAdvertisementAndScan();

    std::string m_ServiceName;
    std::shared_ptr<CServiceReports> m_pReports;
    std::shared_ptr<IScanner> m_pScanner;
    std::unique_ptr<IRequester, RequesterDeleter> m_pRequester;
    std::shared_ptr<const RequestResultMap> m_ResultMap;
    bool m_bRetired = false;  ///< Guarded by the lock on live objects.
};

}  // namespace lyn
