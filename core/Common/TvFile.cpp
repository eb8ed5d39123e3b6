// SPDX-License-Identifier: Apache-2.0
#include "Common/TvFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include "Common/FileDescriptor.h"
#include "Common/PlatformCodes.h"
#include "lyn_platform/files.h"

namespace lyn {
namespace {

bool IsRegularFile(const FileDescriptor& file)
{
    struct stat status {};
    return file.IsOpen() && fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

ssize_t Read(const FileDescriptor& file, char* buffer, std::size_t size)
{
    ssize_t count = 0;
    do {
        count = read(file.Get(), buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

}  // namespace

std::optional<std::string> ReadTvFile(const char* path, std::size_t limit)
{
    std::array<char, PATH_MAX> place{};
    if (platform_file_path(path, place.data(), place.size()) != PLATFORM_OK) {
        return std::nullopt;
    }
    // Without O_NONBLOCK, a pipe would be waited for until somebody writes into it.
    const FileDescriptor file(open(place.data(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!IsRegularFile(file)) {
        return std::nullopt;
    }
    std::string content;
    std::array<char, 4096> buffer{};
    while (content.size() < limit) {
        const ssize_t count = Read(file, buffer.data(), std::min(buffer.size(), limit - content.size()));
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        content.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return content;
}

}  // namespace lyn
