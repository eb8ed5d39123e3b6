// SPDX-License-Identifier: Apache-2.0
#include <limits>

#include "ScenarioParts.h"

namespace lyn::simulator {

namespace {

constexpr int kLeastInterval = 1;
constexpr int kMostInterval = 3'600'000;

ConnectOutcome ParseConnect(const JsonField& field)
{
    field.OnlyMembers({"code", "delayMs"});
    ConnectOutcome outcome;
    if (const auto code = field.Find("code")) {
        outcome.code = code->Code();
    }
    if (const auto delay = field.Find("delayMs")) {
        outcome.delayMs = delay->Milliseconds();
    }
    return outcome;
}

void ParseMtu(const JsonField& field, Phone& phone)
{
    field.OnlyMembers({"max", "status", "delayMs"});
    if (const auto max = field.Find("max")) {
        phone.maxMtu = static_cast<unsigned>(max->Integer(23, 517));
    }
    if (const auto status = field.Find("status")) {
        phone.mtuStatus = static_cast<unsigned>(status->Code());
    }
    if (const auto delay = field.Find("delayMs")) {
        phone.mtuDelayMs = delay->Milliseconds();
    }
}

void ParseDrop(const JsonField& field, Phone& phone)
{
    field.OnlyMembers({"afterMs", "code"});
    phone.dropAfterConnectMs = field.Get("afterMs").Milliseconds();
    if (const auto code = field.Find("code")) {
        phone.dropCode = code->Code();
    }
}

void ParseDisconnect(const JsonField& field, Phone& phone)
{
    field.OnlyMembers({"delayMs", "code"});
    if (const auto delay = field.Find("delayMs")) {
        phone.disconnectDelayMs = delay->Milliseconds();
    }
    if (const auto code = field.Find("code")) {
        phone.disconnectCode = code->Code();
    }
}

/// How often the phone is heard, how loud, and from when to when.
void ParsePresence(const JsonField& field, Phone& phone)
{
    if (const auto rssi = field.Find("rssi")) {
        phone.rssi = rssi->Integer(-127, 20);
    }
    if (const auto jitter = field.Find("rssiJitter")) {
        phone.rssiJitter = jitter->Integer(0, 50);
    }
    if (const auto interval = field.Find("intervalMs")) {
        phone.intervalMs = interval->Integer(kLeastInterval, kMostInterval);
    }
    if (const auto limit = field.Find("limit")) {
        phone.limit = limit->Integer(0, std::numeric_limits<int>::max());
    }
    if (const auto joins = field.Find("joinsAtMs")) {
        phone.joinsAtMs = joins->Milliseconds();
    }
    if (const auto leaves = field.Find("leavesAtMs")) {
        phone.leavesAtMs = leaves->Milliseconds();
        if (*phone.leavesAtMs <= phone.joinsAtMs) {
            leaves->Fail("must be later than joinsAtMs");
        }
    }
}

void ParseLinkBehaviour(const JsonField& field, Phone& phone)
{
    if (const auto connects = field.Find("connects")) {
        for (const JsonField& connect : connects->Elements()) {
            phone.connects.push_back(ParseConnect(connect));
        }
    }
    if (const auto mtu = field.Find("mtu")) {
        ParseMtu(*mtu, phone);
    }
    if (const auto drop = field.Find("drop")) {
        ParseDrop(*drop, phone);
    }
    if (const auto disconnect = field.Find("disconnect")) {
        ParseDisconnect(*disconnect, phone);
    }
    if (const auto services = field.Find("services")) {
        phone.services = ParseServices(*services);
    }
}

}  // namespace

Phone ParsePhone(const JsonField& field)
{
    field.OnlyMembers({"description", "address", "rssi", "rssiJitter", "advertising", "scanResponse", "intervalMs",
                       "limit", "joinsAtMs", "leavesAtMs", "connects", "mtu", "services", "drop", "disconnect"});
    Phone phone;
    phone.address = field.Get("address").Address();
    if (const auto description = field.Find("description")) {
        description->Text();
    }
    ParsePresence(field, phone);
    ParsePackets(field, phone);
    ParseLinkBehaviour(field, phone);
    return phone;
}

}  // namespace lyn::simulator
