// SPDX-License-Identifier: Apache-2.0
#include <limits>

#include "Files.h"
#include "ScenarioParts.h"
#include "Simulator.h"

namespace lyn::simulator {

namespace {

constexpr auto kLeastInt = std::numeric_limits<int>::min();
constexpr auto kMostInt = std::numeric_limits<int>::max();
constexpr int kMostMegahertz = 100'000;

std::optional<std::string> AddressOrNull(const JsonField& field)
{
    return field.IsNull() ? std::nullopt : std::optional(field.Address());
}

void ParseBluetooth(const JsonField& field, TvScript& tv)
{
    field.OnlyMembers({"on", "address"});
    if (const auto on = field.Find("on")) {
        tv.bluetoothOn = on->Bool();
    }
    if (const auto address = field.Find("address")) {
        tv.bluetoothAddress = AddressOrNull(*address);
    }
}

SettingValue ParseSetting(const JsonField& field)
{
    if (field.IsText()) {
        return field.Text();
    }
    if (!field.IsInteger()) {
        field.Fail("must be an integer, a text, or null");
    }
    return field.Integer(kLeastInt, kMostInt);
}

void ParseSettings(const JsonField& field, TvScript& tv)
{
    for (const std::string& key : field.MemberNames()) {
        const JsonField value = field.Get(key.c_str());
        tv.settings.erase(key);
        if (!value.IsNull()) {
            tv.settings[key] = ParseSetting(value);
        }
    }
}

void ParseSystemInfo(const JsonField& field, TvScript& tv)
{
    for (const std::string& key : field.MemberNames()) {
        const JsonField value = field.Get(key.c_str());
        tv.systemInfo.erase(key);
        if (!value.IsNull()) {
            tv.systemInfo[key] = value.Integer(kLeastInt, kMostInt);
        }
    }
}

AccessPoint ParseAccessPoint(const JsonField& field)
{
    field.OnlyMembers({"bssid", "frequency"});
    return {AddressOrNull(field.Get("bssid")), field.Get("frequency").Integer(0, kMostMegahertz)};
}

void ParseWifi(const JsonField& field, TvScript& tv)
{
    field.OnlyMembers({"accessPoint", "directAddress"});
    if (const auto ap = field.Find("accessPoint")) {
        tv.accessPoint = ap->IsNull() ? std::nullopt : std::optional(ParseAccessPoint(*ap));
    }
    if (const auto address = field.Find("directAddress")) {
        tv.wifiDirectAddress = AddressOrNull(*address);
    }
}

void ParseFiles(const JsonField& field, TvScript& tv)
{
    Json::StreamWriterBuilder writer;
    for (const std::string& path : field.MemberNames()) {
        const JsonField content = field.Get(path.c_str());
        try {
            CheckTvPath(path);
        } catch (const std::invalid_argument&) {
            content.Fail("a file's name must be an absolute path without \"..\"");
        }
        if (!content.IsText() && !content.IsObject() && !content.IsArray()) {
            content.Fail("must be a text, or an object or array to be written as JSON");
        }
        tv.files[path] = content.IsText() ? content.Text() : Json::writeString(writer, content.Value()) + "\n";
    }
}

}  // namespace

TvScript ParseTv(const JsonField& field)
{
    field.OnlyMembers({"bluetooth", "settings", "systemInfo", "wifi", "powerState", "files", "timeline"});
    TvScript tv;
    if (const auto bluetooth = field.Find("bluetooth")) {
        ParseBluetooth(*bluetooth, tv);
    }
    if (const auto settings = field.Find("settings")) {
        ParseSettings(*settings, tv);
    }
    if (const auto systemInfo = field.Find("systemInfo")) {
        ParseSystemInfo(*systemInfo, tv);
    }
    if (const auto wifi = field.Find("wifi")) {
        ParseWifi(*wifi, tv);
    }
    if (const auto state = field.Find("powerState")) {
        tv.powerState = state->Integer(0, kMostInt);
    }
    if (const auto files = field.Find("files")) {
        ParseFiles(*files, tv);
    }
    if (const auto timeline = field.Find("timeline")) {
        tv.timeline = ParseTimeline(*timeline);
    }
    return tv;
}

}  // namespace lyn::simulator
