// SPDX-License-Identifier: Apache-2.0
#include "log/SourcePlace.h"

#include <gtest/gtest.h>

namespace lyn::linux_platform {
namespace {

TEST(SourcePlace, IsReadFromTheBeginningOfALine)
{
    const auto place = ReadSourcePlace("CScanner.cpp: StartScan(47) > IN >> a(1) > b");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->file, "CScanner.cpp");
    EXPECT_EQ(place->function, "StartScan");
    EXPECT_EQ(place->line, "47");
}

TEST(SourcePlace, KeepsTheArgumentsOfALongFunctionName)
{
    const auto place = ReadSourcePlace("a.cpp: void lyn::F(int, char)(3) > x");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->function, "void lyn::F(int, char)");
    EXPECT_EQ(place->line, "3");
}

TEST(SourcePlace, IsNotSeenInOtherLines)
{
    for (const char* const text : {"", "no place", "a.cpp: f > x", "a.cpp: f() > x", "a.cpp: f(x) > y",
                                   ") > (: ", "f(3) > a.cpp: x", "a.cpp: ) > x"}) {
        EXPECT_FALSE(ReadSourcePlace(text)) << text;
    }
}

}  // namespace
}  // namespace lyn::linux_platform
