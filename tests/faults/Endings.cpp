// SPDX-License-Identifier: Apache-2.0
#include "faults/Endings.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "faults/Scenarios.h"
#include "lyn_simulator/simulator.h"

namespace lyn::test {
namespace {

bool IsIn(const std::string& text, std::initializer_list<const char*> list)
{
    return std::any_of(list.begin(), list.end(), [&](const char* one) { return text == one; });
}

/// Clean, or clean without one or more of its READY: what was to be stopped first was not.
bool IsWithoutSomeReady(const std::string& clean, const std::string& said)
{
    std::string rest = clean;
    for (std::size_t at = rest.find(" READY"); at != std::string::npos; at = rest.find(" READY")) {
        rest.erase(at, std::string(" READY").size());
        if (rest == said) {
            return true;
        }
    }
    return false;
}

/// A request may have reported READY, for the scan that was stopped, before it failed.
bool IsGoodRefusal(const Line& line)
{
    if (IsIn(line.step, {"phone", "result", "until connected", "until written", "bluetooth off", "bluetooth on",
                         "bluetooth lost"})) {
        return line.refused.empty();  // The main loop has run: nothing can be thrown to it.
    }
    if (line.step != "request") {
        return IsIn(line.refused, {"", "bad_alloc"});
    }
    return IsIn(line.refused, {"", "bad_alloc", "bad_alloc READY", "bad_alloc READY READY", "6", "6 READY"});
}

/// The story of the exchange has ended in "GattFail" instead, at once or in time.
bool IsGattFail(const Line& clean, const Line& told)
{
    const bool isAccepted = clean.said.find("result") != std::string::npos || clean.step == "until written";
    return isAccepted && IsIn(told.said, {"READY result 1", "(10 s) READY result 1"});
}

bool IsGoodLine(const Line& clean, const Line& told, bool hasGattFail)
{
    if (!IsGoodRefusal(told)) {
        return false;
    }
    if (told.said == clean.said) {
        return true;
    }
    if (clean.said == "3 READY") {  // Destroyed inside the READY of its request, which has come or not.
        return IsIn(told.said, {"bad_alloc READY", "0 REQUESTING"});
    }
    if (told.step == "request") {
        return IsWithoutSomeReady(clean.said, told.said);
    }
    if (told.step == "stop") {
        return clean.said == "0 READY READY" && told.said == "0 READY";  // "dummy", whose scanner reports too.
    }
    if (told.step == "phone") {
        return clean.said == "phone" && told.said == "second phone";
    }
    if (told.step == "type") {
        return hasGattFail && told.said == "0 type 0";
    }
    if (told.step == "stored") {
        return hasGattFail && told.said == "none";
    }
    return IsGattFail(clean, told);
}

}  // namespace

bool IsSame(const Lines& expected, const Lines& told)
{
    return std::equal(expected.begin(), expected.end(), told.begin(), told.end(),
                      [](const Line& one, const Line& other) { return one == other; });
}

std::string Compare(const Lines& expected, const Lines& told)
{
    std::string text;
    for (std::size_t i = 0; i < std::max(expected.size(), told.size()); ++i) {
        const Line wanted = i < expected.size() ? expected[i] : Line{};
        const Line is = i < told.size() ? told[i] : Line{};
        const std::string first = is.refused.empty() ? "" : "(first: " + is.refused + ") ";
        std::array<char, 256> line{};
        std::snprintf(line.data(), line.size(), "      %s %-16s %-28s %s%s\n", wanted == is ? " " : "!",
                      wanted.step.c_str(), wanted.said.c_str(), first.c_str(), is.said.c_str());
        text += line.data();
    }
    return text;
}

std::string CheckShortStory(const Lines& clean, const Lines& told)
{
    bool isGood = clean.size() == told.size();
    bool hasGattFail = false;
    for (std::size_t i = 0; isGood && i < clean.size(); ++i) {
        hasGattFail = hasGattFail || IsGattFail(clean[i], told[i]);
        isGood = clean[i].step == told[i].step && IsGoodLine(clean[i], told[i], hasGattFail);
    }
    return isGood ? "" : Compare(clean, told);
}

std::string CheckContents(const Application& clean, const Application& told)
{
    for (const std::string& phone : told.Phones()) {
        if (std::find(clean.Phones().begin(), clean.Phones().end(), phone) == clean.Phones().end()) {
            return "        an unknown phone was reported: " + phone + "\n";
        }
    }
    for (std::size_t i = 0; i < told.Messages().size(); ++i) {
        if (i >= clean.Messages().size() || told.Messages()[i] != clean.Messages()[i]) {
            return "        the phone has got an unknown message: " + told.Messages()[i] + "\n";
        }
    }
    return "";
}

std::string WhatIsLeft(unsigned mayLeave)
{
    const simulator::Counts alive = simulator::Alive();
    const int registrations = alive.registrations - (alive.scanning ? 1 : 0);
    std::string left;
    const auto add = [&](bool isThere, unsigned allowedBy, const char* what) {
        if (isThere && (mayLeave & allowedBy) == 0) {
            left += std::string(left.empty() ? "" : ", ") + what;
        }
    };
    add(alive.scanning, kScan, "a scan");
    add(alive.boosted, kBoost, "the scan boost");
    add(alive.links > 0, kLink, "a link");
    add(alive.clients > 0, kClient, "a GATT client");
    add(registrations > 0, kRegistration, "a registration");
    add(alive.productInits > 0, kBluetooth, "Bluetooth initialised");
    add(alive.wifiInits > 0, kWifi, "Wi-Fi initialised");
    add(alive.wifiDirectInits > 0, kWifiDirect, "Wi-Fi Direct initialised");
    return left;
}

Lines PlainLines(const std::string& service)
{
    if (service == "dummy") {
        return {{"create", "0"},
                {"scan", "0 phone SCANNING"},
                {"phone", ""},
                {"request", "0 READY READY REQUESTING"},
                {"result", "READY result 0"},
                {"destroy", "0"}};
    }
    return {{"create", "0"},
            {"scan", "0 SCANNING"},
            {"phone", "phone"},
            {"request", "0 READY REQUESTING"},
            {"result", "READY result 0"},
            {"destroy", "0"}};
}

}  // namespace lyn::test
