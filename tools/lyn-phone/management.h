// SPDX-License-Identifier: Apache-2.0
//
// The kernel's management of Bluetooth controllers, as far as a phone needs it: the only way to give the
// advertising packet and the scan response apart, byte by byte.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace lynphone {

/// A socket to it. One command at a time.
class ManagementSocket {
public:
    /// Throws lynctl::Failure when the process may not manage controllers.
    ManagementSocket();
    ~ManagementSocket();
    ManagementSocket(const ManagementSocket&) = delete;
    ManagementSocket& operator=(const ManagementSocket&) = delete;

    /// Sends a command and waits for its answer. Throws lynctl::Failure, which says `what` cannot be done.
    void Command(std::uint16_t code, std::uint16_t index, std::span<const std::uint8_t> parameters,
                 const char* what);

private:
    bool ReadAnswer(std::uint16_t code, int limitMs, unsigned& status);

    int m_socket;
};

}  // namespace lynphone
