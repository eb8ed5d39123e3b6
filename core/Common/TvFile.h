// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace lyn {

/// The first `limit` bytes of a file of the TV, wherever this platform keeps it. None when it is no regular
/// file or cannot be read. Does not wait, whatever is there.
std::optional<std::string> ReadTvFile(const char* path, std::size_t limit);

}  // namespace lyn
