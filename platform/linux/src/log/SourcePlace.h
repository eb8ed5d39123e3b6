// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lyn::linux_platform {

/// Where a line of the library's log comes from.
struct SourcePlace {
    std::string file;
    std::string function;
    std::string line;
};

/// Reads the beginning "FILE: FUNCTION(LINE) > " of a line; none when it has another form.
std::optional<SourcePlace> ReadSourcePlace(std::string_view text);

}  // namespace lyn::linux_platform
