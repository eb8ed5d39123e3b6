// SPDX-License-Identifier: Apache-2.0
#include "Requester/ExchangeData/CNodLinkExchangeData.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "Common/Failure.h"
#include "Common/JsonText.h"
#include "Common/TvFile.h"
#include "Common/Util.h"

namespace lyn {
namespace {

constexpr const char* FULL_VIEW = "screenmirroring_fullview";
constexpr const char* MULTI_VIEW = "screenmirroring_multiview";
constexpr const char* SOUND = "soundmirroring";

constexpr std::size_t MOST_META_DATA = 1U << 20U;

// What a phone is shown as, by the product's own type and icon.
struct Appearance {
    int type;
    int icon;
};

Appearance MapAppearance(Appearance own)
{
    if (own.type == 41 && own.icon == 2) {
        return {6, 4};
    }
    if (own.type == 23) {
        return {6, 5};
    }
    return own;
}

bool Lists(const Json::Value& metaData, const char* array, const std::string& appId)
{
    const Json::Value& apps = metaData[array];
    return std::any_of(apps.begin(), apps.end(), [&](const Json::Value& app) { return app.asString() == appId; });
}

}  // namespace

CNodLinkExchangeData::CNodLinkExchangeData(std::string data) : m_Data(std::move(data)) {}

std::string CNodLinkExchangeData::GetExchangeData(const std::string& dataType)
{
    return dataType == "mirroringType" ? BuildMirroringTypeData() : BuildControlData();
}

std::string CNodLinkExchangeData::GetServiceType()
{
    return "nodLink" + m_Data;
}

std::string CNodLinkExchangeData::BuildControlData()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    std::string text = LynUtil::JsonToString(BuildCommonData());
    LYN_LOGI("<Not Error> data : %s", text.c_str());
    return text;
}

void CNodLinkExchangeData::AddAddresses(Json::Value& message) const
{
    CExchangeData::AddAddresses(message);
    message["BtMac"] = GetBtAddress();
}

std::string CNodLinkExchangeData::BuildMirroringTypeData()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const Json::Value source = LynUtil::StringToJson(m_Data);
    Json::Value message;
    message["type"] = "reqService";
    message["service"] = "screen";
    message["view"] = "multi";
    message["BtMac"] = GetBtAddress();

    const std::string mirroringType = GetMirroringTypeFromAppId(source["packageName"].asString());
    if (mirroringType == SOUND) {
        message["service"] = "sound";
        message["view"] = "full";
    } else if (mirroringType == FULL_VIEW) {
        message["view"] = "full";
    }
    return LynUtil::JsonToString(message);
}

std::string CNodLinkExchangeData::GetMirroringTypeFromAppId(const std::string& appId) const
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    std::optional<std::string> text = ReadTvFile(m_MetaDataRwPath.c_str(), MOST_META_DATA + 1);
    if (!text) {
        LYN_LOGE("Fail to open %s from RW", m_MetaDataRwPath.c_str());
        text = ReadTvFile(m_MetaDataPath.c_str(), MOST_META_DATA + 1);
    }
    if (!text) {
        LogAndThrow<LynExceptionInternal>("fail to open meta_data file");
    }
    LYN_LOGI("%s", "open meta data file successfully");
    if (text->size() > MOST_META_DATA) {
        LogAndThrow<LynExceptionInternal>("meta_data file is too long");
    }
    Json::Value metaData;
    std::string error;
    if (!FromJsonText(*text, metaData, error)) {
        LogAndThrow<LynExceptionInternal>(error);
    }
    if (Lists(metaData, FULL_VIEW, appId)) {
        return FULL_VIEW;
    }
    return Lists(metaData, SOUND, appId) ? SOUND : MULTI_VIEW;
}

int CNodLinkExchangeData::GetDeviceType() const
{
    const int type = CExchangeData::GetDeviceType();
    const int icon = CExchangeData::GetDeviceIcon();
    return MapAppearance({type, icon}).type;
}

int CNodLinkExchangeData::GetDeviceIcon() const
{
    const int type = CExchangeData::GetDeviceType();
    const int icon = CExchangeData::GetDeviceIcon();
    return MapAppearance({type, icon}).icon;
}

}  // namespace lyn
