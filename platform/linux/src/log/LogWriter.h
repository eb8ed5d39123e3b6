// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdarg>
#include <string>
#include <utility>
#include <vector>

namespace lyn::linux_platform {

/// Writes log lines to the journal, or to standard error when there is none or LYN_LOG_TARGET=stderr asks for it.
/// LYN_LOG_LEVEL (debug, info, warn, error, none) says which lines; info if not set. Any thread.
class LogWriter {
public:
    static LogWriter& Instance();

    /// Never throws: a line that there is no memory for is lost.
    void Print(int priority, const char* tag, const char* format, std::va_list arguments) noexcept;

private:
    LogWriter();

    void Write(int priority, const char* tag, const std::string& text) const;

    int m_lowest;
    bool m_toJournal;
    bool m_coloured;
};

/// The fields of a line in the journal.
std::vector<std::pair<std::string, std::string>> JournalFieldsOf(int priority, const char* tag,
                                                                 const std::string& text);

}  // namespace lyn::linux_platform
