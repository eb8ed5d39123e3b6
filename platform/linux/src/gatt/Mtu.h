// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include "gatt/Phone.h"

namespace lyn::linux_platform {

inline constexpr unsigned kLeastMtu = 23;
inline constexpr unsigned kMostMtu = 517;

/// Reads the MTU in force. BlueZ has negotiated it while connecting, and lets nobody choose; it shows it at each
/// characteristic. On the main context; `done` is called there, with the least MTU and a code when it cannot be
/// read.
void ReadMtu(const Phone& phone, std::function<void(unsigned mtu, int code)> done);

}  // namespace lyn::linux_platform
