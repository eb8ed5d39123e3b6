// SPDX-License-Identifier: Apache-2.0
#include "Requester/CNodLinkRequester.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "Common/LynException.h"
#include "Common/PlatformCodes.h"
#include "Common/RunGuarded.h"
#include "Common/Util.h"
#include "Requester/ExchangeData/CNodLinkExchangeData.h"
#include "lyn_platform/settings.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr const char* SERVICE_UUID = "95e60810-8ad0-11e6-bdf4-4b1e122d00d0";
constexpr const char* CHARACTERISTIC_UUID = "7909f901-904c-11e6-bdf4-9bbdfdaad9d9";
constexpr const char* KEY_MIRRORING_MODE = "memory/lyn/nodlink/mirroring_mode";

enum MirroringMode : int { MULTI_VIEW = 0, FULL_VIEW = 1, SOUND = 2 };

// One kernel-log line of what is passing; it must not stop the exchange.
void PrintKmsg(const char* function, const char* what, const std::string& text)
{
    RunGuarded(
        [&] { KmsgPrint(LOG_TAG, function, "[%s] %s :%s", LynUtil::GetCurTime().c_str(), what, text.c_str()); });
}

// A phone's answer as JSON, none when it is plain text.
std::optional<Json::Value> ParseAnswer(const std::string& answer)
{
    try {
        return LynUtil::StringToJson(answer);
    } catch (const LynExceptionJsonParsing&) {
        return std::nullopt;
    }
}

}  // namespace

CNodLinkRequester::CNodLinkRequester() : CNodLinkRequester(nullptr) {}

CNodLinkRequester::CNodLinkRequester(RequestResultCb requestResultCb)
    : CRequester(std::move(requestResultCb), SERVICE_UUID, CHARACTERISTIC_UUID)
{
    InitSupportedVersionList();
}

CNodLinkRequester::~CNodLinkRequester()
{
    DeinitSupportedVersionList();
}

void CNodLinkRequester::InitSupportedVersionList()
{
    m_SupportedVersionList = {"2.0", "3.0"};
}

void CNodLinkRequester::DeinitSupportedVersionList()
{
    m_SupportedVersionList.clear();
}

bool CNodLinkRequester::RequestInitiating(const std::string& deviceAddress, const std::string& extraData)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    PrintKmsg(__func__, "addres", deviceAddress);
    return CRequester::RequestInitiating(deviceAddress, extraData);
}

void CNodLinkRequester::NotifyRequestResult(Exchange& exchange, const std::string& result)
{
    PrintKmsg(__func__, "result", result);
    CRequester::NotifyRequestResult(exchange, result);
}

void CNodLinkRequester::SetNodLinkVersion(const std::string& version)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const auto& supported = m_SupportedVersionList;
    if (std::find(supported.begin(), supported.end(), version) == supported.end()) {
        LYN_LOGE("not supported version, input : %s, supported : \"2.0\", \"3.0\"", version.c_str());
        throw version.c_str();  // Kept: callers catch the bare text, not an exception of the library's family.
    }
    std::string replaced = version;
    const std::lock_guard lock(m_Mutex);
    m_Version.swap(replaced);
}

std::string CNodLinkRequester::GetVersion() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Version;
}

int CNodLinkRequester::GetNodlinkType()
{
    const auto exchange = Latest();
    return exchange ? exchange->m_NodlinkType.load() : MULTI_VIEW;
}

void CNodLinkRequester::OnMtuChanged(Exchange& exchange, bt_gatt_client_h /*client*/,
                                     const bt_gatt_client_att_mtu_info_s* /*mtuInfo*/)
{
    try {
        const std::string version = GetVersion();
        CNodLinkExchangeData exchangeData(version == "2.0" ? "" : version);
        const std::string data = exchangeData.GetExchangeData("control");
        if (!IsLatest(exchange)) {
            return;
        }
        PrintKmsg(__func__, "data", data);
        WriteControlData(exchange, data);
    } catch (const std::exception& e) {
        Fail(exchange, e);
    }
}

void CNodLinkRequester::OnCharateristicValueChangedCb(Exchange& exchange, const char* value, int length)
{
    if (value == nullptr || length < 1) {
        LYN_LOGE("%s", "wrong data");
        return;
    }
    try {
        HandleAnswer(exchange, value);
    } catch (const std::exception& e) {
        Fail(exchange, e);
    }
}

void CNodLinkRequester::HandleAnswer(Exchange& exchange, const std::string& answer)
{
    const std::optional<Json::Value> message = ParseAnswer(answer);
    if (!message) {
        HandleResult(exchange, answer);
        return;
    }
    const Json::Value& constMessage = *message;
    HandleMessage(exchange, constMessage["type"].asString(), answer);
}

void CNodLinkRequester::HandleMessage(Exchange& exchange, const std::string& type, const std::string& answer)
{
    if (type != "fgApp") {
        NotifyRequestResult(exchange, "CommandErr");
        FinishAndDisconnect(exchange);
        return;
    }
    CNodLinkExchangeData exchangeData(answer);
    const std::string message = exchangeData.GetExchangeData("mirroringType");
    SetMirroringMode(exchange, message);
    WriteControlData(exchange, message);
}

void CNodLinkRequester::HandleResult(Exchange& exchange, const std::string& result)
{
    LYN_LOGI_AS("OnCharateristicValueChangedCb", "data : %s", result.c_str());
    exchange.m_bRequestDone = true;
    NotifyRequestResult(exchange, result);
    if (result == "Success") {
        WriteScreenMirroringModeToVconf(exchange.m_NodlinkType);
    }
    FinishAndDisconnect(exchange);
}

void CNodLinkRequester::SetMirroringMode(Exchange& exchange, const std::string& data)
{
    LYN_LOGI("data : %s", data.c_str());
    const Json::Value message = LynUtil::StringToJson(data);
    int mode = SOUND;
    if (message["service"].asString() == "screen") {
        mode = message["view"].asString() == "full" ? FULL_VIEW : MULTI_VIEW;
    }
    exchange.m_NodlinkType = mode;
    LYN_LOGI("screen mirroring mode : %d", mode);
}

void CNodLinkRequester::WriteScreenMirroringModeToVconf(int mode)
{
    LYN_LOGI("screen mirroring mode : %d", mode);
    if (vconf_set_int(KEY_MIRRORING_MODE, mode) != PLATFORM_OK) {
        LYN_LOGE("%s", "fail to set memory/lyn/nodlink/mirroring_mode");
    }
}

}  // namespace lyn
