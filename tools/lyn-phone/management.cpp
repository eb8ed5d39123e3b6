// SPDX-License-Identifier: Apache-2.0
#include "management.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>

#include "failure.h"

namespace lynphone {

namespace {

// Of the kernel's management interface; its headers are not there without BlueZ's.
constexpr int kBluetoothFamily = 31;
constexpr int kHciProtocol = 1;
constexpr std::uint16_t kNoDevice = 0xFFFF;
constexpr std::uint16_t kControlChannel = 3;
constexpr std::uint16_t kCommandComplete = 1;
constexpr std::uint16_t kCommandStatus = 2;
constexpr std::size_t kHeader = 6;
constexpr int kAnswerLimitMs = 5000;
constexpr std::array<const char*, 21> kStatusTexts = {
    "success",          "unknown command",    "not connected", "failed",
    "connect failed",   "auth failed",        "not paired",    "no resources",
    "timeout",          "already connected",  "busy",          "rejected",
    "not supported",    "invalid parameters", "disconnected",  "not powered",
    "cancelled",        "invalid index",      "rfkilled",      "already paired",
    "permission denied"};

struct HciAddress {
    sa_family_t family;
    std::uint16_t device;
    std::uint16_t channel;
};

[[noreturn]] void Fail(const std::string& text)
{
    throw lynctl::Failure(lynctl::kExitFailure, text);
}

std::uint16_t Number(const std::uint8_t* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

void Append(std::vector<std::uint8_t>& packet, std::uint16_t number)
{
    packet.push_back(static_cast<std::uint8_t>(number & 0xFF));
    packet.push_back(static_cast<std::uint8_t>(number >> 8));
}

}  // namespace

ManagementSocket::ManagementSocket() : m_socket(::socket(kBluetoothFamily, SOCK_RAW | SOCK_CLOEXEC, kHciProtocol))
{
    const HciAddress address{kBluetoothFamily, kNoDevice, kControlChannel};
    sockaddr_storage storage{};
    std::memcpy(&storage, &address, sizeof address);
    if (m_socket < 0 || ::bind(m_socket, reinterpret_cast<const sockaddr*>(&storage), sizeof address) != 0) {
        const std::string reason = std::strerror(errno);
        if (m_socket >= 0) {
            ::close(m_socket);
        }
        Fail("the kernel's Bluetooth cannot be reached: " + reason);
    }
}

ManagementSocket::~ManagementSocket()
{
    ::close(m_socket);
}

void ManagementSocket::Command(std::uint16_t code, std::uint16_t index, std::span<const std::uint8_t> parameters,
                               const char* what)
{
    std::vector<std::uint8_t> packet;
    Append(packet, code);
    Append(packet, index);
    Append(packet, static_cast<std::uint16_t>(parameters.size()));
    packet.insert(packet.end(), parameters.begin(), parameters.end());
    if (::send(m_socket, packet.data(), packet.size(), 0) != static_cast<ssize_t>(packet.size())) {
        Fail(std::string(what) + ": " + std::strerror(errno));
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kAnswerLimitMs);
    unsigned status = 0;
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            Fail(std::string(what) + ": the kernel does not answer");
        }
        if (ReadAnswer(code, static_cast<int>(left.count()), status)) {
            break;
        }
    }
    if (status != 0) {
        Fail(std::string(what) + ": " + (status < kStatusTexts.size() ? kStatusTexts[status] : "refused"));
    }
}

/// True when it was the answer to this command; other events pass by.
bool ManagementSocket::ReadAnswer(std::uint16_t code, int limitMs, unsigned& status)
{
    pollfd waiting{m_socket, POLLIN, 0};
    if (::poll(&waiting, 1, limitMs) <= 0) {
        return false;
    }
    std::array<std::uint8_t, 2048> event{};
    const ssize_t length = ::recv(m_socket, event.data(), event.size(), 0);
    if (length < static_cast<ssize_t>(kHeader + 3)) {
        return false;
    }
    const std::uint16_t kind = Number(event.data());
    if ((kind != kCommandComplete && kind != kCommandStatus) || Number(event.data() + kHeader) != code) {
        return false;
    }
    status = event[kHeader + 2];
    return true;
}

}  // namespace lynphone
