// SPDX-License-Identifier: Apache-2.0
#include "lyn_platform/log.h"

#include <unistd.h>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class LogCapture : public SimulatorTest {};

TEST_F(LogCapture, KeepsPriorityTagAndText)
{
    EXPECT_EQ(platform_log_print(0, 4, "TAG", "%s %d", "text", 5), 0);
    const auto lines = Log();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].priority, 4);
    EXPECT_EQ(lines[0].tag, "TAG");
    EXPECT_EQ(lines[0].text, "text 5");
}

TEST_F(LogCapture, KeepsLongAndEmptyLinesWhole)
{
    const std::string text(5000, 'x');
    platform_log_print(0, 3, "TAG", "%s!", text.c_str());
    platform_log_print(0, 3, "TAG", "%s", "");
    const auto lines = Log();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].text, text + "!");
    EXPECT_EQ(lines[1].text, "");
}

TEST_F(LogCapture, KeepsWhatItIsToldToKeep)
{
    SetLogCapture(5);
    platform_log_print(0, 4, "TAG", "info");
    platform_log_print(0, 5, "TAG", "warning");
    SetLogCapture(7);
    platform_log_print(0, 6, "TAG", "error");
    ASSERT_EQ(Log().size(), 1U);
    EXPECT_EQ(Log()[0].text, "warning");
    ClearLog();
    EXPECT_TRUE(Log().empty());
}

TEST_F(LogCapture, BeginsAnewWithAReset)
{
    SetLogCapture(7);
    platform_log_print(0, 6, "TAG", "lost");
    Reset();
    platform_log_print(0, 3, "TAG", "kept");
    ASSERT_EQ(Log().size(), 1U);
    EXPECT_EQ(Log()[0].text, "kept");
}

TEST_F(LogCapture, TellsAListenerEveryLineWhateverIsKept)
{
    std::vector<std::string> heard;
    SetLogListener([&](const LogLine& line) { heard.push_back(line.tag + " " + line.text); });
    SetLogCapture(7);
    platform_log_print(0, 3, "TAG", "%d", 1);
    Reset();
    platform_log_print(0, 6, "TAG", "%d", 2);
    SetLogListener(nullptr);
    platform_log_print(0, 6, "TAG", "%d", 3);
    EXPECT_EQ(heard, (std::vector<std::string>{"TAG 1", "TAG 2"}));
}

class KernelLogCapture : public SimulatorTest {
protected:
    static ssize_t WriteLine(const std::string& line)
    {
        const int log = platform_kmsg_open();
        EXPECT_GE(log, 0);
        const ssize_t written = ::write(log, line.data(), line.size());
        ::close(log);
        return written;
    }
};

TEST_F(LogCapture, KeepsControlBytesAsTheyAre)
{
    platform_log_print(0, 6, "TAG", "%s", "\033[2J\r\x9b");
    ASSERT_EQ(Log().size(), 1U);
    EXPECT_EQ(Log()[0].text, "\033[2J\r\x9b");
}

TEST_F(KernelLogCapture, KeepsTheBytesOfOneWriteTogether)
{
    const std::string zeros("[a]\0\0b", 6);
    EXPECT_EQ(WriteLine(zeros), 6);
    EXPECT_EQ(WriteLine(std::string(40'000, 'x')), 40'000);
    EXPECT_EQ(KernelLog(), (std::vector<std::string>{zeros, std::string(40'000, 'x')}));
    EXPECT_EQ(KernelLog().size(), 2U) << "reading does not take them away";
}

TEST_F(KernelLogCapture, KeepsLinesOfWritersThatOverlap)
{
    const int first = platform_kmsg_open();
    const int second = platform_kmsg_open();
    EXPECT_TRUE(KernelLog().empty());
    EXPECT_EQ(::write(second, "2", 1), 1);
    EXPECT_EQ(::write(first, "1", 1), 1);
    EXPECT_EQ(KernelLog(), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(::write(first, "3", 1), 1) << "a second write does no harm";
    ::close(first);
    ::close(second);
    EXPECT_EQ(KernelLog().size(), 3U);
}

TEST_F(KernelLogCapture, TakesThousandsOfLines)
{
    for (int i = 0; i < 3000; ++i) {
        ASSERT_EQ(WriteLine("line"), 4);
    }
    EXPECT_EQ(KernelLog().size(), 3000U);
}

TEST_F(KernelLogCapture, GivesOutADescriptorAlsoWhenManyAreLeftOpen)
{
    std::vector<int> open;
    for (int i = 0; i < 200; ++i) {
        open.push_back(platform_kmsg_open());
        EXPECT_GE(open.back(), 0);
        EXPECT_EQ(::write(open.back(), "x", 1), 1);
    }
    for (const int log : open) {
        ::close(log);
    }
}

TEST_F(KernelLogCapture, CanRefuse)
{
    SetKernelLogMode(KernelLogMode::refuseOpen);
    EXPECT_EQ(platform_kmsg_open(), -1);
    SetKernelLogMode(KernelLogMode::failWrite);
    EXPECT_EQ(WriteLine("lost"), -1);
    SetKernelLogMode(KernelLogMode::capture);
    EXPECT_EQ(WriteLine("kept"), 4);
    EXPECT_EQ(KernelLog(), std::vector<std::string>{"kept"});
}

TEST_F(KernelLogCapture, CanDiscard)
{
    SetKernelLogMode(KernelLogMode::discard);
    EXPECT_EQ(WriteLine("lost"), 4);
    EXPECT_TRUE(KernelLog().empty());
}

TEST_F(KernelLogCapture, IsEmptyAfterAReset)
{
    WriteLine("old");
    SetKernelLogMode(KernelLogMode::refuseOpen);
    Reset();
    EXPECT_TRUE(KernelLog().empty());
    EXPECT_EQ(WriteLine("new"), 3);
}

}  // namespace
}  // namespace lyn::simulator::test
