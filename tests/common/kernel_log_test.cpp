// SPDX-License-Identifier: Apache-2.0
//
// The kernel-log writer. Its lines look cut on purpose: the length of the write is that of the whole text,
// the bytes are those of a line of 512, with zeros behind.
#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "lyn_service_log.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t LINE_SIZE = 512;

class KernelLog : public SimulatedTv {
protected:
    static std::string OnlyLine()
    {
        const std::vector<std::string> lines = simulator::KernelLog();
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? "" : lines[0];
    }

    static int OpenFiles()
    {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return static_cast<int>(std::distance(begin(files), end(files)));
    }

    // Runs the work and returns what it prints to standard output and standard error.
    template <typename Work>
    static std::string Printed(const Work& work)
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        work();
        const std::string out = testing::internal::GetCapturedStdout();
        return out + testing::internal::GetCapturedStderr();
    }
};

TEST_F(KernelLog, LineIsTagFunctionAndMessage)
{
    KmsgPrint("LYN_SERVICE", "StartScan", "[%s]", "Current time : now");
    EXPECT_EQ(OnlyLine(), "[LYN_SERVICE][StartScan][Current time : now]");
}

TEST_F(KernelLog, LineCarriesItsOwnTagWhateverTheCallerGives)
{
    KmsgPrint("SOMEBODY", "Function", "%s", "text");
    KmsgPrint(nullptr, "Function", "%s", "text");
    EXPECT_THAT(simulator::KernelLog(), ElementsAre("[LYN_SERVICE][Function]text", "[LYN_SERVICE][Function]text"));
}

TEST_F(KernelLog, FormatsEveryArgument)
{
    KmsgPrint("", "F", "[%s] address : %s, %d%%", "a", "b %s", -3);
    EXPECT_EQ(OnlyLine(), "[LYN_SERVICE][F][a] address : b %s, -3%");
}

TEST_F(KernelLog, TakesAFunctionThatLooksLikeAFormat)
{
    KmsgPrint("", "operator%s%n", "%s", "text");
    EXPECT_EQ(OnlyLine(), "[LYN_SERVICE][operator%s%n]text");
}

TEST_F(KernelLog, WritesAnEmptyMessageAsThePrefixAlone)
{
    KmsgPrint("", "F", "%s", "");
    EXPECT_EQ(OnlyLine(), "[LYN_SERVICE][F]");
}

TEST_F(KernelLog, WritesEachLineAtOnceInTheOrderOfTheCalls)
{
    KmsgPrint("", "A", "%d", 1);
    KmsgPrint("", "B", "%d", 2);
    KmsgPrint("", "A", "%d", 3);
    EXPECT_THAT(simulator::KernelLog(),
                ElementsAre("[LYN_SERVICE][A]1", "[LYN_SERVICE][B]2", "[LYN_SERVICE][A]3"));
}

// A line as it is written: the text cut by the formatter, then zeros up to the length of the whole text.
std::string AsWritten(const std::string& text)
{
    std::string line = text.substr(0, LINE_SIZE - 1);
    line.resize(text.size(), '\0');
    return line;
}

TEST_F(KernelLog, WritesTheWholeLengthOfATextThatDoesNotFitAndZerosBehindItsCut)
{
    const std::string prefix = "[LYN_SERVICE][OnLeScanResult]";
    for (const std::size_t total :
         {std::size_t{510}, std::size_t{511}, std::size_t{512}, std::size_t{513}, std::size_t{514},
          std::size_t{1023}, std::size_t{1024}, std::size_t{1025}, std::size_t{20000}}) {
        SCOPED_TRACE(total);
        const std::string message(total - prefix.size(), 'm');
        simulator::Reset();
        KmsgPrint("", "OnLeScanResult", "%s", message.c_str());
        EXPECT_EQ(OnlyLine(), AsWritten(prefix + message));
    }
}

TEST_F(KernelLog, WritesTheWholeLengthWhenTheFunctionAloneDoesNotFit)
{
    for (const std::size_t length :
         {std::size_t{497}, std::size_t{498}, std::size_t{499}, std::size_t{600}, std::size_t{3000}}) {
        SCOPED_TRACE(length);
        const std::string function(length, 'f');
        simulator::Reset();
        KmsgPrint("", function.c_str(), "%s", "message");
        EXPECT_EQ(OnlyLine(), AsWritten("[LYN_SERVICE][" + function + "]message"));
    }
}

TEST_F(KernelLog, ThatCannotBeOpenedIsPassedOverInSilence)
{
    simulator::SetKernelLogMode(simulator::KernelLogMode::refuseOpen);
    EXPECT_EQ(Printed([] { KmsgPrint("", "F", "%s", "text"); }), "");
    EXPECT_THAT(LogLines(), IsEmpty());
    EXPECT_THAT(simulator::KernelLog(), IsEmpty());
}

TEST_F(KernelLog, ThatCannotBeWrittenIsReportedOnStandardOutput)
{
    simulator::SetKernelLogMode(simulator::KernelLogMode::failWrite);
    testing::internal::CaptureStdout();
    KmsgPrint("", "F", "%s", "text");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Fail to write(/dev/kmsg) " + std::to_string(EBADF) + "\n");
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(KernelLog, PrintsNothingWhenItIsWritten)
{
    EXPECT_EQ(Printed([] { KmsgPrint("", "F", "%s", "text"); }), "");
}

TEST_F(KernelLog, IsClosedAfterEachLine)
{
    using Mode = simulator::KernelLogMode;
    for (const Mode mode : {Mode::capture, Mode::failWrite}) {
        simulator::SetKernelLogMode(mode);
        Printed([] { KmsgPrint("", "F", "%s", "the first one opens what stays open"); });
        simulator::KernelLog();
        const int before = OpenFiles();
        Printed([] {
            for (int i = 0; i < 20; ++i) {
                KmsgPrint("", "F", "%d", i);
            }
        });
        simulator::KernelLog();
        EXPECT_EQ(OpenFiles(), before);
    }
}

TEST_F(KernelLog, IsWrittenAgainAfterAFailure)
{
    simulator::FailCall("platform_kmsg_open", -1);
    KmsgPrint("", "F", "%s", "lost");
    KmsgPrint("", "F", "%s", "kept");
    EXPECT_EQ(OnlyLine(), "[LYN_SERVICE][F]kept");
}

}  // namespace
}  // namespace lyn::test
