// SPDX-License-Identifier: Apache-2.0
//
// Scanner of phones that carry a marker and a unique id in their advertising packet and their name in
// the scan response. The features differ in the marker and in how the name is read.
//
//   advertising packet, manufacturer data of company 117     scan response, manufacturer data
//   byte 1        the feature's marker                        bytes 2 on   name, up to a zero byte
//   bytes 2..23   unique id, as it stands
#pragma once

#include <string>

#include "Scanner/CScanner.h"

namespace lyn {

class CPhoneScanner : public CScanner {
public:
    bool StartScan() override;
    bool StopScan() override;

    /// Throws LynExceptionNotValidDevice unless company and marker are the feature's; `data` is read for company
    /// 117 only, and then up to byte 1.
    void CheckVaildAdvertisement(int manufacturerId, const char* data) const;
    /// Throws LynExceptionNotValidDevice when the scan response is missing or holds no name.
    std::string GetDeviceName(bt_adapter_le_device_scan_result_info_s* info, int length);
    /// Throws LynExceptionNotValidDevice for a phone that is not of the feature, or says too little.
    std::string GetDeviceId(bt_adapter_le_device_scan_result_info_s* info, int length) const;

    /// `data` is the manufacturer data of the scan response. Throws LynExceptionNotValidDevice.
    virtual std::string ConvertManufacturerDataToDeviceName(const char* data, unsigned int length) = 0;

protected:
    /// What tells one feature's phones from the others'.
    struct Feature {
        char marker;
        const char* advTriggerKey;
        const char* rejection;
    };

    CPhoneScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb, const Feature& feature);

    void OnLeScanResult(int result, bt_adapter_le_device_scan_result_info_s* info) override;

    /// Logs the data in the name of its caller and reads the name behind the first two bytes; length is at
    /// least 2.
    static std::string ReadName(const char* data, unsigned int length,
                                const char* function = __builtin_FUNCTION());

private:
    bool IsMarked(int manufacturerId, const char* data) const;
    /// GetDeviceId() without the throw.
    Reading<std::string> ReadDeviceId(const bt_adapter_le_device_scan_result_info_s& info) const;

    Feature m_Feature;
};

}  // namespace lyn
