// SPDX-License-Identifier: Apache-2.0
//
// How the mirroring and the Kov scanner read a name out of the manufacturer data of a scan response.
#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Common/LynException.h"
#include "Scanner/CKovScanner.h"
#include "Scanner/CScreenMirroringScanner.h"
#include "scanner/Advertisements.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string MirroringName(const ExactBytes& data)
{
    return CScreenMirroringScanner().ConvertManufacturerDataToDeviceName(data.Data(), data.Size());
}

std::string KovName(const ExactBytes& data)
{
    return CKovScanner().ConvertManufacturerDataToDeviceName(data.Data(), data.Size());
}

class Name : public SimulatedTv {};

TEST_F(Name, EndsAtTheFirstZeroByteOrAtTheEndOfTheData)
{
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"Kitchen", "Kitchen"},
        {std::string("ab\0cd", 5), "ab"},
        {std::string("ab\0", 3), "ab"},
        {std::string("\0ab", 3), ""},
        {"", ""},
        {"x", "x"},
        {"  two  blanks  ", "  two  blanks  "},
        {"\xEC\x95\x88\xEB\x85\x95", "\xEC\x95\x88\xEB\x85\x95"},
    };
    for (const auto& [rest, name] : rows) {
        SCOPED_TRACE(testing::PrintToString(rest));
        const ExactBytes data(Marked(0, rest));
        EXPECT_EQ(MirroringName(data), name);
        if (!rest.empty()) {
            EXPECT_EQ(KovName(data), name);
        }
    }
}

TEST_F(Name, IsLoggedWithAllTheDataAndItsLength)
{
    const ExactBytes data(Marked(0x19, std::string("ab\0\xFF", 4)));
    MirroringName(data);
    EXPECT_THAT(Messages(INFO), ElementsAre("42 19 61 62 00 ff / ab / 6"));
    simulator::ClearLog();
    KovName(data);
    EXPECT_THAT(Messages(INFO), ElementsAre("42 19 61 62 00 ff / ab / 6"));
    EXPECT_THAT(FunctionsThatSay(" / ab / "), ElementsAre("ConvertManufacturerDataToDeviceName"));
}

TEST_F(Name, ThatLooksLikeAFormatIsLoggedAsItStands)
{
    MirroringName(ExactBytes(Marked(0, "%s%n")));
    EXPECT_THAT(Messages(INFO), ElementsAre("42 00 25 73 25 6e / %s%n / 6"));
}

TEST_F(Name, OfDataShorterThanTwoBytesIsNoMirroringDevice)
{
    const std::string text = "manufacturere data length is less than 2";
    for (const Bytes& bytes : {Bytes{}, Bytes{0x42}}) {
        SCOPED_TRACE(bytes.size());
        simulator::ClearLog();
        const ExactBytes data(bytes);
        EXPECT_EQ(ThrownBy<LynExceptionNotValidDevice>([&] { MirroringName(data); }), text);
        EXPECT_THAT(Messages(ERROR), ElementsAre(text));
        EXPECT_THAT(Messages(INFO), IsEmpty());
    }
}

TEST_F(Name, OfDataShorterThanTwoBytesIsNoKovDeviceAndTheLineSaysThree)
{
    for (const Bytes& bytes : {Bytes{}, Bytes{0x42}}) {
        SCOPED_TRACE(bytes.size());
        simulator::ClearLog();
        const ExactBytes data(bytes);
        EXPECT_EQ(ThrownBy<LynExceptionNotValidDevice>([&] { KovName(data); }),
                  "manufacturere data length is less than 2");
        EXPECT_THAT(Messages(ERROR), ElementsAre("manufacturere data length is less than 3"));
        EXPECT_THAT(Messages(INFO), IsEmpty());
    }
}

TEST_F(Name, OfTwoBytesIsEmptyForMirroring)
{
    EXPECT_EQ(MirroringName(ExactBytes(Marked(0, ""))), "");
    EXPECT_THAT(Messages(INFO), ElementsAre("42 00 /  / 2"));
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

TEST_F(Name, OfTwoBytesIsOutOfRangeForKov)
{
    const ExactBytes data(Marked(0, ""));
    EXPECT_NE(ThrownBy<std::out_of_range>([&] { KovName(data); }), "");
    EXPECT_THAT(Messages(INFO), ElementsAre("42 00 /  / 2"));
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

const std::vector<std::string> NO_UTF8 = {
    "\xC3",                       // cut
    "ab\xFF",                     // no such byte
    "\x80",                       // continuation without a beginning
    "\xC0\xAF",                   // longer than needed
    "\xE0\x80\xAF",               // longer than needed
    "\xED\xA0\x80",               // half of a surrogate pair
    "\xF4\x90\x80\x80",           // above the last code point
    std::string("\xC3\0\xA9", 3)  // cut by the zero byte
};

TEST_F(Name, ThatIsNotUtf8IsNoMirroringDevice)
{
    for (const std::string& rest : NO_UTF8) {
        SCOPED_TRACE(testing::PrintToString(rest));
        simulator::ClearLog();
        const ExactBytes data(Marked(0, rest));
        EXPECT_EQ(ThrownBy<LynExceptionNotValidDevice>([&] { MirroringName(data); }), "Invalid device name");
        EXPECT_THAT(Messages(ERROR), ElementsAre("Invalid device name"));
        EXPECT_EQ(Messages(INFO).size(), 1U) << "the data is logged first";
    }
}

TEST_F(Name, ThatIsNotUtf8IsTakenAsItStandsForKov)
{
    for (const std::string& rest : NO_UTF8) {
        SCOPED_TRACE(testing::PrintToString(rest));
        EXPECT_EQ(KovName(ExactBytes(Marked(0, rest))), rest.substr(0, rest.find('\0')));
    }
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

TEST_F(Name, IsValidWhenTheBytesBehindTheZeroByteAreNot)
{
    EXPECT_EQ(MirroringName(ExactBytes(Marked(0, std::string("ab\0\xFF", 4)))), "ab");
}

TEST_F(Name, KeepsEveryValidCharacter)
{
    for (const std::string name :
         {"\xC2\xA9", "\xE2\x82\xAC", "\xF0\x9F\x93\xB1", "\xF4\x8F\xBF\xBF", "\n\t\x7F"}) {
        SCOPED_TRACE(testing::PrintToString(name));
        EXPECT_EQ(MirroringName(ExactBytes(Marked(0, name))), name);
    }
}

struct Newline {
    std::string rest;
    std::string name;
    bool replaced;
};

TEST_F(Name, OfKovShowsANewlineInTheLastByteOfTheDataAsThreeDots)
{
    const std::vector<Newline> rows = {
        {"ab\n", "ab...", true},
        {"\n", "...", true},
        {"a\nb\n", "a\nb...", true},
        {"\n\n", "\n...", true},
        {"a\nb", "a\nb", false},
        {"\nab", "\nab", false},
        {std::string("ab\n\0", 4), "ab\n", false},
        {std::string("ab\0\n", 4), "ab", false},
        {std::string("\n\0\n", 3), "\n", false},
        {"abc", "abc", false},
        {"ab\r", "ab\r", false},
    };
    for (const Newline& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.rest));
        simulator::ClearLog();
        EXPECT_EQ(KovName(ExactBytes(Marked(0, row.rest))), row.name);
        EXPECT_EQ(CountLog(DEBUG, "replace \\n to ..."), row.replaced ? 1 : 0);
    }
}

TEST_F(Name, OfMirroringKeepsANewlineInTheLastByteOfTheData)
{
    EXPECT_EQ(MirroringName(ExactBytes(Marked(0, "ab\n"))), "ab\n");
}

}  // namespace
}  // namespace lyn::test
