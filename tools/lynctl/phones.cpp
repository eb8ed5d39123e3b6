// SPDX-License-Identifier: Apache-2.0
#include "phones.h"

#include <json/json.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace lynctl {

namespace {

std::string Text(const char* text)
{
    return text ? text : "";
}

std::string TextMember(const Json::Value& object, const char* name)
{
    const Json::Value& member = object[name];
    return member.isString() ? member.asString() : "";
}

/// The object in the text, or an empty one.
Json::Value ParseObject(std::string_view text)
{
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value parsed;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &parsed, nullptr) && parsed.isObject()) {
            return parsed;
        }
    } catch (const Json::Exception&) {  // nested too deep
    }
    return Json::Value(Json::objectValue);
}

}  // namespace

Sighting Sighting::From(const lyn_device_info_t& info)
{
    return {Text(info.name), Text(info.address), Text(info.unique_id), Text(info.extra_data), info.rssi};
}

Sighting Sighting::From(const char* json)
{
    const Json::Value object = ParseObject(json ? json : "");
    const Json::Value& rssi = object["RSSI"];
    return {TextMember(object, "Name"), TextMember(object, "Address"), TextMember(object, "UniqueID"),
            TextMember(object, "ExtraData"), rssi.isInt() ? rssi.asInt() : 0};
}

NodlinkFacts NodlinkFacts::From(const std::string& extra)
{
    const Json::Value object = ParseObject(extra);
    const Json::Value& available = object["sm_available"];
    NodlinkFacts facts{TextMember(object, "device_type"), "", TextMember(object, "nodlink_version")};
    if (available.isInt()) {
        facts.mirroring = available.asInt() != 0 ? "yes" : "no";
    }
    return facts;
}

Phones::Noted Phones::Add(const Sighting& sighting, double seconds)
{
    ++m_advertisements;
    const auto same = [&](const Phone& phone) { return phone.address == sighting.address; };
    auto phone = std::find_if(m_phones.begin(), m_phones.end(), same);
    News news = News::none;
    if (phone == m_phones.end()) {
        const auto quieter = [](const Phone& a, const Phone& b) { return a.lastSeen < b.lastSeen; };
        if (m_phones.size() == kMost) {
            m_phones.erase(std::min_element(m_phones.begin(), m_phones.end(), quieter));
        }
        phone = m_phones.emplace(m_phones.end());
        news = News::added;
    } else if (phone->name != sighting.name || phone->id != sighting.id || phone->extra != sighting.extra) {
        news = News::changed;
    }
    static_cast<Sighting&>(*phone) = sighting;
    phone->lastSeen = seconds;
    ++phone->count;
    return {*phone, news};
}

}  // namespace lynctl
