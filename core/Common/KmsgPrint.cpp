// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <vector>

#include "Common/FileDescriptor.h"
#include "Common/RunGuarded.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr std::size_t LINE_SIZE = 512;

using Line = std::array<char, LINE_SIZE>;

// Formats behind what is there already; returns the length that the text would have with room enough.
std::size_t FormatAt(Line& line, std::size_t offset, const char* format, va_list arguments)
{
    const std::size_t start = std::min(offset, line.size());
    const int length = std::vsnprintf(line.data() + start, line.size() - start, format, arguments);
    return length > 0 ? static_cast<std::size_t>(length) : 0;
}

// The written length is the untruncated one (kept: readers take the record's size from it), so a text
// longer than the line is followed by zeros up to that length.
ssize_t WriteRecord(int fd, const Line& line, std::size_t length)
{
    if (length <= line.size()) {
        return write(fd, line.data(), length);
    }
    std::vector<char> record(length);
    std::copy(line.begin(), line.end(), record.begin());
    return write(fd, record.data(), record.size());
}

}  // namespace

void KmsgPrint(const char* /*tag*/, const char* function, const char* format, ...)
{
    const FileDescriptor kernelLog(platform_kmsg_open());
    if (!kernelLog.IsOpen()) {
        return;
    }

    Line line{};
    const int prefix = std::snprintf(line.data(), line.size(), "[%s][%s]", LOG_TAG, function);
    std::size_t length = prefix > 0 ? static_cast<std::size_t>(prefix) : 0;
    va_list arguments;
    va_start(arguments, format);
    length += FormatAt(line, length, format, arguments);
    va_end(arguments);

    RunGuarded([&] {
        if (WriteRecord(kernelLog.Get(), line, length) < 0) {
            std::printf("Fail to write(/dev/kmsg) %d\n", errno);
        }
    });
}

}  // namespace lyn
