// SPDX-License-Identifier: Apache-2.0
#include "log/Log.h"

#include <cstdarg>

#include "LogText.h"
#include "log/LogWriter.h"

namespace lyn::linux_platform {

namespace {

constexpr const char* kTag = "LYN_PLATFORM";

}  // namespace

void LogInfo(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    LogWriter::Instance().Print(platform::kInfo, kTag, format, arguments);
    va_end(arguments);
}

void LogWarn(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    LogWriter::Instance().Print(platform::kWarn, kTag, format, arguments);
    va_end(arguments);
}

void LogError(const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    LogWriter::Instance().Print(platform::kError, kTag, format, arguments);
    va_end(arguments);
}

}  // namespace lyn::linux_platform
