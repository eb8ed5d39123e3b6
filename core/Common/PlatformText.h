// SPDX-License-Identifier: Apache-2.0
//
// Owner of a buffer that a platform allocated with malloc().
#pragma once

#include <cstdlib>
#include <memory>

namespace lyn {

struct FreeDeleter {
    void operator()(void* buffer) const noexcept { std::free(buffer); }
};

using PlatformText = std::unique_ptr<char, FreeDeleter>;

}  // namespace lyn
