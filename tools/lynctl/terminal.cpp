// SPDX-License-Identifier: Apache-2.0
#include "terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace lynctl {

namespace {

constexpr const char* kHideCursor = "\x1b[?25l";
constexpr const char* kShowCursor = "\x1b[?25h";
constexpr const char* kNoWrap = "\x1b[?7l";
constexpr const char* kWrap = "\x1b[?7h";
constexpr const char* kClearLine = "\x1b[K";
constexpr const char* kClearBelow = "\x1b[J";

std::string_view Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

const char* Sequence(Style style)
{
    switch (style) {
    case Style::strong:
        return "\x1b[1m";
    case Style::dim:
        return "\x1b[2m";
    case Style::good:
        return "\x1b[32m";
    case Style::fair:
        return "\x1b[33m";
    case Style::bad:
        return "\x1b[31m";
    case Style::accent:
        return "\x1b[36m";
    case Style::plain:
        break;
    }
    return "";
}

/// Ctrl-C takes away what is on its way to the terminal, unless this is said: the lines of a block would not be
/// where they are looked for.
void SetKeepsOutput(bool keeps)
{
    termios modes{};
    // To set modes would stop a process in the background.
    if (tcgetpgrp(STDOUT_FILENO) != getpgrp() || tcgetattr(STDOUT_FILENO, &modes) != 0) {
        return;
    }
    const tcflag_t flag = NOFLSH;
    modes.c_lflag = keeps ? modes.c_lflag | flag : modes.c_lflag & ~flag;
    tcsetattr(STDOUT_FILENO, TCSANOW, &modes);
}

}  // namespace

Look LookOfOutput()
{
    Look look;
    look.unicode = std::string_view(nl_langinfo(CODESET)) == "UTF-8";
    const std::string_view terminal = Environment("TERM");
    look.live = isatty(STDOUT_FILENO) != 0 && !terminal.empty() && terminal != "dumb";
    look.colour = look.live && Environment("NO_COLOR").empty();
    winsize size{};
    if (look.live && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        look.width = size.ws_col;
        look.height = size.ws_row;
    }
    return look;
}

std::string Paint(const std::string& text, Style style, const Look& look)
{
    if (!look.colour || style == Style::plain || text.empty()) {
        return text;
    }
    return Sequence(style) + text + "\x1b[0m";
}

void Print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

LiveArea::~LiveArea()
{
    GiveBack();
}

void LiveArea::Draw(const std::string& block)
{
    Take();
    std::string out = kNoWrap;
    if (m_lines > 0) {
        out += "\r\x1b[" + std::to_string(m_lines) + "A";
    }
    m_lines = 0;
    for (std::size_t begin = 0; begin < block.size(); ++m_lines) {
        const std::size_t end = std::min(block.find('\n', begin), block.size() - 1) + 1;
        // Cleared before it is written: behind a full line the cursor is still on its last character.
        out += kClearLine + block.substr(begin, end - begin);
        begin = end;
    }
    out += kClearBelow;
    out += kWrap;
    Print(out);
}

void LiveArea::Clear()
{
    if (m_drawn) {
        Draw("");
    }
    GiveBack();
}

void LiveArea::Take()
{
    if (std::exchange(m_drawn, true)) {
        return;
    }
    SetKeepsOutput(true);
    Print(kHideCursor);
}

void LiveArea::GiveBack()
{
    if (!std::exchange(m_drawn, false)) {
        return;
    }
    Print(kShowCursor);
    SetKeepsOutput(false);
}

}  // namespace lynctl
