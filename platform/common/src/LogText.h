// SPDX-License-Identifier: Apache-2.0
//
// Lines of the log as they are shown. What phones send stands in them: nothing in them is trusted.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

namespace lyn::platform {

// Priorities of the seam: see log.h.
inline constexpr int kDebug = 3;
inline constexpr int kInfo = 4;
inline constexpr int kWarn = 5;
inline constexpr int kError = 6;
inline constexpr int kNoPriority = 7;  ///< above all: shows nothing

/// 0 for debug and below, to 3 for error and above.
std::size_t RankOf(int priority);

/// What LYN_LOG_LEVEL asks for: debug, info, warn, error or none. @param otherwise for anything else
int LevelFromEnvironment(int otherwise);

/// A line in printf form.
std::string FormattedText(const char* format, std::va_list arguments);

/// The text with everything that could steer a terminal, and all that is no UTF-8, written as \xhh.
std::string Printable(std::string_view text);

/// Writes a line to standard error, with time, priority and tag.
void ShowOnStandardError(int priority, std::string_view tag, std::string_view text, bool coloured);

}  // namespace lyn::platform
