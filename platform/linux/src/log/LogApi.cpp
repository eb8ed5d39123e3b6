// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>

#include <cstdarg>
#include <exception>

#include "PlatformApi.h"
#include "log/Log.h"
#include "log/LogWriter.h"

using namespace lyn::linux_platform;

namespace {

constexpr int kInfo = 4;
constexpr int kWarn = 5;
constexpr int kError = 6;

void Print(int priority, const char* tag, const char* format, std::va_list arguments)
{
    try {
        LogWriter& writer = LogWriter::Instance();
        if (format != nullptr && writer.Wants(priority)) {
            writer.Print(priority, tag, format, arguments);
        }
    } catch (const std::exception&) {
        // A line that there is no memory for is lost.
    }
}

void PrintOwn(int priority, const char* format, std::va_list arguments)
{
    Print(priority, "LYN_PLATFORM", format, arguments);
}

}  // namespace

int platform_log_print(int, int priority, const char* tag, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    Print(priority, tag, format, arguments);
    va_end(arguments);
    return 0;
}

int platform_kmsg_open(void)
{
    return ::open("/dev/kmsg", O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
}

void lyn::linux_platform::LogInfo(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    PrintOwn(kInfo, format, arguments);
    va_end(arguments);
}

void lyn::linux_platform::LogWarn(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    PrintOwn(kWarn, format, arguments);
    va_end(arguments);
}

void lyn::linux_platform::LogError(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    PrintOwn(kError, format, arguments);
    va_end(arguments);
}
