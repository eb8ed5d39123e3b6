// SPDX-License-Identifier: Apache-2.0
#include "log/LogWriter.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "LogText.h"
#include "log/Log.h"

namespace lyn::linux_platform {
namespace {

/// What a new process, in which the log has not been used yet, writes to its standard error.
std::string StandardErrorOf(const char* level, const std::function<void()>& work)
{
    int ends[2] = {};
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDERR_FILENO);
        ::setenv("LYN_LOG_TARGET", "stderr", 1);
        ::setenv("LYN_LOG_LEVEL", level, 1);
        work();
        std::fflush(stderr);
        ::_exit(0);
    }
    ::close(ends[1]);
    std::string text;
    char buffer[512];
    for (ssize_t count = 0; (count = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(ends[0]);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return text;
}

TEST(LogWriter, WritesLevelTagAndText)
{
    const std::string text = StandardErrorOf("debug", [] { LogWarn("%d phones", 3); });
    EXPECT_NE(text.find(" W/LYN_PLATFORM: 3 phones\n"), std::string::npos) << text;
}

TEST(LogWriter, LeavesOutWhatIsBelowTheLevel)
{
    const std::string text = StandardErrorOf("error", [] {
        LogInfo("%s", "info");
        LogWarn("%s", "warning");
        LogError("%s", "error");
    });
    EXPECT_EQ(text.find("info"), std::string::npos);
    EXPECT_EQ(text.find("warning"), std::string::npos);
    EXPECT_NE(text.find(" E/LYN_PLATFORM: error\n"), std::string::npos) << text;
}

TEST(LogWriter, WritesInfoAndAboveWhenTheLevelIsUnknown)
{
    const std::string text = StandardErrorOf("loud", [] { LogInfo("%s", "shown"); });
    EXPECT_NE(text.find("shown"), std::string::npos);
}

TEST(LogWriter, WritesNothingAtLevelNone)
{
    EXPECT_EQ(StandardErrorOf("none", [] { LogError("%s", "error"); }), "");
}

TEST(LogWriter, KeepsLongLinesWhole)
{
    const std::string longText(5000, 'x');
    const std::string text = StandardErrorOf("debug", [&] { LogInfo("%s", longText.c_str()); });
    EXPECT_NE(text.find(longText + "\n"), std::string::npos);
}

TEST(LogWriter, WritesNothingIntoTheJournalThatItsReadersHide)
{
    // journalctl shows a line with such characters as "[6B blob data]".
    const auto fields = JournalFieldsOf(platform::kWarn, "TAG", "file.cpp: Work(12) > a\x1b");
    const std::vector<std::pair<std::string, std::string>> expected = {{"MESSAGE", "file.cpp: Work(12) > a\\x1b"},
                                                                       {"PRIORITY", "4"},
                                                                       {"SYSLOG_IDENTIFIER", "TAG"},
                                                                       {"CODE_FILE", "file.cpp"},
                                                                       {"CODE_FUNC", "Work"},
                                                                       {"CODE_LINE", "12"}};
    EXPECT_EQ(fields, expected);
}

}  // namespace
}  // namespace lyn::linux_platform
