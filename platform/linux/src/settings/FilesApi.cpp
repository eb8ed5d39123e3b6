// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>

#include "Codes.h"
#include "PlatformApi.h"

using namespace lyn::linux_platform;

// LYN_FILES_DIR stands before the path, if it is set: for those who cannot write below /opt or /usr.
int platform_file_path(const char* path, char* out, size_t size)
{
    if (path == nullptr || path[0] != '/' || out == nullptr) {
        return kInvalidArgument;
    }
    const char* const folder = std::getenv("LYN_FILES_DIR");
    const int length = std::snprintf(nullptr, 0, "%s%s", folder != nullptr ? folder : "", path);
    if (length < 0 || static_cast<size_t>(length) >= size) {
        return kTooLong;
    }
    std::snprintf(out, size, "%s%s", folder != nullptr ? folder : "", path);
    return 0;
}
