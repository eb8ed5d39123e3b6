// SPDX-License-Identifier: Apache-2.0
//
// The values of the platform that mean something to the library. They are defined here, and not taken
// from a platform header, so that every platform's headers will do.
#pragma once

#include <cstdint>

namespace lyn {

constexpr int PLATFORM_OK = 0;

// Codes are 32-bit patterns, negative as int.
constexpr int PlatformCode(std::uint32_t code)
{
    return static_cast<int>(code);
}

constexpr int BT_ERROR_REPORTED_AS_SUCCESS = PlatformCode(0xFE400103);
constexpr int BT_ERROR_HCI_DISCONNECTION = PlatformCode(0xFE400104);
constexpr int BT_ERROR_NO_SCAN_RUNNING = PlatformCode(0xFE400105);
constexpr int BT_ERROR_CONNECTION_TIMEOUT = PlatformCode(0xC0000001);

constexpr int WIFI_ERROR_ALREADY_INITIALIZED = -38;

}  // namespace lyn
