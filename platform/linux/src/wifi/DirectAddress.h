// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace lyn::linux_platform {

/// The Wi-Fi Direct device address, six lower-case pairs, from the control sockets of wpa_supplicant: the bus does
/// not tell it. LYN_WPA_CTRL_DIR names their folder, /run/wpa_supplicant if not set. Waits for at most
/// kCallLimitMs. Throws std::runtime_error, which says what is missing.
std::string ReadDirectAddress();

/// The address in an answer to STATUS; empty when there is none.
std::string DirectAddressIn(const std::string& status);

}  // namespace lyn::linux_platform
