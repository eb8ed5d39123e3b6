// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>
#include <string>

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
    const std::size_t folderLength = folder != nullptr ? std::strlen(folder) : 0;
    const std::size_t pathLength = std::strlen(path);
    if (folderLength + pathLength >= size) {
        return kTooLong;
    }
    if (folderLength > 0) {
        std::memcpy(out, folder, folderLength);
    }
    std::memcpy(out + folderLength, path, pathLength + 1);
    return 0;
}
