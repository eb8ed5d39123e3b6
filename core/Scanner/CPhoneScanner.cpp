// SPDX-License-Identifier: Apache-2.0
#include "Scanner/CPhoneScanner.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "Common/Failure.h"
#include "Common/PlatformCodes.h"
#include "Common/Util.h"
#include "Scanner/AdvertisingLayout.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr int MARKER_OFFSET = 1;
constexpr int UNIQUE_ID_OFFSET = 2;
constexpr int UNIQUE_ID_LENGTH = 22;
constexpr int SHORTEST_DATA = UNIQUE_ID_OFFSET + UNIQUE_ID_LENGTH;
constexpr unsigned int NAME_OFFSET = 2;

}  // namespace

CPhoneScanner::CPhoneScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb,
                             const Feature& feature)
    : CScanner(std::move(deviceFoundCb), std::move(scanStateChangedCb), feature.advTriggerKey),
      m_Feature(feature)
{
}

bool CPhoneScanner::StartScan()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const char* const function = __func__;
    return UseScan([this, function] {
        if (bt_adapter_le_set_scan_mode(0) != PLATFORM_OK) {
            LYN_LOGE_AS(function, "%s", "bt_adapter_le_set_scan_mode");
            return false;
        }
        return StartPlatformScan(function);
    });
}

bool CPhoneScanner::StopScan()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return StopPlatformScan();
}

bool CPhoneScanner::IsMarked(int manufacturerId, const char* data) const
{
    return manufacturerId == COMPANY_ID && data[MARKER_OFFSET] == m_Feature.marker;
}

void CPhoneScanner::CheckVaildAdvertisement(int manufacturerId, const char* data) const
{
    if (!IsMarked(manufacturerId, data)) {
        throw LynExceptionNotValidDevice(m_Feature.rejection);
    }
}

std::string CPhoneScanner::ReadName(const char* data, unsigned int length, const char* function)
{
    const char* const begin = data + NAME_OFFSET;
    const char* const end = data + length;
    std::string name(begin, std::find(begin, end, '\0'));
    LYN_LOGI_AS(function, "%s / %s / %u",
                LynUtil::ConvertByteStreamToString(data, static_cast<int>(length)).c_str(), name.c_str(), length);
    return name;
}

std::string CPhoneScanner::GetDeviceName(bt_adapter_le_device_scan_result_info_s* info, int /*length*/)
{
    if (info->scan_data == nullptr) {
        LogAndThrow<LynExceptionNotValidDevice>("scan data is nullptr");
    }
    int company = 0;
    int size = 0;
    const std::shared_ptr<char> data =
        GetManufDataFromScanResult(info, BT_ADAPTER_LE_PACKET_SCAN_RESPONSE, company, size);
    return ConvertManufacturerDataToDeviceName(data.get(), static_cast<unsigned int>(size));
}

Reading<std::string> CPhoneScanner::ReadDeviceId(const bt_adapter_le_device_scan_result_info_s& info) const
{
    const Reading<ManufacturerData> reading = ReadAdvertising(info, "GetDeviceId");
    if (const Rejection* const rejection = RejectionOf(reading)) {
        return *rejection;
    }
    const auto& advertised = std::get<ManufacturerData>(reading);
    const char* const data = advertised.data.get();
    if (advertised.length < SHORTEST_DATA || !IsMarked(advertised.company, data)) {
        return Rejection{m_Feature.rejection};
    }
    return std::string(data + UNIQUE_ID_OFFSET, UNIQUE_ID_LENGTH);
}

std::string CPhoneScanner::GetDeviceId(bt_adapter_le_device_scan_result_info_s* info, int /*length*/) const
{
    return OrThrow(ReadDeviceId(*info));
}

void CPhoneScanner::OnLeScanResult(int /*result*/, bt_adapter_le_device_scan_result_info_s* info)
{
    if (!IsUsable(info)) {
        return;
    }
    try {
        const Reading<std::string> uniqueId = ReadDeviceId(*info);
        if (const Rejection* const rejection = RejectionOf(uniqueId)) {
            Drop(*rejection);
            return;
        }
        const std::string name = GetDeviceName(info, info->scan_data_len);
        NotifyDeviceFound(name, info->remote_address, std::get<std::string>(uniqueId), info->rssi, "");
    } catch (const LynExceptionNotValidDevice&) {
        // A phone that says too little; what there is to say has been logged.
    } catch (const std::exception& e) {
        LYN_LOGE("exception %s", e.what());
    }
}

}  // namespace lyn
