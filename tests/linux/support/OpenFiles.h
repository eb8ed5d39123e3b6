// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <iterator>

namespace lyn::linux_tests {

/// How many descriptors this process has open.
inline auto OpenFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

}  // namespace lyn::linux_tests
