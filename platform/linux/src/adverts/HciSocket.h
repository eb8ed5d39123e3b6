// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>

#include <sys/types.h>

namespace lyn::linux_platform {

/// A raw HCI socket of one adapter, or what a test gives in its place, that yields advertising reports.
class HciSocket {
public:
    /// Opens the socket of hci<index>, heard from now on. @return none, with the errno value in `error`; EPERM
    /// means that this process may not see the reports, which needs CAP_NET_RAW. Any thread.
    static std::optional<HciSocket> Open(unsigned index, int& error);

    explicit HciSocket(int descriptor) : m_descriptor(descriptor) {}
    ~HciSocket();
    HciSocket(HciSocket&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    HciSocket& operator=(HciSocket&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    HciSocket(const HciSocket&) = delete;
    HciSocket& operator=(const HciSocket&) = delete;

    int Descriptor() const { return m_descriptor; }

    enum class Got { packet, nothing, failure };

    /// Reads one packet, without waiting. A failure means that the adapter is gone. @param length bytes that were
    /// read
    Got Read(std::span<std::uint8_t> buffer, std::size_t& length) const;

private:
    int m_descriptor;
};

/// 0 of "/org/bluez/hci0".
std::optional<unsigned> HciIndex(const char* adapterPath);

}  // namespace lyn::linux_platform
