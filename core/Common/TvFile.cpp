// SPDX-License-Identifier: Apache-2.0
#include "Common/TvFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

#include "Common/PlatformCodes.h"
#include "lyn_platform/files.h"

namespace lyn {
namespace {

class Descriptor {
public:
    // Without O_NONBLOCK, a pipe would be waited for until somebody writes into it.
    explicit Descriptor(const char* place) : m_Fd(open(place, O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~Descriptor()
    {
        if (m_Fd >= 0) {
            close(m_Fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsRegularFile() const
    {
        struct stat status {};
        return m_Fd >= 0 && fstat(m_Fd, &status) == 0 && S_ISREG(status.st_mode);
    }

    ssize_t Read(char* buffer, std::size_t size) const
    {
        ssize_t count = 0;
        do {
            count = read(m_Fd, buffer, size);
        } while (count < 0 && errno == EINTR);
        return count;
    }

private:
    int m_Fd;
};

}  // namespace

std::optional<std::string> ReadTvFile(const char* path, std::size_t limit)
{
    std::array<char, PATH_MAX> place{};
    if (platform_file_path(path, place.data(), place.size()) != PLATFORM_OK) {
        return std::nullopt;
    }
    const Descriptor file(place.data());
    if (!file.IsRegularFile()) {
        return std::nullopt;
    }
    std::string content;
    std::array<char, 4096> buffer{};
    while (content.size() < limit) {
        const ssize_t count = file.Read(buffer.data(), std::min(buffer.size(), limit - content.size()));
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
