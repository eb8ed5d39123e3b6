// SPDX-License-Identifier: Apache-2.0
#include "lyn_service_log.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;

class Log : public SimulatedTv {};

int LogAtEachPriority()
{
    LYN_LOGD("%s", "debug");
    LYN_LOGI("%s", "info");
    LYN_LOGW("%s", "warn");
    LYN_LOGE("%s", "error");
    return __LINE__ - 4;
}

TEST_F(Log, HasOneMacroForEachPriority)
{
    LogAtEachPriority();
    const std::vector<simulator::LogLine> lines = simulator::Log();
    ASSERT_EQ(lines.size(), 4U);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].priority, 3 + static_cast<int>(i));
        EXPECT_EQ(lines[i].tag, "LYN_SERVICE");
    }
}

TEST_F(Log, NamesFileFunctionAndLineBeforeTheMessage)
{
    const int line = LogAtEachPriority();
    const std::vector<simulator::LogLine> lines = simulator::Log();
    ASSERT_EQ(lines.size(), 4U);
    const auto prefix = [](int number) {
        return "logging_test.cpp: LogAtEachPriority(" + std::to_string(number) + ") > ";
    };
    EXPECT_EQ(lines[0].text, prefix(line) + "debug");
    EXPECT_EQ(lines[1].text, prefix(line + 1) + "info");
    EXPECT_EQ(lines[2].text, prefix(line + 2) + "warn");
    EXPECT_EQ(lines[3].text, prefix(line + 3) + "error");
}

TEST_F(Log, FormatsTheArgumentsOfItsCaller)
{
    LYN_LOGI("%s, %d, [0x%04x], %5.1f %%", "text", -7, 0xABU, 2.25);
    EXPECT_THAT(Messages(INFO), ElementsAre("text, -7, [0x00ab],   2.2 %"));
}

TEST_F(Log, PassesAFixedTextUntouched)
{
    LYN_LOGE("%s", "100 %s %n of it");
    EXPECT_THAT(Messages(ERROR), ElementsAre("100 %s %n of it"));
}

TEST_F(Log, KeepsALongMessage)
{
    const std::string message(5000, 'x');
    LYN_LOGI("%s", message.c_str());
    EXPECT_THAT(Messages(INFO), ElementsAre(message));
}

TEST_F(Log, NamesALambdaAsTheCompilerDoes)
{
    [] { LYN_LOGI("%s", "inside"); }();
    ASSERT_EQ(simulator::Log().size(), 1U);
    EXPECT_EQ(simulator::Log()[0].text.rfind("logging_test.cpp: operator()(", 0), 0U) << simulator::Log()[0].text;
}

TEST(LogFileName, IsThePartBehindTheLastSlash)
{
    EXPECT_STREQ(BaseName("core/Scanner/CScanner.cpp"), "CScanner.cpp");
    EXPECT_STREQ(BaseName("/CScanner.cpp"), "CScanner.cpp");
    EXPECT_STREQ(BaseName("CScanner.cpp"), "CScanner.cpp");
    EXPECT_STREQ(BaseName("../a.b/c"), "c");
    EXPECT_STREQ(BaseName("folder/"), "");
    EXPECT_STREQ(BaseName(""), "");
}

TEST(LogText, StandsInForOneThatIsAbsent)
{
    EXPECT_STREQ(Printable("text"), "text");
    EXPECT_STREQ(Printable(""), "");
    ASSERT_NE(Printable(nullptr), nullptr);
    EXPECT_STREQ(Printable(nullptr), "(null)");
}

// ---- Tracing -----------------------------------------------------------------------------------------

class Trace : public SimulatedTv {};

void Succeed()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, 41);
    LYN_LOGI("%s", "at work");
}

[[noreturn]] void Fail()
{
    const ApiTracker tracker("void Fail()", 42);
    throw std::runtime_error("no");
}

int ReturnEarly(bool early)
{
    const ApiTracker tracker("int ReturnEarly(bool)", 43);
    if (early) {
        return 1;
    }
    return 2;
}

TEST_F(Trace, BracketsAnOperationWithItsDeclarationAndLine)
{
    Succeed();
    const std::vector<Line> lines = LogLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].priority, DEBUG);
    EXPECT_EQ(lines[0].message.rfind("IN >> [void lyn::test::", 0), 0U) << lines[0].message;
    EXPECT_NE(lines[0].message.find("::Succeed()(41)]"), std::string::npos) << lines[0].message;
    EXPECT_EQ(lines[1].message, "at work");
    EXPECT_EQ(lines[2].priority, DEBUG);
    EXPECT_EQ(lines[2].message, "OUT << " + lines[0].message.substr(6));
}

TEST_F(Trace, IsWrittenInTheNameOfTheHeader)
{
    Succeed();
    const std::vector<simulator::LogLine> lines = simulator::Log();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[0].text, testing::MatchesRegex("lyn_service_log\\.h: ApiTracker\\([0-9]+\\) > IN >> .*"));
    EXPECT_THAT(lines[2].text, testing::MatchesRegex("lyn_service_log\\.h: ~ApiTracker\\([0-9]+\\) > OUT << .*"));
    EXPECT_EQ(lines[0].tag, "LYN_SERVICE");
    EXPECT_EQ(lines[2].tag, "LYN_SERVICE");
}

TEST_F(Trace, HasItsOutLineWhenTheOperationThrows)
{
    EXPECT_THROW(Fail(), std::runtime_error);
    EXPECT_THAT(Messages(DEBUG), ElementsAre("IN >> [void Fail()(42)]", "OUT << [void Fail()(42)]"));
}

TEST_F(Trace, HasItsOutLineOnEachWayOut)
{
    for (const bool early : {true, false}) {
        SCOPED_TRACE(early);
        simulator::ClearLog();
        ReturnEarly(early);
        EXPECT_THAT(Messages(DEBUG),
                    ElementsAre("IN >> [int ReturnEarly(bool)(43)]", "OUT << [int ReturnEarly(bool)(43)]"));
    }
}

TEST_F(Trace, KeepsACopyOfTheDeclaration)
{
    std::string function = "void a_function_whose_name_does_not_fit_into_a_string_object()";
    {
        const ApiTracker tracker(function, 1);
        function = "something else";
    }
    EXPECT_EQ(Messages(DEBUG).back(),
              "OUT << [void a_function_whose_name_does_not_fit_into_a_string_object()(1)]");
}

TEST_F(Trace, TakesADeclarationThatLooksLikeAFormat)
{
    {
        const ApiTracker tracker("int operator%(s, d) %s%n", 5);
    }
    EXPECT_THAT(Messages(DEBUG),
                ElementsAre("IN >> [int operator%(s, d) %s%n(5)]", "OUT << [int operator%(s, d) %s%n(5)]"));
}

TEST_F(Trace, NestsAsTheOperationsDo)
{
    {
        const ApiTracker outer("outer", 1);
        const ApiTracker inner("inner", 2);
    }
    EXPECT_THAT(Messages(DEBUG),
                ElementsAre("IN >> [outer(1)]", "IN >> [inner(2)]", "OUT << [inner(2)]", "OUT << [outer(1)]"));
}

}  // namespace
}  // namespace lyn::test
