// SPDX-License-Identifier: Apache-2.0
//
// Lines of things that happen one after the other, with the time in front, for people.
#pragma once

#include <string>

#include "terminal.h"

namespace lynctl {

/// One line: time, what it is about ("state", "TV -> phone"), and the text. The text is made printable; on
/// a terminal a long one goes on below its beginning, broken behind commas where there are any.
void PrintTimeline(double seconds, const std::string& what, const std::string& text, Style style = Style::plain);

/// The text in lines of at most `width` columns.
std::string Wrap(const std::string& printable, int width, int indent);

}  // namespace lynctl
