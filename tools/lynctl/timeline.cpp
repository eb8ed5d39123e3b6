// SPDX-License-Identifier: Apache-2.0
#include "timeline.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include "text.h"

namespace lynctl {

namespace {

constexpr int kWhatWidth = 11;
constexpr int kIndent = 12 + kWhatWidth + 2;  // time, what, gap
constexpr int kNarrowest = 20;

std::size_t NextCharacter(const std::string& text, std::size_t at)
{
    do {
        ++at;
    } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80);
    return at;
}

/// Bytes of the longest beginning that fits, preferably one that ends behind a comma; a character at least.
std::size_t LineLength(const std::string& text, int width)
{
    std::size_t fits = NextCharacter(text, 0);
    std::size_t comma = 0;
    while (fits < text.size()) {
        if (text[fits - 1] == ',') {
            comma = fits;
        }
        const std::size_t next = NextCharacter(text, fits);
        if (Width(text.substr(0, next)) > width) {
            return comma > 0 ? comma : fits;
        }
        fits = next;
    }
    return fits;
}

}  // namespace

std::string Wrap(const std::string& printable, int width, int indent)
{
    std::string out;
    std::string rest = printable;
    for (;;) {
        const std::size_t length = Width(rest) > width ? LineLength(rest, width) : rest.size();
        out += rest.substr(0, length);
        rest.erase(0, length);
        if (rest.empty()) {
            return out;
        }
        out += '\n';
        out.append(static_cast<std::size_t>(indent), ' ');
    }
}

void PrintTimeline(double seconds, const std::string& what, const std::string& text, Style style)
{
    const Look look = LookOfOutput();
    std::array<char, 32> time{};
    std::snprintf(time.data(), time.size(), "%8.3f s", seconds);
    std::string body = Printable(text, look.unicode);
    if (look.width > kIndent + kNarrowest) {
        body = Wrap(body, look.width - kIndent, kIndent);
    }
    Print(Paint(time.data(), Style::dim, look) + "  " + Paint(Pad(what, kWhatWidth), Style::dim, look) + "  " +
          Paint(body, style, look) + "\n");
}

}  // namespace lynctl
