// SPDX-License-Identifier: Apache-2.0
#include "Common/Util.h"

#include <array>
#include <chrono>
#include <ctime>

#include "Common/Failure.h"
#include "Common/JsonText.h"
#include "Common/PlatformCodes.h"
#include "Common/PlatformSwitch.h"
#include "lyn_platform/bluetooth.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/system_info.h"
#include "lyn_service_log.h"

namespace lyn::LynUtil {
namespace {

constexpr const char* KEY_WIFI_FREQUENCY = "memory/wifi/frequency";
constexpr const char* KEY_NETWORK_SPEAKER = "memory/acm/networkspeaker_status";
constexpr int FIRST_FREQUENCY_ABOVE_2_4GHZ = 2496;

PlatformSwitch<bool> s_Boost;

// A key that cannot be read counts as 0.
int ReadSetting(const char* key)
{
    int value = 0;
    return vconf_get_int(key, &value) == PLATFORM_OK ? value : 0;
}

bool SwitchBoost(bool enable)
{
    constexpr const char* operation = "SetBtPerformanceBoost";
    if (enable && IsAcmWorkOn2_4Ghz()) {
        LYN_LOGI_AS(operation, "%s", "ACM is working on 2.4Ghz");
        return false;
    }
    LYN_LOGI_AS(operation, "bt_adapter_le_enable_le_scan_performance_boost : %d", static_cast<int>(enable));
    const int result = bt_adapter_le_enable_le_scan_performance_boost(enable);
    if (result != PLATFORM_OK) {
        LYN_LOGE_AS(operation, "ERROR: bt_adapter_le_enable_le_scan_performance_boost ret %d", result);
    }
    return result == PLATFORM_OK;
}

}  // namespace

std::string ConvertByteStreamToString(const char* data, int length)
{
    constexpr const char* digits = "0123456789abcdef";
    constexpr std::size_t charactersPerByte = 3;

    // Unsigned on purpose: a length below 1 wraps to a size that no string has.
    std::string text(charactersPerByte * static_cast<std::size_t>(length) - 1, ' ');
    for (std::size_t i = 0; i < static_cast<std::size_t>(length); ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        text[charactersPerByte * i] = digits[byte >> 4U];
        text[charactersPerByte * i + 1] = digits[byte & 0x0FU];
    }
    return text;
}

int GetIntFmsValue(const std::string& key)
{
    int value = 0;
    if (system_info_get_custom_int(key.c_str(), &value) != PLATFORM_OK) {
        LogAndThrow<LynExceptionOperationFailed>("Fail to get fms key");
    }
    LYN_LOGI("key : %s, value : %d", key.c_str(), value);
    return value;
}

bool IsAcmWorkOn2_4Ghz()
{
    const int frequency = ReadSetting(KEY_WIFI_FREQUENCY);
    if (frequency >= FIRST_FREQUENCY_ABOVE_2_4GHZ) {
        LYN_LOGD("frequency : %d", frequency);
        return false;
    }
    const int status = ReadSetting(KEY_NETWORK_SPEAKER);
    if (status == 0) {
        LYN_LOGD("%s", "acm status is NETWORKSPEKAER_STOP");
        return false;
    }
    LYN_LOGE("frequency : %d, acm status : %d (O : NETWORKSPEKAER_STOP)", frequency, status);
    return true;
}

void SetBtPerformanceBoost(bool enable)
{
    if (!s_Boost.Wish(enable, SwitchBoost)) {
        LYN_LOGI("already %d", static_cast<int>(enable));
    }
}

std::string GetCurTime()
{
    const std::time_t now = std::chrono::system_clock::to_time_t(
        std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now()));
    std::array<char, 64> text{};
    tzset();  // ctime_r() alone keeps to the zone that it has seen first.
    const char* written = ctime_r(&now, text.data());
    const std::string line = written != nullptr ? written : "";
    return "Current time : " + line.substr(0, line.find('\n'));
}

Json::Value StringToJson(const std::string& text)
{
    LYN_LOGD("%s", text.c_str());
    Json::Value value;
    std::string error;
    if (!FromJsonText(text, value, error)) {
        LogAndThrow<LynExceptionJsonParsing>(error);
    }
    return value;
}

std::string JsonToString(const Json::Value& value)
{
    std::string text = ToJsonText(value);
    LYN_LOGD("%s", text.c_str());
    return text;
}

}  // namespace lyn::LynUtil
