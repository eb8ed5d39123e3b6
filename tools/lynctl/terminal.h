// SPDX-License-Identifier: Apache-2.0
//
// What standard output can show, and an area of it that is drawn again and again in place.
#pragma once

#include <string>

namespace lynctl {

struct Look {
    bool live = false;     ///< a terminal that can be drawn on in place
    bool unicode = false;  ///< the locale is UTF-8
    bool colour = false;   ///< a terminal, and neither NO_COLOR nor TERM=dumb
    int width = 0;         ///< columns, 0 for no limit
    int height = 0;        ///< lines, 0 for no limit
};

/// How standard output looks now (the size of a terminal may change while we run).
Look LookOfOutput();

enum class Style { plain, strong, dim, good, fair, bad, accent };

/// The text in a style, or as it is on an output without colour.
std::string Paint(const std::string& text, Style style, const Look& look);

/// Writes to standard output at once, so that a reader behind a pipe follows.
void Print(const std::string& text);

/// A block of lines at the end of the terminal. Not for output that is no terminal.
class LiveArea {
public:
    LiveArea() = default;
    LiveArea(const LiveArea&) = delete;
    LiveArea& operator=(const LiveArea&) = delete;
    ~LiveArea();

    /// Shows the block (lines that end in a newline) in the place of the one before. Lines that are too
    /// long for the terminal are cut by it.
    void Draw(const std::string& block);
    /// Takes the block away and gives the terminal back as it was.
    void Clear();

private:
    void Take();
    void GiveBack();

    int m_lines = 0;
    bool m_drawn = false;
};

}  // namespace lynctl
