// SPDX-License-Identifier: Apache-2.0
#include "Requester/ExchangeData/CScreenMirroringExchangeData.h"

#include <fstream>

#include "Common/TvFile.h"
#include "Common/Util.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr const char* APP_ID_FILE = "/opt/etc/.lyn_appid";

// Empty when nothing can be read.
std::string ReadWord(std::ifstream& file)
{
    std::string word;
    file.exceptions(std::ios::badbit);  // Else want of memory would look like an empty file.
    try {
        file >> word;
    } catch (const std::ios_base::failure&) {
        // As an empty file, from which this is no different for the phone.
    }
    return word;
}

void AddAppLaunch(Json::Value& message)
{
    std::ifstream file = OpenTvFile(APP_ID_FILE);
    if (!file.is_open()) {
        return;
    }
    const std::string appId = ReadWord(file);
    message["appLaunch"] = appId;
    LYN_LOGI("app id in /opt/etc/.lyn_appid : %s", appId.c_str());
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
    AddAppLaunch(message);
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
