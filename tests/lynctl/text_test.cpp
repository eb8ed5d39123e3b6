// SPDX-License-Identifier: Apache-2.0
#include "text.h"

#include <gtest/gtest.h>

#include "timeline.h"

namespace lynctl {
namespace {

using namespace std::string_literals;

TEST(Printable, OrdinaryTextStaysAsItIs)
{
    EXPECT_EQ(Printable("Kitchen phone ~\\", true), "Kitchen phone ~\\");
    EXPECT_EQ(Printable("Zoë 日本 😀", true), "Zoë 日本 😀");
    EXPECT_EQ(Printable("", true), "");
}

TEST(Printable, ControlCharactersAreWrittenOut)
{
    EXPECT_EQ(Printable("\x1b[2Jgone", true), "\\x1b[2Jgone");
    EXPECT_EQ(Printable("a\r\n\tb\x7f", true), "a\\x0d\\x0a\\x09b\\x7f");
    EXPECT_EQ(Printable("a\0b"s, true), "a\\x00b");
    // A one-character form of "escape [", understood by some terminals.
    EXPECT_EQ(Printable("\xc2\x9b"
                        "2J",
                        true),
              "\\u{9b}2J");
}

TEST(Printable, CharactersThatTurnOrHideTextAreWrittenOut)
{
    EXPECT_EQ(Printable("a\xe2\x80\xae"
                        "b",
                        true),
              "a\\u{202e}b");
    EXPECT_EQ(Printable("\xe2\x81\xa6x", true), "\\u{2066}x");
    EXPECT_EQ(Printable("a\xe2\x80\xa8"
                        "b",
                        true),
              "a\\u{2028}b");
    EXPECT_EQ(Printable("\xee\x80\x80", true), "\\u{e000}");
}

TEST(Printable, BytesThatAreNoUtf8AreWrittenOutOneByOne)
{
    EXPECT_EQ(Printable("a\xff\xfe", true), "a\\xff\\xfe");
    EXPECT_EQ(Printable("cut \xe2\x82", true), "cut \\xe2\\x82");
    EXPECT_EQ(Printable("\xc0\xaf", true), "\\xc0\\xaf");           // a slash, too long
    EXPECT_EQ(Printable("\xed\xa0\x80", true), "\\xed\\xa0\\x80");  // half a pair
}

TEST(Printable, WithoutUnicodeOnlyAsciiIsLeft)
{
    EXPECT_EQ(Printable("Zoë 日", false), "Zo\\u{eb} \\u{65e5}");
}

TEST(Printable, AFloodOfMarksIsWrittenOut)
{
    const std::string mark = "\xcc\x81";
    EXPECT_EQ(Printable("e" + mark + mark + mark, true), "e" + mark + mark + mark);
    EXPECT_EQ(Printable("e" + mark + mark + mark + mark, true), "e" + mark + mark + mark + "\\u{301}");
}

TEST(Printable, TwiceIsAsGoodAsOnce)
{
    const std::string once = Printable("\x1b\xff\xe2\x80\xae ë", true);
    EXPECT_EQ(Printable(once, true), once);
}

TEST(Width, CountsColumnsNotBytes)
{
    EXPECT_EQ(Width(""), 0);
    EXPECT_EQ(Width("abc"), 3);
    EXPECT_EQ(Width("Zoë"), 3);
    EXPECT_EQ(Width("日本"), 4);
    EXPECT_EQ(Width("e\xcc\x81"), 1);
}

TEST(Fit, LeavesAloneWhatFits)
{
    EXPECT_EQ(Fit("abc", 3, true), "abc");
}

TEST(Fit, MarksTheCut)
{
    EXPECT_EQ(Fit("abcdef", 4, true), "abc…");
    EXPECT_EQ(Fit("abcdef", 4, false), "a...");
}

TEST(Fit, NeverCutsAWideCharacterInHalf)
{
    EXPECT_EQ(Fit("日本語", 4, true), "日…");
    EXPECT_EQ(Fit("日本語", 3, true), "日…");
    EXPECT_EQ(Fit("日本語", 2, true), "…");
}

TEST(Fit, CopesWithNoRoomAtAll)
{
    EXPECT_EQ(Fit("abcdef", 2, false), "..");
    EXPECT_EQ(Fit("abcdef", 0, true), "");
    EXPECT_EQ(Fit("abcdef", -1, true), "");
}

TEST(Pad, FillsEitherSide)
{
    EXPECT_EQ(Pad("日", 4), "日  ");
    EXPECT_EQ(Pad("7", 3, true), "  7");
    EXPECT_EQ(Pad("long", 2), "long");
}

TEST(Wrap, BreaksBehindCommas)
{
    EXPECT_EQ(Wrap("aaa,bbb,ccc", 8, 2), "aaa,bbb,\n  ccc");
    EXPECT_EQ(Wrap("aaa,bbb", 7, 2), "aaa,bbb");
}

TEST(Wrap, BreaksAnywhereWhenThereIsNoComma)
{
    EXPECT_EQ(Wrap("abcdefgh", 3, 1), "abc\n def\n gh");
    EXPECT_EQ(Wrap("日本語", 4, 0), "日本\n語");
}

TEST(Wrap, EndsWhenNotEvenOneCharacterFits)
{
    EXPECT_EQ(Wrap("日本", 1, 0), "日\n本");
}

}  // namespace
}  // namespace lynctl
