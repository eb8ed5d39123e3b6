// SPDX-License-Identifier: Apache-2.0
//
// Where the TV listens for Wi-Fi Direct, as the platform tells it. Logged in the name of the caller.
#pragma once

#include <optional>

namespace lyn {

constexpr int P2P_LISTEN_STOPPED = -1;
constexpr int P2P_LISTEN_SOCIAL = 0;
constexpr int P2P_LISTEN_CONNECTED_AP = 99;
constexpr int P2P_DEFAULT_CHANNEL = 1;

/// Reads the setting, five times with 200 ms behind each while the listener is stopped. Throws
/// LynExceptionInternal when it stays so or cannot be read.
int ReadP2PListenChannelSetting(const char* function = __builtin_FUNCTION());

/// Frequency in MHz of the connected access point, none without one. Throws LynExceptionInternal.
std::optional<int> ReadConnectedFrequency(const char* function = __builtin_FUNCTION());

}  // namespace lyn
