// SPDX-License-Identifier: Apache-2.0
#include "LogBook.h"

#include <unistd.h>

#include <utility>

#include "LogText.h"

namespace lyn::simulator {

namespace {

constexpr int kNotAsked = platform::kNoPriority + 1;
constexpr std::size_t kMaxLines = 200'000;

/// A test or an application that asks for no level is not disturbed.
int ShownLevel()
{
    return platform::LevelFromEnvironment(platform::kNoPriority);
}

}  // namespace

LogBook& LogBook::Instance()
{
    static LogBook* const instance = new LogBook;  // never destroyed: others log while the process ends
    return *instance;
}

LogBook::LogBook() : m_kept(kNotAsked), m_shown(ShownLevel()), m_coloured(::isatty(STDERR_FILENO) == 1) {}

void LogBook::Print(int priority, const char* tag, const char* format, std::va_list arguments)
{
    const bool keep = priority >= m_kept;
    const bool show = priority >= m_shown;
    if (!keep && !show && !m_heard) {
        return;
    }
    LogLine line{priority, tag != nullptr ? tag : "",
                 format != nullptr ? platform::FormattedText(format, arguments) : ""};
    const std::lock_guard lock(m_mutex);
    if (m_listener) {
        m_listener(line);
    }
    if (show) {
        platform::ShowOnStandardError(line.priority, line.tag, line.text, m_coloured);
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
    m_kept = platform::kDebug;
    m_shown = ShownLevel();
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
    m_kept.compare_exchange_strong(notAsked, platform::kDebug);
    const std::lock_guard lock(m_mutex);
    return {m_lines.begin(), m_lines.end()};
}

}  // namespace lyn::simulator
