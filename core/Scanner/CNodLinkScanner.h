// SPDX-License-Identifier: Apache-2.0
//
// Scanner of NodLink phones and AV devices. They give no name and no unique id; what their advertising
// packet says becomes the extra data. The TV does not advertise itself for them.
#pragma once

#include <string>

#include "Scanner/CScanner.h"

namespace lyn {

class CNodLinkScanner : public CScanner {
public:
    CNodLinkScanner();
    CNodLinkScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb);

    bool StartScan() override;
    bool StopScan() override;
    void StartAdvertisement(int interval) override;
    void StopAdvertisement() override;

    // Readers of manufacturer data of at least 14 bytes; they throw LynExceptionNotValidDevice.
    std::string GetVersion(const char* data) const;
    int GetScreeeMirroringAvalaiable(const char* data) const;
    std::string GetDeviceType(const char* data) const;

    /// One JSON object. Throws LynExceptionNotValidDevice for a device that is none of ours.
    std::string BuildExtraData(bt_adapter_le_device_scan_result_info_s* info) const;

protected:
    void OnLeScanResult(int result, bt_adapter_le_device_scan_result_info_s* info) override;

private:
    /// GetDeviceType() and BuildExtraData() without the throw; no type for a device that is none of ours.
    const std::string* FindDeviceType(const char* data) const;
    Reading<std::string> ReadExtraData(const bt_adapter_le_device_scan_result_info_s& info) const;

    int m_ScanInterval = 1000;
    int m_ScanWindow = 500;
    std::string m_AvDeviceType = "av";
    std::string m_MobileDeviceType = "mobile";
};

}  // namespace lyn
