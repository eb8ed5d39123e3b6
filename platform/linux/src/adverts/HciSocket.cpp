// SPDX-License-Identifier: Apache-2.0
#include "adverts/HciSocket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

#include "adverts/AdvertFilter.h"
#include "adverts/HciReports.h"

namespace lyn::linux_platform {

namespace {

// The kernel's interface, as it is in <bluetooth/hci.h> of BlueZ, for which no package is needed this way.
constexpr int kProtocolHci = 1;
constexpr int kLevelHci = 0;
constexpr int kOptionFilter = 2;
constexpr std::uint16_t kRawChannel = 0;

struct HciAddress {
    sa_family_t family;
    std::uint16_t device;
    std::uint16_t channel;
};

struct HciFilter {
    std::uint32_t packetTypes;
    std::array<std::uint32_t, 2> events;
    std::uint16_t command;
};

/// Some seconds of a busy air, for a main loop that is late.
constexpr int kReceiveBuffer = 512 * 1024;

constexpr HciFilter kAdvertisingEvents{1U << kHciEventPacket, {0, 1U << (kLeMetaEvent - 32U)}, 0};

/// The kernel takes what this process may not see out of the filter, and says nothing: only reading it tells.
bool MayHearAdverts(int descriptor)
{
    HciFilter granted{};
    socklen_t size = sizeof granted;
    return ::getsockopt(descriptor, kLevelHci, kOptionFilter, &granted, &size) == 0 &&
           granted.events == kAdvertisingEvents.events;
}

bool Prepare(int descriptor)
{
    if (::setsockopt(descriptor, kLevelHci, kOptionFilter, &kAdvertisingEvents, sizeof kAdvertisingEvents) != 0) {
        return false;
    }
    if (!MayHearAdverts(descriptor)) {
        errno = EPERM;
        return false;
    }
    auto program = AdvertFilter();
    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    if (::setsockopt(descriptor, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) != 0) {
        return false;
    }
    // As much of it as the system allows will do.
    ::setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
    return true;
}

bool Bind(int descriptor, unsigned index)
{
    const HciAddress address{AF_BLUETOOTH, static_cast<std::uint16_t>(index), kRawChannel};
    return ::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

std::optional<HciSocket> HciSocket::Open(unsigned index, int& error)
{
    HciSocket opened(::socket(AF_BLUETOOTH, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, kProtocolHci));
    // Bound last: nothing is received before the filters are in place.
    const int descriptor = opened.Descriptor();
    if (descriptor < 0 || !Prepare(descriptor) || !Bind(descriptor, index)) {
        error = errno;
        return std::nullopt;
    }
    return opened;
}

HciSocket::~HciSocket()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

HciSocket::Got HciSocket::Read(std::span<std::uint8_t> buffer, std::size_t& length) const
{
    ssize_t received = -1;
    do {
        received = ::recv(m_descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
    } while (received < 0 && errno == EINTR);
    if (received == 0) {
        return Got::failure;  // No packet is empty: the other end is gone.
    }
    if (received > 0) {
        length = static_cast<std::size_t>(received);
        return Got::packet;
    }
    // A receive buffer that ran over has lost adverts, and nothing else.
    const bool harmless = errno == EAGAIN || errno == ENOBUFS || errno == ENOMEM;
    return harmless ? Got::nothing : Got::failure;
}

std::optional<unsigned> HciIndex(const char* adapterPath)
{
    const std::string_view path(adapterPath);
    const auto name = path.rfind("/hci");
    if (name == std::string_view::npos) {
        return std::nullopt;
    }
    const char* const end = path.data() + path.size();
    std::uint16_t index = 0;
    const auto [rest, failed] = std::from_chars(path.data() + name + std::strlen("/hci"), end, index);
    return failed == std::errc{} && rest == end ? std::optional<unsigned>(index) : std::nullopt;
}

}  // namespace lyn::linux_platform
