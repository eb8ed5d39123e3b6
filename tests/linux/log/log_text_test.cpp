// SPDX-License-Identifier: Apache-2.0
#include "LogText.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace lyn::platform {
namespace {

TEST(LogText, LetsNoLineSteerATerminal)
{
    EXPECT_EQ(Printable("a\x1b[31m\nb\x7f"), "a\\x1b[31m\\x0ab\\x7f");
    EXPECT_EQ(Printable("Gr\xC3\xBC\xC3\x9F \xE7\x95\xAA"), "Gr\xC3\xBC\xC3\x9F \xE7\x95\xAA");
    EXPECT_EQ(Printable(std::string("\0", 1)), "\\x00");
    EXPECT_EQ(Printable("\xC2\x9B[31m"), "\\xc2\\x9b[31m") << "one character that begins a sequence";
    EXPECT_EQ(Printable("\xE2\x80\xAE"), "\\xe2\\x80\\xae") << "it turns the line round";
    EXPECT_EQ(Printable("\x9B[31m\xC3"), "\\x9b[31m\\xc3") << "no UTF-8";
}

TEST(LogText, HasALevelForEachNameAndTheOtherForTheRest)
{
    const char* const names[] = {"debug", "info", "warn", "error", "none"};
    for (int i = 0; i < 5; ++i) {
        ::setenv("LYN_LOG_LEVEL", names[i], 1);
        EXPECT_EQ(LevelFromEnvironment(0), kDebug + i);
    }
    ::setenv("LYN_LOG_LEVEL", "loud", 1);
    EXPECT_EQ(LevelFromEnvironment(kWarn), kWarn);
    ::unsetenv("LYN_LOG_LEVEL");
    EXPECT_EQ(LevelFromEnvironment(kNoPriority), kNoPriority);
}

}  // namespace
}  // namespace lyn::platform
