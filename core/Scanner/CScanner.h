// SPDX-License-Identifier: Apache-2.0
//
// What all scanners share: the two callables into the service, the manufacturer data of a scan result,
// and the TV's own advertisement, which is a settings key that the platform's advertising application
// watches (an interval to advertise, 0 to stop).
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "Common/LiveObject.h"
#include "Common/PlatformText.h"
#include "Scanner/IScanner.h"
#include "Scanner/Reading.h"
#include "lyn_platform/bluetooth.h"

namespace lyn {

class CScanner : public IScanner {
public:
    CScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb, std::string advTriggerKey);
    /// Does not stop a scan or an advertisement.
    ~CScanner() override;
    std::shared_ptr<void> Keep() { return weak_from_this().lock(); }

    bool StartScan() override;
    bool StopScan() override;
    void StartAdvertisement(int interval) override;
    void StopAdvertisement() override;
    /// Exceptions of the callback pass to the caller.
    void NotifyDeviceFound(const std::string& name, const std::string& address, const std::string& uniqueId,
                           int rssi, const std::string& extraData) override;
    void NotifyScanStateChanged(ScanState state) override;

    /// The manufacturer data of one packet, without the company identifier. Empty when the platform finds
    /// none; the two out values then keep what they held, whatever it has written. Throws
    /// LynExceptionInvalidParam for data that is null or empty.
    static std::shared_ptr<char> GetManufDataFromScanResult(bt_adapter_le_device_scan_result_info_s* info,
                                                            bt_adapter_le_packet_type_e packetType,
                                                            int& manufacturerId, int& length);
    /// Throws LynExceptionOperationFailed when the key cannot be written.
    void SetBleAdvertisementInterval(int interval);

protected:
    struct ManufacturerData {
        PlatformText data;  ///< Null when the platform finds none; the numbers are 0 then.
        int company = 0;
        int length = 0;
    };

    /// One scan result. Nothing is thrown but what is no standard exception.
    virtual void OnLeScanResult(int result, bt_adapter_le_device_scan_result_info_s* info);

    // What these log is logged in the name of their caller.

    /// Uses the platform's scan when another thread does not; true also when a later service has it.
    bool UseScan(const std::function<bool()>& use);
    /// Inside UseScan(): starts it, with the boost around it; false when it refuses. The scan mode is the
    /// caller's.
    bool StartPlatformScan(const char* function);
    bool StopPlatformScan(const char* function = __builtin_FUNCTION());

    /// False, with a log line, for a scan result that no scanner can use.
    static bool IsUsable(const bt_adapter_le_device_scan_result_info_s* info,
                         const char* function = __builtin_FUNCTION());
    /// The manufacturer data of the advertising packet; rejected with a log line when there is no such packet.
    static Reading<ManufacturerData> ReadAdvertising(const bt_adapter_le_device_scan_result_info_s& info,
                                                     const char* function);
    /// A defect is logged, any other rejection is not: nearly every advertisement in the air has one.
    static void Drop(const Rejection& rejection, const char* function = __builtin_FUNCTION());

private:
    static Reading<ManufacturerData> ReadManufacturerData(const bt_adapter_le_device_scan_result_info_s& info,
                                                          bt_adapter_le_packet_type_e packetType);
    static void ScanResultTrampoline(int result, bt_adapter_le_device_scan_result_info_s* info, void* userData);

    DeviceFoundCb m_DeviceFoundCallback;
    ScanStateChangedCb m_ScanStateChangedCallback;
    std::string m_AdvTriggerKey;
    std::atomic<bool> m_bAdvertising{false};
    LiveObject<CScanner> m_Live{*this};
};

}  // namespace lyn
