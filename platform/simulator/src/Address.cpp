// SPDX-License-Identifier: Apache-2.0
#include "Address.h"

#include <glib.h>

namespace lyn::simulator {

std::optional<std::string> CanonicalAddress(const std::string& text)
{
    constexpr std::size_t kLength = 17;
    if (text.size() != kLength) {
        return std::nullopt;
    }
    std::string address = text;
    for (std::size_t i = 0; i < kLength; ++i) {
        const bool good = i % 3 == 2 ? address[i] == ':' : g_ascii_isxdigit(address[i]);
        if (!good) {
            return std::nullopt;
        }
        address[i] = g_ascii_toupper(address[i]);
    }
    return address;
}

}  // namespace lyn::simulator
