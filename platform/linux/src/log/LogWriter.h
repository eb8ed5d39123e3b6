// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdarg>
#include <string>

namespace lyn::linux_platform {

/// Writes log lines to the journal, or to standard error when there is none or LYN_LOG_TARGET=stderr asks for it.
/// LYN_LOG_LEVEL (debug, info, warn, error, none) says which lines; info if not set. Any thread.
class LogWriter {
public:
    static LogWriter& Instance();

    bool Wants(int priority) const { return priority >= m_lowest; }
    void Print(int priority, const char* tag, const char* format, std::va_list arguments);

private:
    LogWriter();

    int m_lowest;
    bool m_toJournal;
    bool m_coloured;
};

/// The text with everything that could steer a terminal written as \xHH.
std::string Printable(const std::string& text);

}  // namespace lyn::linux_platform
