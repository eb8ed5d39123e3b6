// SPDX-License-Identifier: Apache-2.0
#include "adverts/Advert.h"

#include <cstdio>

namespace lyn::linux_platform {

std::string TextOf(const DeviceAddress& address)
{
    const auto& b = address.bytes;
    std::array<char, sizeof "00:11:22:33:44:55"> text{};
    std::snprintf(text.data(), text.size(), "%02X:%02X:%02X:%02X:%02X:%02X", b[5], b[4], b[3], b[2], b[1], b[0]);
    return text.data();
}

}  // namespace lyn::linux_platform
