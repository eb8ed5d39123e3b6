// SPDX-License-Identifier: Apache-2.0
#include "text.h"

#include <glib.h>

#include <array>
#include <cstddef>
#include <cstdio>

namespace lynctl {

namespace {

constexpr int kMaxMarksInARow = 3;

struct Character {
    gunichar code = 0;
    std::size_t bytes = 1;
    bool valid = false;
};

Character First(std::string_view text)
{
    const gunichar code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    if (code == static_cast<gunichar>(-1) || code == static_cast<gunichar>(-2)) {
        return {static_cast<unsigned char>(text.front()), 1, false};
    }
    return {code, static_cast<std::size_t>(g_unichar_to_utf8(code, nullptr)), true};
}

bool SteersTerminal(gunichar code)
{
    constexpr gunichar kNonJoiner = 0x200C;
    constexpr gunichar kJoiner = 0x200D;  // holds emoji and some scripts together
    if (code == kNonJoiner || code == kJoiner) {
        return false;
    }
    switch (g_unichar_type(code)) {
    case G_UNICODE_CONTROL:
    case G_UNICODE_FORMAT:
    case G_UNICODE_LINE_SEPARATOR:
    case G_UNICODE_PARAGRAPH_SEPARATOR:
    case G_UNICODE_PRIVATE_USE:
    case G_UNICODE_SURROGATE:
    case G_UNICODE_UNASSIGNED:
        return true;
    default:
        return false;
    }
}

std::string WrittenOut(const Character& character)
{
    std::array<char, 16> out{};
    const char* const format = character.valid && character.code >= 0x80 ? "\\u{%x}" : "\\x%02x";
    std::snprintf(out.data(), out.size(), format, character.code);
    return out.data();
}

int Columns(gunichar code)
{
    if (g_unichar_iszerowidth(code)) {
        return 0;
    }
    return g_unichar_iswide(code) ? 2 : 1;
}

}  // namespace

std::string Printable(std::string_view text, bool unicode)
{
    std::string out;
    int marks = 0;
    while (!text.empty()) {
        const Character character = First(text);
        marks = character.valid && Columns(character.code) == 0 ? marks + 1 : 0;
        const bool plain = character.valid && (unicode || character.code < 0x80) &&
                           !SteersTerminal(character.code) && marks <= kMaxMarksInARow;
        out += plain ? std::string(text.substr(0, character.bytes)) : WrittenOut(character);
        text.remove_prefix(character.bytes);
    }
    return out;
}

int Width(std::string_view printable)
{
    int width = 0;
    while (!printable.empty()) {
        const Character character = First(printable);
        width += Columns(character.code);
        printable.remove_prefix(character.bytes);
    }
    return width;
}

std::string Fit(std::string_view printable, int width, bool unicode)
{
    if (Width(printable) <= width) {
        return std::string(printable);
    }
    const std::string ellipsis = unicode ? "…" : "...";
    const int room = width - Width(ellipsis);
    if (room < 0) {
        return std::string(static_cast<std::size_t>(width > 0 ? width : 0), '.');
    }
    std::string out;
    int used = 0;
    while (!printable.empty()) {
        const Character character = First(printable);
        used += Columns(character.code);
        if (used > room) {
            break;
        }
        out += printable.substr(0, character.bytes);
        printable.remove_prefix(character.bytes);
    }
    return out + ellipsis;
}

std::string Pad(std::string_view printable, int width, bool alignRight)
{
    const int missing = width - Width(printable);
    const std::string blanks(static_cast<std::size_t>(missing > 0 ? missing : 0), ' ');
    return alignRight ? blanks + std::string(printable) : std::string(printable) + blanks;
}

}  // namespace lynctl
