// SPDX-License-Identifier: Apache-2.0
#include "ExpectedPhone.h"

#include <glib.h>

#include <cstddef>

#include "Room.h"

namespace lyn::fuzz {
namespace {

constexpr std::uint8_t TYPE_MANUFACTURER = 0xFF;

struct Manufacturer {
    unsigned company = 0;
    std::string bytes;
};

// The first manufacturer data of a packet that is well formed up to there.
std::optional<Manufacturer> ReadPacket(const std::optional<simulator::Bytes>& packet)
{
    const std::string all = packet ? std::string(packet->begin(), packet->end()) : "";
    const auto byteAt = [&](std::size_t at) { return static_cast<std::uint8_t>(all[at]); };
    for (std::size_t at = 0; at < all.size(); at += 1U + byteAt(at)) {
        const std::size_t length = byteAt(at);
        if (length == 0 || at + length >= all.size()) {
            break;
        }
        if (byteAt(at + 1) == TYPE_MANUFACTURER) {
            if (length < 3) {
                break;
            }
            return Manufacturer{byteAt(at + 2) + 256U * byteAt(at + 3), all.substr(at + 4, length - 3)};
        }
    }
    return std::nullopt;
}

std::optional<ExpectedPhone> ExpectPhoneWithName(bool isKov, const Manufacturer& advertised,
                                                 const std::optional<Manufacturer>& answered)
{
    constexpr std::size_t shortest = 24;
    const char marker = isKov ? 23 : 25;
    if (advertised.bytes.size() < shortest || advertised.bytes[1] != marker) {
        return std::nullopt;
    }
    if (!answered || answered->bytes.size() < (isKov ? 3U : 2U)) {
        return std::nullopt;
    }
    std::string name = UpToZero(answered->bytes.substr(2));
    if (isKov) {
        const bool isWhole = name.size() == answered->bytes.size() - 2;
        if (isWhole && name.back() == '\n') {
            name = name.substr(0, name.size() - 1) + "...";
        }
    } else if (!IsUtf8(name)) {
        return std::nullopt;
    }
    return ExpectedPhone{name, UpToZero(advertised.bytes.substr(2, 22)), ""};
}

std::optional<ExpectedPhone> ExpectNodLinkDevice(const std::string& bytes)
{
    constexpr std::size_t shortest = 14;
    if (bytes.size() < shortest) {
        return std::nullopt;
    }
    const auto has = [&](std::size_t at, unsigned bits) {
        return (static_cast<unsigned char>(bytes[at]) & bits) == bits;
    };
    if (bytes[1] == 4 && has(2, 0x03) && has(4, 0x20)) {
        return ExpectedPhone{"", "", R"({"device_type":"av"})"};
    }
    if (bytes[1] != 13 || !has(5, 0x04)) {
        return std::nullopt;
    }
    const std::string version = bytes[13] == 0 ? "2.0" : "3.0";
    const std::string available = has(6, 0x01) ? "1" : "0";
    return ExpectedPhone{"", "",
                         R"({"device_type":"mobile","nodlink_version":")" + version + R"(","sm_available":)" +
                             available + "}"};
}

}  // namespace

std::optional<ExpectedPhone> ExpectPhone(const std::string& service,
                                         const std::optional<simulator::Bytes>& advertising,
                                         const std::optional<simulator::Bytes>& scanResponse)
{
    constexpr unsigned company = 117;
    const std::optional<Manufacturer> advertised = ReadPacket(advertising);
    if (!advertised || advertised->company != company) {
        return std::nullopt;
    }
    if (service == "nodlink") {
        return ExpectNodLinkDevice(advertised->bytes);
    }
    return ExpectPhoneWithName(service == "kov", *advertised, ReadPacket(scanResponse));
}

bool IsUtf8(const std::string& text)
{
    return g_utf8_validate(text.c_str(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

}  // namespace lyn::fuzz
