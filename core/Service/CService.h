// SPDX-License-Identifier: Apache-2.0
//
// What all services share. A public operation packs its work into an event for the state machine, which
// runs it on the calling thread or refuses it. Reports of the parts find the service by its token, and keep it
// while they are delivered.
//
// Unusable until Init() of the variant has installed scanner, requester and state machine. Operations may
// be called from any thread; StartScan(), StopScan() and RequestInitiating() take turns.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "Common/PlatformCodes.h"
#include "FSM/IServiceFSM.h"
#include "Requester/CRequester.h"
#include "Scanner/IScanner.h"
#include "Service/IService.h"
#include "lyn_platform/bluetooth.h"

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
    void Open() override;
    void Retire() override;

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
    /// LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR for a text that is no name of a result.
    lyn_request_initiating_result_e ConvertResultToErrCode(const std::string& text);

protected:
    /// Init() of every variant: Bluetooth, scanner, requester, then `initFsm` for the state machine. What it
    /// began is undone when a step throws. LYN_ERROR_INTERNAL, and nothing made, without Bluetooth.
    template <typename Scanner, typename Requester, typename InitFsm>
    lyn_error_e InitVariant(const InitFsm& initFsm)
    {
        if (bt_product_init() != PLATFORM_OK) {
            LYN_LOGE("%s", "fail to bt_product_init");
            return LYN_ERROR_INTERNAL;
        }
        const auto giveBack = [](CService*) { bt_product_deinit(); };
        std::unique_ptr<CService, decltype(giveBack)> product(this, giveBack);
        SetScanner(new Scanner(DeviceFoundReport(), ScanStateReport()));
        SetRequester(new Requester(RequestResultReport()));
        const lyn_error_e result = initFsm();
        static_cast<void>(product.release());  // From now on Deinit() gives it back.
        return result;
    }

    /// Deinit() of every variant. Scanner, requester and state machine stay until destruction.
    lyn_error_e DeinitVariant();

private:
    /// The service as its parts know it, which may be there when the service is gone.
    struct Self {
        std::atomic<bool> isOpen{false};
        std::atomic<bool> isRetired{false};
        std::weak_ptr<CService> service;  ///< Set before isOpen.
    };

    /// Keeps the service during a report of its parts, up to the call of the application, which may destroy it:
    /// that takes effect at once.
    class Keeper;

    // What the parts report to. Nothing happens when the service is gone.
    DeviceFoundCb DeviceFoundReport() const;
    RequestResultCb RequestResultReport() const;
    ScanStateChangedCb ScanStateReport() const;

    void InitResultMap();
    std::shared_ptr<IServiceFSM> GetFsm() const;
    IScanner& GetScanner(const char* function = __builtin_FUNCTION()) const;
    /// Keeps the others of the three operations out. Throws LynExceptionInvalidState for one that would move the
    /// machine from inside its own report.
    std::unique_lock<std::recursive_mutex> TakeTurn(LynFsmEvent event);
    void StopAdvertisementAndScan();
    [[noreturn]] void FailOperation(const char* text, const char* function = __builtin_FUNCTION()) const;
    template <typename Cb>
    void Store(Cb& member, Cb cb);
    template <typename Cb>
    Cb Stored(const Cb& member) const;

    const std::string m_ServiceName;
    const StateChangedCb m_StateChangeCb;
    std::shared_ptr<IScanner> m_pScanner;
    std::shared_ptr<IRequester> m_pRequester;
    std::shared_ptr<IServiceFSM> m_pFsm;
    std::map<std::string, lyn_request_initiating_result_e> m_ResultMap;
    const std::shared_ptr<Self> m_pSelf = std::make_shared<Self>();
    std::recursive_mutex m_TurnMutex;  ///< An application may stop or request inside a scan's start ("dummy").

    mutable std::mutex m_CallbackMutex;  ///< Guards these two.
    DeviceFoundCb m_DeviceFoundCb;
    RequestInitiatingResultCb m_RequestResultCb;
};

}  // namespace lyn
