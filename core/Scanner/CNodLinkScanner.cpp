// SPDX-License-Identifier: Apache-2.0
#include "Scanner/CNodLinkScanner.h"

#include <json/value.h>

#include <utility>

#include "Common/Failure.h"
#include "Common/JsonText.h"
#include "Common/RunGuarded.h"
#include "Common/Util.h"
#include "Scanner/AdvertisingLayout.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr int KIND_OFFSET = 1;
constexpr char KIND_PHONE = 13;
constexpr char KIND_AV = 4;
constexpr int VERSION_OFFSET = 13;
constexpr int SHORTEST_DATA = VERSION_OFFSET + 1;
constexpr const char* NOT_NODLINK = "Not Nodlink device";

bool HasBits(char byte, unsigned mask)
{
    return (static_cast<unsigned char>(byte) & mask) == mask;
}

// A kernel-log line; a scan that has started or stopped has done so without it, too.
void PrintTime(const char* function)
{
    RunGuarded([&] { KmsgPrint(LOG_TAG, function, "[%s]", LynUtil::GetCurTime().c_str()); });
}

void CheckData(const char* data, const char* function = __builtin_FUNCTION())
{
    if (data == nullptr) {
        LogAndThrow<LynExceptionNotValidDevice>("data is nullptr", __FILE__, function);
    }
}

}  // namespace

CNodLinkScanner::CNodLinkScanner() : CNodLinkScanner(nullptr, nullptr) {}

CNodLinkScanner::CNodLinkScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb)
    : CScanner(std::move(deviceFoundCb), std::move(scanStateChangedCb), "")
{
}

bool CNodLinkScanner::StartScan()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const char* const function = __func__;
    const bool isStarted = UseScan([this, function] {
        bt_adapter_le_set_customized_scan_mode_with_scan_type(0, static_cast<float>(m_ScanInterval),
                                                              static_cast<float>(m_ScanWindow));
        return StartPlatformScan(function);
    });
    if (!isStarted) {
        return false;
    }
    PrintTime(__func__);
    return true;
}

bool CNodLinkScanner::StopScan()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (!StopPlatformScan()) {
        return false;
    }
    PrintTime(__func__);
    return true;
}

void CNodLinkScanner::StartAdvertisement(int /*interval*/)
{
    LYN_LOGW("%s", "Not supported");
}

void CNodLinkScanner::StopAdvertisement()
{
    LYN_LOGW("%s", "Not supported");
}

std::string CNodLinkScanner::GetVersion(const char* data) const
{
    return data[VERSION_OFFSET] == 0 ? "2.0" : "3.0";
}

int CNodLinkScanner::GetScreeeMirroringAvalaiable(const char* data) const
{
    CheckData(data);
    return HasBits(data[6], 0x01) ? 1 : 0;
}

const std::string* CNodLinkScanner::FindDeviceType(const char* data) const
{
    if (data[KIND_OFFSET] == KIND_PHONE && HasBits(data[5], 0x04)) {
        return &m_MobileDeviceType;
    }
    if (data[KIND_OFFSET] == KIND_AV && HasBits(data[2], 0x03) && HasBits(data[4], 0x20)) {
        return &m_AvDeviceType;
    }
    return nullptr;
}

std::string CNodLinkScanner::GetDeviceType(const char* data) const
{
    CheckData(data);
    const std::string* const deviceType = FindDeviceType(data);
    if (deviceType == nullptr) {
        throw LynExceptionNotValidDevice(NOT_NODLINK);
    }
    return *deviceType;
}

Reading<std::string> CNodLinkScanner::ReadExtraData(const bt_adapter_le_device_scan_result_info_s& info) const
{
    const Reading<ManufacturerData> reading = ReadAdvertising(info, "BuildExtraData");
    if (const Rejection* const rejection = RejectionOf(reading)) {
        return *rejection;
    }
    const auto& advertised = std::get<ManufacturerData>(reading);
    if (advertised.company != COMPANY_ID) {
        return Rejection{"Not Calyxon device"};
    }
    const char* const data = advertised.data.get();
    const std::string* const deviceType = advertised.length < SHORTEST_DATA ? nullptr : FindDeviceType(data);
    if (deviceType == nullptr) {
        return Rejection{NOT_NODLINK};
    }
    Json::Value extraData;
    extraData["device_type"] = *deviceType;
    if (*deviceType == m_MobileDeviceType) {
        extraData["sm_available"] = GetScreeeMirroringAvalaiable(data);
        extraData["nodlink_version"] = GetVersion(data);
    }
    return ToJsonText(extraData);
}

std::string CNodLinkScanner::BuildExtraData(bt_adapter_le_device_scan_result_info_s* info) const
{
    return OrThrow(ReadExtraData(*info));
}

void CNodLinkScanner::OnLeScanResult(int /*result*/, bt_adapter_le_device_scan_result_info_s* info)
{
    if (!IsUsable(info)) {
        return;
    }
    try {
        const Reading<std::string> reading = ReadExtraData(*info);
        if (const Rejection* const rejection = RejectionOf(reading)) {
            Drop(*rejection);
            return;
        }
        const auto& extraData = std::get<std::string>(reading);
        KmsgPrint(LOG_TAG, __func__, "[%s] address : %s, extra_data : %s", LynUtil::GetCurTime().c_str(),
                  info->remote_address, extraData.c_str());
        NotifyDeviceFound("", info->remote_address, "", info->rssi, extraData);
    } catch (const LynExceptionNotValidDevice&) {
        // What there is to say has been logged.
    } catch (const std::exception& e) {
        LYN_LOGE("exception %s", e.what());
    }
}

}  // namespace lyn
