// SPDX-License-Identifier: Apache-2.0
#include "LogText.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace lyn::platform {

namespace {

constexpr gunichar kLastCharacter = 0x10FFFF;

std::string TimeText()
{
    std::timespec now{};
    std::timespec_get(&now, TIME_UTC);
    std::tm local{};
    ::localtime_r(&now.tv_sec, &local);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d.%03ld", local.tm_hour % 100, local.tm_min % 100,
                  local.tm_sec % 100, now.tv_nsec / 1'000'000);
    return text.data();
}

void AppendWrittenOut(std::string& shown, std::string_view bytes)
{
    for (const char byte : bytes) {
        std::array<char, 5> text{};
        std::snprintf(text.data(), text.size(), "\\x%02x",
                      static_cast<unsigned>(static_cast<unsigned char>(byte)));
        shown += text.data();
    }
}

}  // namespace

std::size_t RankOf(int priority)
{
    return static_cast<std::size_t>(std::clamp(priority, kDebug, kError) - kDebug);
}

int LevelFromEnvironment(int otherwise)
{
    static constexpr std::array<const char*, 5> kNames = {"debug", "info", "warn", "error", "none"};
    const char* const level = std::getenv("LYN_LOG_LEVEL");
    for (std::size_t i = 0; level != nullptr && i < kNames.size(); ++i) {
        if (std::strcmp(level, kNames[i]) == 0) {
            return kDebug + static_cast<int>(i);
        }
    }
    return otherwise;
}

std::string FormattedText(const char* format, std::va_list arguments)
{
    std::va_list again;
    va_copy(again, arguments);
    std::array<char, 512> brief{};
    const int length = std::vsnprintf(brief.data(), brief.size(), format, arguments);
    std::string text;
    if (length > 0 && static_cast<std::size_t>(length) < brief.size()) {
        text.assign(brief.data(), static_cast<std::size_t>(length));
    } else if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

std::string Printable(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        const bool isValid = character <= kLastCharacter;
        const auto length = isValid ? static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr)) : 1;
        if (isValid && g_unichar_isprint(character) != FALSE) {
            shown += text.substr(0, length);
        } else {
            AppendWrittenOut(shown, text.substr(0, length));
        }
        text.remove_prefix(length);
    }
    return shown;
}

void ShowOnStandardError(int priority, std::string_view tag, std::string_view text, bool coloured)
{
    static constexpr std::array<char, 4> kLetters = {'D', 'I', 'W', 'E'};
    static constexpr std::array<const char*, 4> kColours = {"\033[2m", "", "\033[33m", "\033[31m"};
    const std::size_t rank = RankOf(priority);
    const char* const colour = coloured ? kColours[rank] : "";
    std::fprintf(stderr, "%s%s %c/%.*s: %s%s\n", colour, TimeText().c_str(), kLetters[rank],
                 static_cast<int>(tag.size()), tag.data(), Printable(text).c_str(),
                 *colour != '\0' ? "\033[0m" : "");
}

}  // namespace lyn::platform
