// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>

#include <cstdarg>

#include "PlatformApi.h"
#include "log/LogWriter.h"

using namespace lyn::linux_platform;

int platform_log_print(int, int priority, const char* tag, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    LogWriter::Instance().Print(priority, tag, format, arguments);
    va_end(arguments);
    return 0;
}

int platform_kmsg_open(void)
{
    return ::open("/dev/kmsg", O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
}
