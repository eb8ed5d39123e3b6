// SPDX-License-Identifier: Apache-2.0
#include "Common/Util.h"

#include <gmock/gmock.h>
#include <json/reader.h>

#include <climits>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "Common/LynException.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;

// ---- Bytes as text -----------------------------------------------------------------------------------

std::string Hex(const std::string& bytes)
{
    return LynUtil::ConvertByteStreamToString(bytes.data(), static_cast<int>(bytes.size()));
}

TEST(HexText, IsTwoLowerCaseDigitsForEachByteWithABlankBetween)
{
    EXPECT_EQ(Hex("\x0A\x1B\xFF"), "0a 1b ff");
    EXPECT_EQ(Hex("\x0A\xFF"), "0a ff");
    EXPECT_EQ(Hex("abc"), "61 62 63");
}

TEST(HexText, OfOneByteIsTwoDigits)
{
    EXPECT_EQ(Hex(std::string(1, '\0')), "00");
    EXPECT_EQ(Hex("\x80"), "80");
}

TEST(HexText, KnowsEveryByte)
{
    static constexpr char digits[] = "0123456789abcdef";
    for (int value = 0; value < 256; ++value) {
        const std::string expected{digits[value / 16], digits[value % 16]};
        EXPECT_EQ(Hex(std::string(1, static_cast<char>(static_cast<unsigned char>(value)))), expected);
    }
}

TEST(HexText, ReadsNoFurtherThanTheLength)
{
    const std::unique_ptr<char[]> exact(new char[2]{'\x01', '\x02'});
    EXPECT_EQ(LynUtil::ConvertByteStreamToString(exact.get(), 2), "01 02");
    EXPECT_EQ(LynUtil::ConvertByteStreamToString(exact.get(), 1), "01");
}

TEST(HexText, OfALengthBelowOneIsTheLengthErrorOfTheStandardLibrary)
{
    for (const int length : {0, -1, -2, INT_MIN}) {
        SCOPED_TRACE(length);
        EXPECT_NE(ThrownBy<std::length_error>([&] { LynUtil::ConvertByteStreamToString("abc", length); }), "");
    }
}

// ---- Product settings --------------------------------------------------------------------------------

constexpr const char* ICON_INDEX = "com.calyxon/featureconf/devicename.icon_index";

class FeatureValue : public SimulatedTv {};

TEST_F(FeatureValue, IsReadFromThePlatformAndLogged)
{
    for (const int value : {7, 0, -3, INT_MAX}) {
        SCOPED_TRACE(value);
        simulator::SetSystemInfo(ICON_INDEX, value);
        simulator::ClearLog();
        simulator::ClearJournal();
        EXPECT_EQ(LynUtil::GetIntFmsValue(ICON_INDEX), value);
        EXPECT_THAT(Messages(INFO),
                    ElementsAre("key : " + std::string(ICON_INDEX) + ", value : " + std::to_string(value)));
        EXPECT_EQ(CountCalls("system_info_get_custom_int"), 1);
        EXPECT_TRUE(Messages(ERROR).empty());
    }
}

TEST_F(FeatureValue, ThatThePlatformDoesNotHaveIsAFailure)
{
    std::string message;
    lyn_error_e code = LYN_ERROR_NONE;
    try {
        LynUtil::GetIntFmsValue("com.calyxon/featureconf/nothing");
    } catch (const LynExceptionOperationFailed& e) {
        message = e.what();
        code = e.GetCode();
    }
    EXPECT_EQ(message, "Fail to get fms key");
    EXPECT_EQ(code, LYN_ERROR_OPERATION_FAILED);
    EXPECT_THAT(Messages(ERROR), ElementsAre("Fail to get fms key"));
    EXPECT_TRUE(Messages(INFO).empty());
}

TEST_F(FeatureValue, ThatThePlatformFailsToReadIsAFailureWhateverTheCode)
{
    for (const int code : {1, -1, INT_MIN}) {
        SCOPED_TRACE(code);
        simulator::FailCall("system_info_get_custom_int", code);
        EXPECT_EQ(ThrownBy<LynExceptionOperationFailed>([] { LynUtil::GetIntFmsValue(ICON_INDEX); }),
                  "Fail to get fms key");
    }
}

// ---- The time ----------------------------------------------------------------------------------------

// What the C library says about a time, without its newline.
std::string TimeText(std::time_t time)
{
    std::string text = std::ctime(&time);
    return "Current time : " + text.substr(0, text.find('\n'));
}

class CurrentTime : public testing::Test {
protected:
    ~CurrentTime() override
    {
        unsetenv("TZ");
        tzset();
    }

    static void ExpectNow()
    {
        const std::time_t before = std::time(nullptr);
        const std::string text = LynUtil::GetCurTime();
        const std::time_t after = std::time(nullptr);
        bool found = false;
        for (std::time_t time = before; time <= after; ++time) {
            found = found || text == TimeText(time);
        }
        EXPECT_TRUE(found) << text << " is not between " << TimeText(before) << " and " << TimeText(after);
    }
};

TEST_F(CurrentTime, IsTheLocalTimeAsTheCLibraryWritesItEvenWhenTheZoneChanges)
{
    for (const char* zone : {"UTC0", "XXX-5:30", "YYY+11"}) {
        SCOPED_TRACE(zone);
        setenv("TZ", zone, 1);
        ExpectNow();
    }
}

TEST_F(CurrentTime, IsOneLineWithoutANewline)
{
    const std::string text = LynUtil::GetCurTime();
    EXPECT_EQ(text.find('\n'), std::string::npos);
    EXPECT_EQ(text.rfind("Current time : ", 0), 0U) << text;
    EXPECT_EQ(text.size(), std::string("Current time : Thu Jan  1 00:00:00 1970").size());
}

// ---- JSON --------------------------------------------------------------------------------------------

std::string ReadersError(const std::string& text)
{
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value value;
    std::string error;
    EXPECT_FALSE(reader->parse(text.data(), text.data() + text.size(), &value, &error));
    return error;
}

class JsonText : public SimulatedTv {};

TEST_F(JsonText, IsReadAndLogged)
{
    const std::string text = R"({"service":"screen","view":"full","list":[1,2.5,true,null]})";
    const Json::Value value = LynUtil::StringToJson(text);
    EXPECT_EQ(value["service"].asString(), "screen");
    EXPECT_EQ(value["list"].size(), 4U);
    EXPECT_EQ(value["list"][0].asInt(), 1);
    EXPECT_TRUE(value["list"][3].isNull());
    EXPECT_THAT(Messages(DEBUG), ElementsAre(text));
}

TEST_F(JsonText, IsLoggedAsItStandsWhenItLooksLikeAFormat)
{
    LynUtil::StringToJson(R"("%s%n%d 100%")");
    EXPECT_THAT(Messages(DEBUG), ElementsAre(R"("%s%n%d 100%")"));
}

TEST_F(JsonText, IsReadWithTheReadersDefaultSettings)
{
    EXPECT_EQ(LynUtil::StringToJson("// a comment\n{\"a\":1}")["a"].asInt(), 1);
    EXPECT_EQ(LynUtil::StringToJson("{\"a\":1,\"a\":2}")["a"].asInt(), 2);
    EXPECT_EQ(LynUtil::StringToJson("[1] behind").size(), 1U);
    EXPECT_EQ(LynUtil::StringToJson("7").asInt(), 7);
    EXPECT_EQ(LynUtil::StringToJson("\"\\u00e9\"").asString(), "\xC3\xA9");
}

TEST_F(JsonText, IsWrittenWithoutTheCommentsThatItWasReadWith)
{
    const Json::Value value =
        LynUtil::StringToJson("// before\n{ // a\n\"a\": /* b */ [1, // c\n 2] /* d */ } // e");
    EXPECT_EQ(LynUtil::JsonToString(value), R"({"a":[1,2]})");
}

TEST_F(JsonText, IsReadAsAWhole)
{
    std::string text = R"({"a":"x","b":"y"})";
    EXPECT_EQ(LynUtil::StringToJson(text)["b"].asString(), "y");
    text.insert(6, 1, '\0');
    EXPECT_EQ(LynUtil::StringToJson(text)["b"].asString(), "y");
}

TEST_F(JsonText, ThatDoesNotParseFailsWithTheReadersText)
{
    for (const std::string text : {"{", "", "{\"a\":}", "nonsense", "[1,", "{'a':1}", "Success"}) {
        SCOPED_TRACE(text);
        simulator::ClearLog();
        const std::string expected = ReadersError(text);
        lyn_error_e code = LYN_ERROR_NONE;
        std::string message;
        try {
            LynUtil::StringToJson(text);
        } catch (const LynExceptionJsonParsing& e) {
            code = e.GetCode();
            message = e.what();
        }
        EXPECT_EQ(code, LYN_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(message, expected);
        EXPECT_FALSE(expected.empty());
        EXPECT_THAT(Messages(DEBUG), ElementsAre(text));
        EXPECT_THAT(Messages(ERROR), ElementsAre(expected));
    }
}

TEST_F(JsonText, NestedDeeperThanTheReaderAllowsIsAnExceptionOutsideTheFamily)
{
    const std::string text = std::string(100000, '[') + std::string(100000, ']');
    bool isOutside = false;
    try {
        LynUtil::StringToJson(text);
    } catch (const LynException& e) {
        ADD_FAILURE() << "of the family: " << e.what();
    } catch (const std::exception&) {
        isOutside = true;
    }
    EXPECT_TRUE(isOutside);
}

TEST_F(JsonText, IsWrittenOnOneLineInTheOrderOfTheKeysAndLogged)
{
    Json::Value value;
    value["b"] = 2;
    value["a"] = "one\ntwo";
    value["C"] = Json::arrayValue;
    value["C"].append(true);
    value["C"].append(Json::nullValue);
    const std::string text = LynUtil::JsonToString(value);
    EXPECT_EQ(text, R"({"C":[true,null],"a":"one\ntwo","b":2})");
    EXPECT_THAT(Messages(DEBUG), ElementsAre(text));
}

TEST_F(JsonText, IsWrittenWithTheWritersDefaultSettingsOtherwise)
{
    EXPECT_EQ(LynUtil::JsonToString(Json::Value("\xC3\xA9")), R"("\u00e9")");
    EXPECT_EQ(LynUtil::JsonToString(Json::Value(0.1)), "0.10000000000000001");
    EXPECT_EQ(LynUtil::JsonToString(Json::Value()), "null");
    EXPECT_EQ(LynUtil::JsonToString(Json::Value(Json::objectValue)), "{}");
}

TEST_F(JsonText, IsLoggedAsItStandsWhenItIsWrittenAndLooksLikeAFormat)
{
    EXPECT_EQ(LynUtil::JsonToString(Json::Value("%s%n")), "\"%s%n\"");
    EXPECT_THAT(Messages(DEBUG), ElementsAre("\"%s%n\""));
}

TEST_F(JsonText, ComesBackTheSameAfterWritingAndReading)
{
    const std::string text = R"({"a":[{"b":"\"\\/\t"},-5,1.5],"c":""})";
    EXPECT_EQ(LynUtil::StringToJson(LynUtil::JsonToString(LynUtil::StringToJson(text))),
              LynUtil::StringToJson(text));
}

}  // namespace
}  // namespace lyn::test
