// SPDX-License-Identifier: Apache-2.0
#include "log/SourcePlace.h"

#include <algorithm>

namespace lyn::linux_platform {

std::optional<SourcePlace> ReadSourcePlace(std::string_view text)
{
    constexpr auto none = std::string_view::npos;
    const std::size_t colon = text.find(": ");
    const std::size_t end = text.find(") > ");
    if (colon == none || end == none || end < colon) {
        return std::nullopt;
    }
    const std::size_t open = text.rfind('(', end);
    if (open == none || open < colon + 2) {
        return std::nullopt;
    }
    const std::string_view line = text.substr(open + 1, end - open - 1);
    const bool number =
        !line.empty() && std::all_of(line.begin(), line.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!number) {
        return std::nullopt;
    }
    return SourcePlace{std::string(text.substr(0, colon)), std::string(text.substr(colon + 2, open - colon - 2)),
                       std::string(line)};
}

}  // namespace lyn::linux_platform
