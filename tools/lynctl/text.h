// SPDX-License-Identifier: Apache-2.0
//
// Texts that come from the air, made safe for a terminal and measured in its columns.
#pragma once

#include <string>
#include <string_view>

namespace lynctl {

/// The text with everything that could steer a terminal written out: control, format and private
/// characters, floods of combining marks, bytes that are no UTF-8 ("\x1b", "\u{202e}"). Without
/// `unicode` all that is not ASCII is written out. Doing it twice changes nothing more.
std::string Printable(std::string_view text, bool unicode);

/// Columns that a printable text takes on a terminal.
int Width(std::string_view printable);

/// The text, cut to at most `width` columns; a cut is marked with an ellipsis.
std::string Fit(std::string_view printable, int width, bool unicode);

/// The text, filled up with blanks to `width` columns.
std::string Pad(std::string_view printable, int width, bool alignRight = false);

}  // namespace lynctl
