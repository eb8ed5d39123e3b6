// SPDX-License-Identifier: Apache-2.0
#include "Requester/ExchangeData/CScreenMirroringExchangeData.h"

#include <algorithm>
#include <optional>

#include "Common/TvFile.h"
#include "Common/Util.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr const char* APP_ID_FILE = "/opt/etc/.lyn_appid";
constexpr std::size_t MOST_APP_ID = 256;

// The first word of the file. None without the file, and none where an id would have to be cut.
// Logged in the name of the caller.
std::optional<std::string> ReadAppId(const char* function = __builtin_FUNCTION())
{
    constexpr const char* blanks = " \t\n\v\f\r";
    const std::optional<std::string> text = ReadTvFile(APP_ID_FILE, MOST_APP_ID + 1);
    if (!text) {
        return std::nullopt;
    }
    const std::size_t start = std::min(text->find_first_not_of(blanks), text->size());
    const std::size_t end = std::min(text->find_first_of(blanks, start), text->size());
    if (end > MOST_APP_ID) {
        LYN_LOGE_AS(function, "app id in %s is not within its first %zu bytes", APP_ID_FILE, MOST_APP_ID);
        return std::nullopt;
    }
    return text->substr(start, end - start);
}

void AddMembers(Json::Value& message, const std::string& extraData)
{
    if (extraData.empty()) {
        return;
    }
    const Json::Value extra = LynUtil::StringToJson(extraData);
    for (const std::string& name : extra.getMemberNames()) {
        message[name] = extra[name];
    }
}

}  // namespace

std::string CScreenMirroringExchangeData::GetExchangeData(const std::string& /*dataType*/)
{
    return BuildControlData();
}

std::string CScreenMirroringExchangeData::BuildControlData()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    Json::Value message = BuildCommonData();
    if (const std::optional<std::string> appId = ReadAppId()) {
        message["appLaunch"] = *appId;
        LYN_LOGI("app id in /opt/etc/.lyn_appid : %s", appId->c_str());
    }
    AddMembers(message, GetExtraData());
    std::string text = LynUtil::JsonToString(message);
    LYN_LOGI("data : %s", text.c_str());
    return text;
}

std::string CScreenMirroringExchangeData::GetServiceType()
{
    return "mirroring";
}

}  // namespace lyn
