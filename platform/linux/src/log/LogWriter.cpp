// SPDX-License-Identifier: Apache-2.0
#include "log/LogWriter.h"

#include <glib.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>

#include "log/SourcePlace.h"

namespace lyn::linux_platform {

namespace {

int LevelFromEnvironment()
{
    static constexpr std::array<const char*, 5> kNames = {"debug", "info", "warn", "error", "none"};
    const char* const level = std::getenv("LYN_LOG_LEVEL");
    for (std::size_t i = 0; level != nullptr && i < kNames.size(); ++i) {
        if (std::strcmp(level, kNames[i]) == 0) {
            return kDebug + static_cast<int>(i);
        }
    }
    return kInfo;
}

bool StandardErrorIsAskedFor()
{
    const char* const target = std::getenv("LYN_LOG_TARGET");
    return target != nullptr && std::strcmp(target, "stderr") == 0;
}

std::size_t Rank(int priority)
{
    return priority < kDebug ? 0 : static_cast<std::size_t>((priority > kError ? kError : priority) - kDebug);
}

std::string Format(const char* format, std::va_list arguments)
{
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
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

/// False when no journal takes the line.
bool WriteToJournal(int priority, const char* tag, const std::string& text)
{
    const auto all = JournalFieldsOf(priority, tag, text);
    std::vector<GLogField> fields;
    for (const auto& [name, value] : all) {
        fields.push_back({name.c_str(), value.data(), static_cast<gssize>(value.size())});
    }
    return g_log_writer_journald(G_LOG_LEVEL_MESSAGE, fields.data(), fields.size(), nullptr) ==
           G_LOG_WRITER_HANDLED;
}

void WriteToStandardError(int priority, const char* tag, const std::string& text, bool coloured)
{
    static constexpr std::array<char, 4> kLetters = {'D', 'I', 'W', 'E'};
    static constexpr std::array<const char*, 4> kColours = {"\033[2m", "", "\033[33m", "\033[31m"};
    const char* const colour = coloured ? kColours[Rank(priority)] : "";
    std::fprintf(stderr, "%s%s %c/%s: %s%s\n", colour, TimeText().c_str(), kLetters[Rank(priority)], tag,
                 Printable(text).c_str(), *colour != '\0' ? "\033[0m" : "");
}

}  // namespace

LogWriter& LogWriter::Instance()
{
    static LogWriter* const instance = new LogWriter;  // never destroyed: others log while the process ends
    return *instance;
}

LogWriter::LogWriter()
    : m_lowest(LevelFromEnvironment()),
      m_toJournal(!StandardErrorIsAskedFor()),
      m_coloured(::isatty(STDERR_FILENO) == 1)
{
}

void LogWriter::Print(int priority, const char* tag, const char* format, std::va_list arguments) noexcept
{
    if (format == nullptr || priority < m_lowest) {
        return;
    }
    try {
        Write(priority, tag != nullptr ? tag : "", Format(format, arguments));
    } catch (const std::exception&) {
        return;
    }
}

void LogWriter::Write(int priority, const char* tag, const std::string& text) const
{
    if (!m_toJournal || !WriteToJournal(priority, tag, text)) {
        WriteToStandardError(priority, tag, text, m_coloured);
    }
}

std::vector<std::pair<std::string, std::string>> JournalFieldsOf(int priority, const char* tag,
                                                                 const std::string& text)
{
    static constexpr std::array<const char*, 4> kSyslog = {"7", "6", "4", "3"};
    std::vector<std::pair<std::string, std::string>> fields = {
        {"MESSAGE", Printable(text)}, {"PRIORITY", kSyslog[Rank(priority)]}, {"SYSLOG_IDENTIFIER", tag}};
    if (auto place = ReadSourcePlace(text)) {
        fields.emplace_back("CODE_FILE", std::move(place->file));
        fields.emplace_back("CODE_FUNC", std::move(place->function));
        fields.emplace_back("CODE_LINE", std::move(place->line));
    }
    return fields;
}

std::string Printable(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const gunichar code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        const bool plain = code != static_cast<gunichar>(-1) && code != static_cast<gunichar>(-2) &&
                           g_unichar_isprint(code) != FALSE;
        if (plain) {
            const auto size = static_cast<std::size_t>(g_unichar_to_utf8(code, nullptr));
            result += text.substr(0, size);
            text.remove_prefix(size);
            continue;
        }
        std::array<char, 8> escaped{};
        std::snprintf(escaped.data(), escaped.size(), "\\x%02X", static_cast<unsigned char>(text.front()));
        result += escaped.data();
        text.remove_prefix(1);
    }
    return result;
}

}  // namespace lyn::linux_platform
