// SPDX-License-Identifier: Apache-2.0
#include <cstdarg>
#include <exception>

#include "CallWatch.h"
#include "LogBook.h"
#include "LogText.h"
#include "PlatformApi.h"
#include "Simulator.h"

using namespace lyn::simulator;

namespace {

void Print(int priority, const char* tag, const char* format, std::va_list arguments)
{
    if (!CallWatch::IsOn() || format == nullptr) {
        LogBook::Instance().Print(priority, tag, format, arguments);
        return;
    }
    std::va_list copy;
    va_copy(copy, arguments);
    const CallWatch watch("platform_log_print", lyn::platform::FormattedText(format, copy));
    va_end(copy);
    LogBook::Instance().Print(priority, tag, format, arguments);
}

}  // namespace

int platform_log_print(int, int priority, const char* tag, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    try {
        Print(priority, tag, format, arguments);
    } catch (const std::exception&) {
        // A line that there is no memory for is lost.
    }
    va_end(arguments);
    return 0;
}

int platform_kmsg_open(void)
{
    const CallWatch watch("platform_kmsg_open");
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    if (simulator.faults.DrawFailure("platform_kmsg_open")) {
        return -1;
    }
    return simulator.kernelLog.Open();
}
