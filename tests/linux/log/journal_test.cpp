// SPDX-License-Identifier: Apache-2.0
//
// What reaches the journal, field by field.
#include <gtest/gtest.h>

#include <thread>

#include "FakeJournal.h"
#include "log/Log.h"
#include "lyn_platform/log.h"

namespace lyn::linux_tests {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

/// The lines that a new process writes; what it writes to its standard error must be nothing.
std::vector<FakeJournal::Entry> EntriesOf(const std::function<void()>& work,
                                          const std::optional<std::string>& level = "debug")
{
    FakeJournal journal;
    EXPECT_EQ(StandardErrorOf({{"LYN_LOG_LEVEL", level}, {"LYN_LOG_TARGET", std::nullopt}}, work), "");
    return journal.Take();
}

void LogAtEachPriority()
{
    for (int priority = 2; priority <= 7; ++priority) {
        platform_log_print(0, priority, "LYN_SERVICE", "priority %d", priority);
    }
}

TEST(Journal, GetsALineOfTheLibraryWithItsPlace)
{
    const auto entries = EntriesOf(
        [] { platform_log_print(0, 4, "LYN_SERVICE", "%s", "CScanner.cpp: StartScan(47) > [Tom's phone] x=1"); });
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].fields, (Fields{{"MESSAGE", "CScanner.cpp: StartScan(47) > [Tom's phone] x=1"},
                                         {"PRIORITY", "6"},
                                         {"SYSLOG_IDENTIFIER", "LYN_SERVICE"},
                                         {"CODE_FILE", "CScanner.cpp"},
                                         {"CODE_FUNC", "StartScan"},
                                         {"CODE_LINE", "47"}}));
}

TEST(Journal, GetsALineWithoutAPlaceAsItIs)
{
    const auto entries = EntriesOf([] { linux_platform::LogWarn("%d phones", 3); });
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].fields,
              (Fields{{"MESSAGE", "3 phones"}, {"PRIORITY", "4"}, {"SYSLOG_IDENTIFIER", "LYN_PLATFORM"}}));
}

TEST(Journal, GetsNewlinesAndControlCharactersWrittenOutAndNoFieldByThem)
{
    const std::string text = "first\nPRIORITY=0\n\x1b[31m\tsecond\n";
    const auto entries = EntriesOf([&] { platform_log_print(0, 6, "LYN_SERVICE", "%s", text.c_str()); });
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].Value("MESSAGE"), "first\\x0aPRIORITY=0\\x0a\\x1b[31m\\x09second\\x0a");
    EXPECT_EQ(entries[0].Value("PRIORITY"), "3");
    EXPECT_EQ(entries[0].fields.size(), 3U);
}

TEST(Journal, GetsNoFieldByNewlinesInThePlaceOrTheTag)
{
    const auto entries = EntriesOf(
        [] { platform_log_print(0, 6, "TAG\nTAG_FIELD=1", "%s", "a\nFILE_FIELD=1: f\nFUNCTION_FIELD=1(3) > x"); });
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].fields.size(), 6U);
    EXPECT_EQ(entries[0].Value("CODE_FILE"), "a\nFILE_FIELD=1");
    EXPECT_EQ(entries[0].Value("CODE_FUNC"), "f\nFUNCTION_FIELD=1");
    EXPECT_EQ(entries[0].Value("CODE_LINE"), "3");
    EXPECT_EQ(entries[0].Value("SYSLOG_IDENTIFIER"), "TAG\nTAG_FIELD=1");
}

TEST(Journal, GetsLongLinesWhole)
{
    for (const std::size_t length : {std::size_t{0}, std::size_t{5000}, std::size_t{1'000'000}}) {
        const std::string text(length, 'x');
        const auto entries = EntriesOf([&] { platform_log_print(0, 4, "LYN_SERVICE", "%s", text.c_str()); });
        ASSERT_EQ(entries.size(), 1U);
        EXPECT_EQ(entries[0].Value("MESSAGE"), text);
    }
}

TEST(Journal, GetsSyslogPriorities)
{
    std::vector<std::string> priorities;
    for (const auto& entry : EntriesOf(&LogAtEachPriority)) {
        priorities.push_back(entry.Value("MESSAGE") + " " + entry.Value("PRIORITY"));
    }
    EXPECT_EQ(priorities, (std::vector<std::string>{"priority 3 7", "priority 4 6", "priority 5 4", "priority 6 3",
                                                    "priority 7 3"}));
}

TEST(Journal, GetsWhatTheLevelLetsThrough)
{
    const std::vector<std::pair<std::optional<std::string>, std::size_t>> levels = {
        {"debug", 5},      {"info", 4}, {"warn", 3}, {"error", 2}, {"none", 1},
        {std::nullopt, 4}, {"", 4},     {"loud", 4}, {"DEBUG", 4}, {"debug ", 4}};
    for (const auto& [level, count] : levels) {
        EXPECT_EQ(EntriesOf(&LogAtEachPriority, level).size(), count) << level.value_or("(not set)");
    }
}

TEST(Journal, IsLeftAloneWhenStandardErrorIsAskedFor)
{
    FakeJournal journal;
    const std::string text = StandardErrorOf({{"LYN_LOG_LEVEL", "info"}, {"LYN_LOG_TARGET", "stderr"}},
                                             [] { linux_platform::LogError("%s", "shown"); });
    EXPECT_NE(text.find(" E/LYN_PLATFORM: shown\n"), std::string::npos) << text;
    EXPECT_TRUE(journal.Take().empty());
    EXPECT_EQ(StandardErrorOf({{"LYN_LOG_LEVEL", "info"}, {"LYN_LOG_TARGET", "elsewhere"}},
                              [] { linux_platform::LogError("%s", "kept"); }),
              "");
    EXPECT_EQ(journal.Take().size(), 1U);
}

TEST(Journal, IsReplacedByStandardErrorWhereThereIsNone)
{
    const NoJournal none;
    const std::string text = StandardErrorOf({{"LYN_LOG_LEVEL", "debug"}, {"LYN_LOG_TARGET", std::nullopt}}, [] {
        LogAtEachPriority();
        platform_log_print(0, 4, nullptr, "%s", "no\ntag");
    });
    for (const char* const line :
         {" D/LYN_SERVICE: priority 3\n", " I/LYN_SERVICE: priority 4\n", " W/LYN_SERVICE: priority 5\n",
          " E/LYN_SERVICE: priority 6\n", " E/LYN_SERVICE: priority 7\n", " I/: no\\x0atag\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    }
}

TEST(StandardError, GetsTheLinesOfSeveralThreadsWhole)
{
    const std::string text = StandardErrorOf({{"LYN_LOG_LEVEL", "info"}, {"LYN_LOG_TARGET", "stderr"}}, [] {
        std::vector<std::thread> threads;
        for (const char letter : {'a', 'b', 'c'}) {
            threads.emplace_back([letter] {
                for (int i = 0; i < 50; ++i) {
                    linux_platform::LogInfo("%s.", std::string(200, letter).c_str());
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    for (const char letter : {'a', 'b', 'c'}) {
        const std::string line = " I/LYN_PLATFORM: " + std::string(200, letter) + ".\n";
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find(line, at)) != std::string::npos; at += line.size()) {
            ++count;
        }
        EXPECT_EQ(count, 50U) << letter;
    }
}

TEST(Journal, GetsNothingForALineWithoutAFormat)
{
    EXPECT_TRUE(EntriesOf([] { platform_log_print(0, 6, "LYN_SERVICE", nullptr); }).empty());
}

}  // namespace
}  // namespace lyn::linux_tests
