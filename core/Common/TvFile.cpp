// SPDX-License-Identifier: Apache-2.0
#include "Common/TvFile.h"

#include <array>
#include <climits>

#include "Common/PlatformCodes.h"
#include "lyn_platform/files.h"

namespace lyn {

std::ifstream OpenTvFile(const char* path)
{
    std::array<char, PATH_MAX> place{};
    if (platform_file_path(path, place.data(), place.size()) != PLATFORM_OK) {
        return {};
    }
    return std::ifstream(place.data());
}

}  // namespace lyn
