// SPDX-License-Identifier: Apache-2.0
//
// Failure codes of our platforms: negated errno values, and the few that have a meaning to those who call.
#pragma once

#include <cerrno>

namespace lyn::platform {

inline constexpr int kInvalidArgument = -EINVAL;
inline constexpr int kAdapterOff = -ENODEV;
inline constexpr int kNotConnected = -ENOTCONN;
inline constexpr int kAlreadyDone = -EALREADY;
inline constexpr int kNotFound = -ENOENT;
inline constexpr int kRefused = -EPERM;
inline constexpr int kMalformed = -EBADMSG;
inline constexpr int kTooLong = -EMSGSIZE;
inline constexpr int kOutOfMemory = -ENOMEM;

inline constexpr int kWifiOpenAlready = -38;
inline constexpr int kConnectedAlready = static_cast<int>(0xFE400103);
inline constexpr int kLinkLost = static_cast<int>(0xFE400104);
inline constexpr int kScanNotRunning = static_cast<int>(0xFE400105);
inline constexpr int kConnectTimedOut = static_cast<int>(0xC0000001);

}  // namespace lyn::platform
