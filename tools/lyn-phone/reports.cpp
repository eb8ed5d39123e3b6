// SPDX-License-Identifier: Apache-2.0
#include "reports.h"

#include <cstdio>

#include "json_line.h"
#include "terminal.h"
#include "text.h"

namespace lynphone {

namespace {

std::string_view Text(const lyn::simulator::Bytes& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

std::string Hex(std::string_view bytes)
{
    constexpr const char* kDigits = "0123456789abcdef";
    std::string hex;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += kDigits[byte >> 4];
        hex += kDigits[byte & 0x0F];
    }
    return hex;
}

void Reports::Advertising(const std::string& adapter, const std::string& address,
                          const lyn::simulator::Phone& phone) const
{
    const std::string packet = Hex(Text(phone.advertising));
    const std::string response = phone.scanResponse ? Hex(Text(*phone.scanResponse)) : "";
    Json::Value event = lynctl::Event("advertising", m_loop.Seconds());
    event["adapter"] = adapter;
    event["address"] = address;
    event["packet"] = packet;
    event["response"] = response;
    Print(event, "advertising as " + address + " on " + adapter + "\n           packet    " + packet +
                     "\n           response  " + response);
}

void Reports::Written(const std::string& peer, const std::string& characteristic, std::string_view bytes,
                      int mtu) const
{
    Json::Value event = lynctl::Event("written", m_loop.Seconds());
    lynctl::SetText(event, bytes);
    event["hex"] = Hex(bytes);
    event["peer"] = peer;
    event["characteristic"] = characteristic;
    event["mtu"] = mtu;
    Print(event, "TV -> phone  " + lynctl::Printable(bytes, false));
}

void Reports::Notified(const std::string& characteristic, std::string_view bytes) const
{
    Json::Value event = lynctl::Event("notified", m_loop.Seconds());
    lynctl::SetText(event, bytes);
    event["hex"] = Hex(bytes);
    event["characteristic"] = characteristic;
    Print(event, "phone -> TV  " + lynctl::Printable(bytes, false));
}

void Reports::Subscribed(const std::string& characteristic, bool on) const
{
    Json::Value event = lynctl::Event(on ? "subscribed" : "unsubscribed", m_loop.Seconds());
    event["characteristic"] = characteristic;
    Print(event, on ? "notifications on" : "notifications off");
}

void Reports::Remark(const std::string& text)
{
    std::fprintf(stderr, "lyn-phone: %s\n", lynctl::Printable(text, false).c_str());
}

void Reports::Tell(const char* event, const std::string& peer) const
{
    Json::Value object = lynctl::Event(event, m_loop.Seconds());
    if (!peer.empty()) {
        object["peer"] = peer;
    }
    Print(object, std::string(event) + (peer.empty() ? "" : " " + peer));
}

void Reports::Print(const Json::Value& event, const std::string& line) const
{
    if (m_json) {
        lynctl::PrintJson(event);
        return;
    }
    char time[32];
    std::snprintf(time, sizeof time, "%8.3f s  ", m_loop.Seconds());
    lynctl::Print(time + line + "\n");
}

}  // namespace lynphone
