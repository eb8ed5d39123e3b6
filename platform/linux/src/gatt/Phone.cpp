// SPDX-License-Identifier: Apache-2.0
#include "gatt/Phone.h"

#include <cstddef>

namespace lyn::linux_platform {

std::optional<std::string> CanonicalAddress(const char* text)
{
    constexpr std::size_t length = 17;
    std::string address = text != nullptr ? text : "";
    if (address.size() != length) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < length; ++i) {
        const bool good = i % 3 == 2 ? address[i] == ':' : g_ascii_isxdigit(address[i]) != FALSE;
        if (!good) {
            return std::nullopt;
        }
        address[i] = g_ascii_toupper(address[i]);
    }
    return address;
}

}  // namespace lyn::linux_platform
