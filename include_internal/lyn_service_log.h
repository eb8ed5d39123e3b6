// SPDX-License-Identifier: Apache-2.0
//
// Logging of the library: a macro for each priority, and ApiTracker, which brackets an
// operation with an IN and an OUT line. Nothing here throws; everything may be used from any thread.
#pragma once

#include <string>

#include "lyn_platform/log.h"

namespace lyn {

constexpr int LOG_ID_MAIN = 0;
constexpr const char* LOG_TAG = "LYN_SERVICE";

enum LogPriority : int { LOG_DEBUG = 3, LOG_INFO = 4, LOG_WARN = 5, LOG_ERROR = 6 };

/// The part of a path behind its last slash.
constexpr const char* BaseName(const char* path)
{
    const char* base = path;
    for (const char* p = path; *p != '\0'; ++p) {
        if (*p == '/') {
            base = p + 1;
        }
    }
    return base;
}

/// What is printed for a text that is absent.
constexpr const char* Printable(const char* text)
{
    return text != nullptr ? text : "(null)";
}

/// Writes "[LYN_SERVICE][function]" and the formatted message as one line to the kernel log. `tag` is
/// accepted for the callers' sake; the line always carries the library's own.
void KmsgPrint(const char* tag, const char* function, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace lyn

// "file: function(line) > " and the caller's format with at least one argument: a fixed text goes
// through "%s".
#define LYN_LOG(priority, format, ...)                                                     \
    platform_log_print(lyn::LOG_ID_MAIN, (priority), lyn::LOG_TAG, "%s: %s(%d) > " format, \
                       lyn::BaseName(__FILE__), __func__, __LINE__, __VA_ARGS__)
#define LYN_LOGD(format, ...) LYN_LOG(lyn::LOG_DEBUG, format, __VA_ARGS__)
#define LYN_LOGI(format, ...) LYN_LOG(lyn::LOG_INFO, format, __VA_ARGS__)
#define LYN_LOGW(format, ...) LYN_LOG(lyn::LOG_WARN, format, __VA_ARGS__)
#define LYN_LOGE(format, ...) LYN_LOG(lyn::LOG_ERROR, format, __VA_ARGS__)

// For a helper that speaks in the name of the operation that it is a part of: readers filter by that.
#define LYN_LOG_AS(function, priority, format, ...)                                        \
    platform_log_print(lyn::LOG_ID_MAIN, (priority), lyn::LOG_TAG, "%s: %s(%d) > " format, \
                       lyn::BaseName(__FILE__), (function), __LINE__, __VA_ARGS__)
#define LYN_LOGI_AS(function, format, ...) LYN_LOG_AS(function, lyn::LOG_INFO, format, __VA_ARGS__)
#define LYN_LOGW_AS(function, format, ...) LYN_LOG_AS(function, lyn::LOG_WARN, format, __VA_ARGS__)
#define LYN_LOGE_AS(function, format, ...) LYN_LOG_AS(function, lyn::LOG_ERROR, format, __VA_ARGS__)

namespace lyn {

/// Declared first in an operation: `const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);`. The OUT
/// line comes on every way out, exceptions included. It allocates, so what a deleter calls has none.
class ApiTracker {
public:
    ApiTracker(const std::string& function, int line) : m_Function(function), m_Line(line)
    {
        LYN_LOGD("IN >> [%s(%d)]", m_Function.c_str(), m_Line);
    }
    ~ApiTracker() { LYN_LOGD("OUT << [%s(%d)]", m_Function.c_str(), m_Line); }

    ApiTracker(const ApiTracker&) = delete;
    ApiTracker& operator=(const ApiTracker&) = delete;

private:
    std::string m_Function;
    int m_Line;
};

}  // namespace lyn
