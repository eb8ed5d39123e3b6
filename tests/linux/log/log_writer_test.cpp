// SPDX-License-Identifier: Apache-2.0
#include "log/LogWriter.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "FakeJournal.h"
#include "LogText.h"
#include "log/Log.h"

namespace lyn::linux_platform {
namespace {

std::string StandardErrorOf(const char* level, const std::function<void()>& work)
{
    return linux_tests::StandardErrorOf({{"LYN_LOG_TARGET", "stderr"}, {"LYN_LOG_LEVEL", level}}, work);
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
