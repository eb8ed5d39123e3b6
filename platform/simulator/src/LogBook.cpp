// SPDX-License-Identifier: Apache-2.0
#include "LogBook.h"

#include <glib.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

namespace lyn::simulator {

namespace {

constexpr int kDebug = 3;
constexpr int kError = 6;
constexpr int kNone = 7;
constexpr int kNotAsked = kNone + 1;
constexpr std::size_t kMaxLines = 200'000;
constexpr gunichar kLastCharacter = 0x10FFFF;

int LevelFromEnvironment()
{
    const char* level = std::getenv("LYN_LOG_LEVEL");
    static constexpr std::array<const char*, 4> kNames = {"debug", "info", "warn", "error"};
    for (std::size_t i = 0; level != nullptr && i < kNames.size(); ++i) {
        if (std::strcmp(level, kNames[i]) == 0) {
            return kDebug + static_cast<int>(i);
        }
    }
    return kNone;
}

std::string Format(const char* format, std::va_list arguments)
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

char Letter(int priority)
{
    static constexpr char kLetters[] = "DIWE";
    return priority >= kDebug && priority <= kError ? kLetters[priority - kDebug] : '?';
}

const char* Colour(int priority)
{
    static constexpr std::array<const char*, 4> kColours = {"\033[2m", "", "\033[33m", "\033[31m"};
    return priority >= kDebug && priority <= kError ? kColours[static_cast<std::size_t>(priority - kDebug)] : "";
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

/// The text as a terminal may get it: the names in it are chosen by strangers.
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

}  // namespace

LogBook& LogBook::Instance()
{
    static LogBook* const instance = new LogBook;  // never destroyed: others log while the process ends
    return *instance;
}

LogBook::LogBook() : m_kept(kNotAsked), m_shown(LevelFromEnvironment()), m_coloured(::isatty(STDERR_FILENO) == 1)
{
}

void LogBook::Print(int priority, const char* tag, const char* format, std::va_list arguments)
{
    const bool keep = priority >= m_kept;
    const bool show = priority >= m_shown;
    if (!keep && !show && !m_heard) {
        return;
    }
    LogLine line{priority, tag != nullptr ? tag : "", format != nullptr ? Format(format, arguments) : ""};
    const std::lock_guard lock(m_mutex);
    if (m_listener) {
        m_listener(line);
    }
    if (show) {
        Show(line);
    }
    if (keep) {
        if (m_lines.size() >= kMaxLines) {
            m_lines.pop_front();
        }
        m_lines.push_back(std::move(line));
    }
}

void LogBook::Reset()
{
    Clear();
    m_kept = kDebug;
    m_shown = LevelFromEnvironment();
}

void LogBook::Clear()
{
    const std::lock_guard lock(m_mutex);
    m_lines.clear();
}

void LogBook::Keep(int lowestPriority)
{
    m_kept = lowestPriority;
}

void LogBook::Tell(std::function<void(const LogLine&)> listener)
{
    const std::lock_guard lock(m_mutex);
    m_heard = static_cast<bool>(listener);
    m_listener = std::move(listener);
}

std::vector<LogLine> LogBook::Lines()
{
    int notAsked = kNotAsked;
    m_kept.compare_exchange_strong(notAsked, kDebug);
    const std::lock_guard lock(m_mutex);
    return {m_lines.begin(), m_lines.end()};
}

void LogBook::Show(const LogLine& line) const
{
    const char* colour = m_coloured ? Colour(line.priority) : "";
    std::fprintf(stderr, "%s%s %c/%s: %s%s\n", colour, TimeText().c_str(), Letter(line.priority), line.tag.c_str(),
                 Printable(line.text).c_str(), *colour != '\0' ? "\033[0m" : "");
}

}  // namespace lyn::simulator
