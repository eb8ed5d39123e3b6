// SPDX-License-Identifier: Apache-2.0
#include "Requester/ExchangeData/CExchangeData.h"

#include "Common/Failure.h"
#include "Common/PlatformCodes.h"
#include "Common/PlatformText.h"
#include "Common/Util.h"
#include "Requester/ExchangeData/P2PListenChannel.h"
#include "lyn_platform/bluetooth.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/wifi.h"

namespace lyn {
namespace {

struct WifiDirectDeinitializer {
    WifiDirectDeinitializer() = default;
    ~WifiDirectDeinitializer() { wifi_direct_deinitialize(); }
    WifiDirectDeinitializer(const WifiDirectDeinitializer&) = delete;
    WifiDirectDeinitializer& operator=(const WifiDirectDeinitializer&) = delete;
};

}  // namespace

std::string CExchangeData::GetExchangeData(const std::string& /*dataType*/)
{
    LYN_LOGI("%s", "Not implemented");
    return {};
}

void CExchangeData::SetExtraData(const std::string& extraData)
{
    m_ExtraData = extraData;
}

std::string CExchangeData::GetExtraData() const
{
    return m_ExtraData;
}

std::string CExchangeData::BuildControlData()
{
    return {};
}

std::string CExchangeData::GetServiceType()
{
    return "default";
}

Json::Value CExchangeData::BuildCommonData()
{
    Json::Value message;
    message["type"] = GetServiceType();
    AddAddresses(message);
    message["P2PChannel"] = std::to_string(GetP2PListenChannel());
    message["displayName"] = GetTvName();
    message["deviceType"] = std::to_string(GetDeviceType());
    message["deviceIcon"] = std::to_string(GetDeviceIcon());
    return message;
}

void CExchangeData::AddAddresses(Json::Value& message) const
{
    message["P2PMac"] = GetP2PMac();
}

std::string CExchangeData::GetTvName() const
{
    const PlatformText name(vconf_get_str("db/menu/network/devicename/tv_name"));
    if (!name) {
        LogAndThrow<LynExceptionInternal>("Fail to get tv name");
    }
    return name.get();
}

std::string CExchangeData::GetBtAddress() const
{
    char* buffer = nullptr;
    if (bt_adapter_get_address(&buffer) != PLATFORM_OK || buffer == nullptr) {
        LogAndThrow<LynExceptionInternal>("btAddress is nullptr");
    }
    return PlatformText(buffer).get();
}

std::string CExchangeData::GetP2PMac() const
{
    if (wifi_direct_initialize() != PLATFORM_OK) {
        LogAndThrow<LynExceptionInternal>("Fail to wifi_direct_initialize");
    }
    const WifiDirectDeinitializer deinitializer;
    char* buffer = nullptr;
    if (wifi_direct_get_mac_address(&buffer) != PLATFORM_OK) {
        LogAndThrow<LynExceptionInternal>("Fail to wifi_direct_get_mac_address");
    }
    if (buffer == nullptr) {
        LogAndThrow<LynExceptionInternal>("p2p_addr is nullptr");
    }
    return PlatformText(buffer).get();
}

int CExchangeData::GetP2PListenChannel() const
{
    const int setting = ReadP2PListenChannelSetting();
    if (setting == P2P_LISTEN_SOCIAL) {
        LYN_LOGI("%s", "Listen on social channel");
        return P2P_DEFAULT_CHANNEL;
    }
    if (setting != P2P_LISTEN_CONNECTED_AP) {
        LogAndThrow<LynExceptionInternal>("p2p_listen_channel is unknown");
    }
    const std::optional<int> frequency = ReadConnectedFrequency();
    if (!frequency) {
        LYN_LOGI("%s", "Not connected ap, listen channel is 1");
        return P2P_DEFAULT_CHANNEL;
    }
    return ConvertFreqToChannerl(*frequency);
}

int CExchangeData::ConvertFreqToChannerl(int frequency) const
{
    constexpr int channelWidth = 5;
    if (frequency >= 2412 && frequency <= 2472) {
        return (frequency - 2412) / channelWidth + 1;
    }
    if (frequency >= 2473 && frequency <= 2483) {
        return -1;  // Kept: between the channels is no error, the phone is told "-1".
    }
    if (frequency == 2484) {
        return 14;
    }
    if (frequency >= 5170 && frequency <= 5825) {
        return (frequency - 5170) / channelWidth + 34;
    }
    LogAndThrow<LynExceptionInternal>("wrong frequency range");
}

int CExchangeData::GetDeviceIcon() const
{
    if (!m_DeviceIcon) {
        m_DeviceIcon = LynUtil::GetIntFmsValue("com.calyxon/featureconf/devicename.icon_index");
    }
    return *m_DeviceIcon;
}

int CExchangeData::GetDeviceType() const
{
    if (!m_DeviceType) {
        m_DeviceType = LynUtil::GetIntFmsValue("com.calyxon/featureconf/devicename.device_type_index");
    }
    return *m_DeviceType;
}

}  // namespace lyn
