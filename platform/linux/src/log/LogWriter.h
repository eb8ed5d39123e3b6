// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lyn::linux_platform {

// Priorities of the seam: see log.h.
inline constexpr int kDebug = 3;
inline constexpr int kInfo = 4;
inline constexpr int kWarn = 5;
inline constexpr int kError = 6;

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

/// The text with everything that could steer a terminal, and all that is no UTF-8, written as \xHH.
std::string Printable(std::string_view text);

}  // namespace lyn::linux_platform
