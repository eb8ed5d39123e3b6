// SPDX-License-Identifier: Apache-2.0
#include "table.h"

#include <gtest/gtest.h>

#include <sstream>

#include "phone_table.h"
#include "text.h"

namespace lynctl {
namespace {

const Look kUnicode{.unicode = true};
const Look kAscii{};

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(Table, IsFramedAndAligned)
{
    Table table({{"NAME"}, {"RSSI", 0, 0, true}});
    table.AddRow({{"日本"}, {"-5"}});
    table.AddRow({{"Kitchen"}, {"-100"}});
    EXPECT_EQ(table.Render(kUnicode), "┌─────────┬──────┐\n"
                                      "│ NAME    │ RSSI │\n"
                                      "├─────────┼──────┤\n"
                                      "│ 日本    │   -5 │\n"
                                      "│ Kitchen │ -100 │\n"
                                      "└─────────┴──────┘\n");
}

TEST(Table, UsesAsciiWhereNothingElseCanBeShown)
{
    Table table({{"NAME"}});
    table.AddRow({{"Zoë"}});
    EXPECT_EQ(table.Render(kAscii), "+----------+\n"
                                    "| NAME     |\n"
                                    "+----------+\n"
                                    "| Zo\\u{eb} |\n"
                                    "+----------+\n");
}

TEST(Table, MakesEveryCellPrintable)
{
    Table table({{"NAME"}});
    table.AddRow({{"\x1b[31m\n"}});
    const std::string out = table.Render(kUnicode);
    EXPECT_EQ(out.find('\x1b'), std::string::npos);
    EXPECT_NE(out.find("\\x1b[31m\\x0a"), std::string::npos);
}

TEST(Table, CutsCellsAtTheColumnsGreatestWidth)
{
    Table table({{"ID", 4}});
    table.AddRow({{"abcdefgh"}});
    EXPECT_EQ(Lines(table.Render(kUnicode))[3], "│ abc… │");
}

TEST(Table, GivesWayToANarrowTerminal)
{
    Table table({{"NAME", 0, 5}, {"ADDRESS"}, {"ID", 0, 5}});
    table.AddRow({{"a long name of a phone"}, {"AA:BB:CC:DD:EE:01"}, {"0123456789"}});
    const Look look{.unicode = true, .width = 50};
    for (const std::string& line : Lines(table.Render(look))) {
        EXPECT_EQ(Width(line), 50) << line;
    }
    EXPECT_NE(table.Render(look).find("AA:BB:CC:DD:EE:01"), std::string::npos);
}

TEST(Table, StaysLegibleWhenTheTerminalIsTooNarrow)
{
    Table table({{"NAME", 0, 5}, {"ADDRESS"}});
    table.AddRow({{"a long name"}, {"AA:BB:CC:DD:EE:01"}});
    EXPECT_EQ(Lines(table.Render({.unicode = true, .width = 10}))[3], "│ a lo… │ AA:BB:CC:DD:EE:01 │");
}

TEST(Table, CountsTheRowsThatAreLeftOut)
{
    Table table({{"N"}});
    for (int i = 0; i < 5; ++i) {
        table.AddRow({{std::to_string(i)}});
    }
    const std::vector<std::string> lines = Lines(table.Render(kUnicode, 2));
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[4], "│ 1 │");
    EXPECT_EQ(lines[6], "  and 3 more");
}

TEST(Table, IsColouredOnlyWhereAsked)
{
    Table table({{"N"}});
    table.AddRow({{"x", Style::good}});
    EXPECT_EQ(table.Render(kUnicode).find('\x1b'), std::string::npos);
    EXPECT_NE(table.Render({.unicode = true, .colour = true}).find("\x1b[32mx\x1b[0m"), std::string::npos);
}

TEST(SignalBar, GrowsWithTheSignal)
{
    EXPECT_EQ(SignalBar(-128, true), "");
    EXPECT_EQ(SignalBar(-100, true), "");
    EXPECT_EQ(SignalBar(-70, true), "██▌");
    EXPECT_EQ(SignalBar(-40, true), "█████");
    EXPECT_EQ(SignalBar(20, true), "█████");
    EXPECT_EQ(SignalBar(-70, false), "##");
}

TEST(PhoneTable, ShowsNodlinkFactsInColumns)
{
    Phones phones;
    phones.Add(
        {"", "AA:BB:CC:DD:EE:01", "", R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":1})", -50},
        0);
    phones.Add({"", "AA:BB:CC:DD:EE:02", "", R"({"device_type":"av"})", -70}, 0);
    phones.Add({"", "AA:BB:CC:DD:EE:03", "", R"({"device_type":7,"sm_available":"x")", -70}, 0);
    const std::vector<std::string> lines = Lines(PhoneTable(phones, "nodlink", 1, kAscii));
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[1], "| ADDRESS           | TYPE   | MIRRORING | VERSION | RSSI | SIGNAL | LAST SEEN |");
    EXPECT_EQ(lines[3], "| AA:BB:CC:DD:EE:01 | mobile | yes       | 3.0     |  -50 | ####   | 1.0 s ago |");
    EXPECT_EQ(lines[4], "| AA:BB:CC:DD:EE:02 | av     | -         | -       |  -70 | ##     | 1.0 s ago |");
    EXPECT_EQ(lines[5], "| AA:BB:CC:DD:EE:03 | -      | -         | -       |  -70 | ##     | 1.0 s ago |");
}

TEST(PhoneTable, ShowsExtraDataWhereAPhoneHasSome)
{
    Phones phones;
    phones.Add({"Kitchen", "AA:BB:CC:DD:EE:01", "id", "", -50}, 0);
    EXPECT_EQ(PhoneTable(phones, "mirroring", 0, kAscii).find("EXTRA"), std::string::npos);
    phones.Add({"Hall", "AA:BB:CC:DD:EE:02", "id", "{}", -50}, 0);
    EXPECT_NE(PhoneTable(phones, "mirroring", 0, kAscii).find("EXTRA"), std::string::npos);
}

}  // namespace
}  // namespace lynctl
