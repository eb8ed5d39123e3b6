// SPDX-License-Identifier: Apache-2.0
#include "Scanner/CScanner.h"

#include <utility>

#include "Common/LynException.h"
#include "Common/PlatformCodes.h"
#include "Common/PlatformSlot.h"
#include "Common/Util.h"
#include "lyn_platform/settings.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

// The platform's scan. Starts and stops wait for each other, also for those of an earlier service. Never
// destroyed: the service that lives at process exit still needs it.
PlatformSlot& Scan()
{
    static auto* const slot = new PlatformSlot;
    return *slot;
}

}  // namespace

CScanner::CScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb, std::string advTriggerKey)
    : m_DeviceFoundCallback(std::move(deviceFoundCb)),
      m_ScanStateChangedCallback(std::move(scanStateChangedCb)),
      m_AdvTriggerKey(std::move(advTriggerKey))
{
}

CScanner::~CScanner() = default;

bool CScanner::StartScan()
{
    return true;
}

bool CScanner::StopScan()
{
    return true;
}

void CScanner::StartAdvertisement(int interval)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    SetBleAdvertisementInterval(interval);
    m_bAdvertising = true;
}

void CScanner::StopAdvertisement()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (!m_bAdvertising.exchange(false)) {
        return;
    }
    try {
        SetBleAdvertisementInterval(0);
    } catch (...) {
        m_bAdvertising = true;  // The next stop tries again.
        throw;
    }
}

void CScanner::NotifyDeviceFound(const std::string& name, const std::string& address, const std::string& uniqueId,
                                 int rssi, const std::string& extraData)
{
    if (!m_DeviceFoundCallback) {
        LYN_LOGE("%s", "m_DeviceFoundCallback is NULL");
        return;
    }
    lyn_device_info_t info{};
    info.name = name.empty() ? nullptr : name.c_str();
    info.address = address.c_str();
    info.unique_id = uniqueId.c_str();
    info.extra_data = extraData.c_str();
    info.rssi = rssi;
    LYN_LOGI("name : %s, address : %s, unique_id : %s, rssi : %d, extra_data : %s", Printable(info.name),
             info.address, info.unique_id, info.rssi, info.extra_data);
    m_DeviceFoundCallback(info);
}

void CScanner::NotifyScanStateChanged(ScanState state)
{
    if (!m_ScanStateChangedCallback) {
        LYN_LOGE("%s", "m_ScanStateChangedCallback is NULL");
        return;
    }
    m_ScanStateChangedCallback(state);
}

Reading<CScanner::ManufacturerData>
CScanner::ReadManufacturerData(const bt_adapter_le_device_scan_result_info_s& info,
                               bt_adapter_le_packet_type_e packetType)
{
    int company = 0;
    char* buffer = nullptr;
    int length = 0;
    const int result =
        bt_adapter_le_get_scan_result_manufacturer_data(&info, packetType, &company, &buffer, &length);
    if (result != PLATFORM_OK) {
        LYN_LOGE_AS("GetManufDataFromScanResult",
                    "bt_adapter_le_get_scan_result_manufacturer_data api failed [0x%04x]",
                    static_cast<unsigned>(result));
        return ManufacturerData{};
    }
    PlatformText data(buffer);
    if (!data) {
        return Rejection{"manufacturer data is null", true};
    }
    if (length < 1) {
        return Rejection{"lenth is less then 1", true};
    }
    return ManufacturerData{std::move(data), company, length};
}

std::shared_ptr<char> CScanner::GetManufDataFromScanResult(bt_adapter_le_device_scan_result_info_s* info,
                                                           bt_adapter_le_packet_type_e packetType,
                                                           int& manufacturerId, int& length)
{
    ManufacturerData found = OrThrow(ReadManufacturerData(*info, packetType));
    if (!found.data) {
        return {};
    }
    manufacturerId = found.company;
    length = found.length;
    return {std::move(found.data)};
}

void CScanner::SetBleAdvertisementInterval(int interval)
{
    LYN_LOGI("Interval : %d", interval);
    if (vconf_set_int(m_AdvTriggerKey.c_str(), interval) != PLATFORM_OK) {
        LYN_LOGE("vconf_set_int failed for key : %s", m_AdvTriggerKey.c_str());
        throw LynExceptionOperationFailed("Failed to set ble adv interval");
    }
}

void CScanner::OnLeScanResult(int /*result*/, bt_adapter_le_device_scan_result_info_s* /*info*/) {}

bool CScanner::IsUsable(const bt_adapter_le_device_scan_result_info_s* info, const char* function)
{
    if (info == nullptr) {
        LYN_LOGE_AS(function, "%s", "discInfo is NULL");
        return false;
    }
    if (info->remote_address == nullptr) {
        LYN_LOGE_AS(function, "%s", "disc_info->remote_address");
        return false;
    }
    return true;
}

Reading<CScanner::ManufacturerData> CScanner::ReadAdvertising(const bt_adapter_le_device_scan_result_info_s& info,
                                                              const char* function)
{
    if (info.adv_data == nullptr) {
        LYN_LOGE_AS(function, "%s", "adv data is nullptr");
        return Rejection{"adv data is nullptr"};
    }
    return ReadManufacturerData(info, BT_ADAPTER_LE_PACKET_ADVERTISING);
}

void CScanner::Drop(const Rejection& rejection, const char* function)
{
    if (rejection.isDefect) {
        LYN_LOGE_AS(function, "exception %s", rejection.reason);
    }
}

bool CScanner::UseScan(const std::function<bool()>& use)
{
    const auto result = Scan().Use({m_Live.Number(), 0}, [&] { return use() ? PLATFORM_OK : PLATFORM_OK + 1; });
    return result.value_or(PLATFORM_OK) == PLATFORM_OK;
}

bool CScanner::StartPlatformScan(const char* function)
{
    LynUtil::SetBtPerformanceBoost(true);
    const int result = bt_adapter_le_start_scan(ScanResultTrampoline, m_Live.UserData());
    if (result != PLATFORM_OK) {
        LynUtil::SetBtPerformanceBoost(false);
        LYN_LOGE_AS(function, "bt_adapter_le_start_scan failed with [0x%04x]", static_cast<unsigned>(result));
        return false;
    }
    return true;
}

bool CScanner::StopPlatformScan(const char* function)
{
    return UseScan([&] {
        LynUtil::SetBtPerformanceBoost(false);
        const int result = bt_adapter_le_stop_scan();
        if (result != PLATFORM_OK && result != BT_ERROR_NO_SCAN_RUNNING) {
            LYN_LOGE_AS(function, "bt_adapter_le_stop_scan failed with [0x%04x]", static_cast<unsigned>(result));
            return false;
        }
        return true;
    });
}

void CScanner::ScanResultTrampoline(int result, bt_adapter_le_device_scan_result_info_s* info, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return;
    }
    CallLive<CScanner>(userData, [&](CScanner& scanner) { scanner.OnLeScanResult(result, info); });
}

}  // namespace lyn
