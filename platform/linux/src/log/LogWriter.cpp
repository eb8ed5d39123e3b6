// SPDX-License-Identifier: Apache-2.0
#include "log/LogWriter.h"

#include <glib.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "LogText.h"
#include "log/SourcePlace.h"

namespace lyn::linux_platform {

namespace {

bool StandardErrorIsAskedFor()
{
    const char* const target = std::getenv("LYN_LOG_TARGET");
    return target != nullptr && std::strcmp(target, "stderr") == 0;
}

/// False when no journal takes the line.
bool WriteToJournal(int priority, const char* tag, const std::string& text)
{
    const auto all = JournalFieldsOf(priority, tag, text);
    std::vector<GLogField> fields;
    fields.reserve(all.size());
    for (const auto& [name, value] : all) {
        fields.push_back({name.c_str(), value.data(), static_cast<gssize>(value.size())});
    }
    return g_log_writer_journald(G_LOG_LEVEL_MESSAGE, fields.data(), fields.size(), nullptr) ==
           G_LOG_WRITER_HANDLED;
}

}  // namespace

LogWriter& LogWriter::Instance()
{
    static LogWriter* const instance = new LogWriter;  // never destroyed: others log while the process ends
    return *instance;
}

LogWriter::LogWriter()
    : m_lowest(platform::LevelFromEnvironment(platform::kInfo)),
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
        Write(priority, tag != nullptr ? tag : "", platform::FormattedText(format, arguments));
    } catch (const std::exception&) {
        return;
    }
}

void LogWriter::Write(int priority, const char* tag, const std::string& text) const
{
    if (!m_toJournal || !WriteToJournal(priority, tag, text)) {
        platform::ShowOnStandardError(priority, tag, text, m_coloured);
    }
}

std::vector<std::pair<std::string, std::string>> JournalFieldsOf(int priority, const char* tag,
                                                                 const std::string& text)
{
    static constexpr std::array<const char*, 4> kSyslog = {"7", "6", "4", "3"};
    std::vector<std::pair<std::string, std::string>> fields = {{"MESSAGE", platform::Printable(text)},
                                                               {"PRIORITY", kSyslog[platform::RankOf(priority)]},
                                                               {"SYSLOG_IDENTIFIER", tag}};
    if (auto place = ReadSourcePlace(text)) {
        fields.emplace_back("CODE_FILE", std::move(place->file));
        fields.emplace_back("CODE_FUNC", std::move(place->function));
        fields.emplace_back("CODE_LINE", std::move(place->line));
    }
    return fields;
}

}  // namespace lyn::linux_platform
