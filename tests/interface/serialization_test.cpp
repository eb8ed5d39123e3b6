// SPDX-License-Identifier: Apache-2.0
//
// A device as one line of JSON, for devices that no scanner makes.
#include <climits>

#include "lyn_service.h"
#include "service/FakeService.h"

namespace lyn::test {
namespace {

class Serialization : public FakeServiceTest {
protected:
    Serialization()
    {
        EXPECT_EQ(lyn_create_service(&m_handle, "any", nullptr, nullptr), LYN_ERROR_NONE);
        EXPECT_EQ(lyn_start_scan_with_serialization(m_handle, Keep, &m_json), LYN_ERROR_NONE);
    }

    // What the application gets for the device.
    std::string Of(const lyn_device_info_t& info)
    {
        m_json.clear();
        script.deviceCb(info);
        return m_json;
    }

    static void Keep(const char* json, void* kept) { *static_cast<std::string*>(kept) = json; }

    void* m_handle = nullptr;
    std::string m_json;
};

TEST_F(Serialization, HasTheMembersInTheOrderOfTheirBytes)
{
    EXPECT_EQ(
        Of({"the name", "the address", "the id", "the data", 5}),
        R"({"Address":"the address","ExtraData":"the data","Name":"the name","RSSI":5,"UniqueID":"the id"})");
}

TEST_F(Serialization, WritesNullTextsAsEmptyOnes)
{
    EXPECT_EQ(Of({nullptr, "a", "u", "e", 0}),
              R"({"Address":"a","ExtraData":"e","Name":"","RSSI":0,"UniqueID":"u"})");
    EXPECT_EQ(Of({"n", nullptr, "u", "e", 0}),
              R"({"Address":"","ExtraData":"e","Name":"n","RSSI":0,"UniqueID":"u"})");
    EXPECT_EQ(Of({"n", "a", nullptr, "e", 0}),
              R"({"Address":"a","ExtraData":"e","Name":"n","RSSI":0,"UniqueID":""})");
    EXPECT_EQ(Of({"n", "a", "u", nullptr, 0}),
              R"({"Address":"a","ExtraData":"","Name":"n","RSSI":0,"UniqueID":"u"})");
    EXPECT_EQ(Of({nullptr, nullptr, nullptr, nullptr, 0}),
              R"({"Address":"","ExtraData":"","Name":"","RSSI":0,"UniqueID":""})");
}

TEST_F(Serialization, WritesExtraDataAsATextAlsoWhereItIsJson)
{
    EXPECT_EQ(
        Of({"", "", "", R"({"appid":"music","n":[1,2]})", 0}),
        R"({"Address":"","ExtraData":"{\"appid\":\"music\",\"n\":[1,2]}","Name":"","RSSI":0,"UniqueID":""})");
}

TEST_F(Serialization, EscapesWhatJsonEscapes)
{
    EXPECT_EQ(Of({"\"\\/\b\f\n\r\t\x01\x7F", "", "", "", 0}),
              "{\"Address\":\"\",\"ExtraData\":\"\",\"Name\":\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\x7F\",\"RSSI\":0,"
              "\"UniqueID\":\"\"}");
}

TEST_F(Serialization, EscapesWhatIsNotAscii)
{
    EXPECT_EQ(Of({"\xC3\xBC\xE2\x82\xAC\xF0\x9F\x93\xBA", "", "", "", 0}),
              R"({"Address":"","ExtraData":"","Name":"\u00fc\u20ac\ud83d\udcfa","RSSI":0,"UniqueID":""})");
}

TEST_F(Serialization, WritesTheRssiAsASignedInteger)
{
    for (const int rssi : {0, -48, 127, -128, INT_MAX, INT_MIN}) {
        EXPECT_EQ(Of({"", "", "", "", rssi}), R"({"Address":"","ExtraData":"","Name":"","RSSI":)" +
                                                  std::to_string(rssi) + R"(,"UniqueID":""})");
    }
}

TEST_F(Serialization, IsOneLineWhateverTheTexts)
{
    const std::string lines = "first\nsecond\r\nthird";
    const std::string json = Of({lines.c_str(), lines.c_str(), lines.c_str(), lines.c_str(), 0});
    EXPECT_EQ(json.find_first_of("\r\n"), std::string::npos) << json;
}

TEST_F(Serialization, TakesTextsOfAnyLength)
{
    const std::string text(100000, 'x');
    const std::string json = Of({text.c_str(), "", "", "", 0});
    EXPECT_NE(json.find("\"Name\":\"" + text + "\""), std::string::npos);
}

TEST_F(Serialization, LogsAbsentTexts)
{
    Of({nullptr, nullptr, nullptr, nullptr, 0});
    EXPECT_TRUE(HasLog(INFO, "Device Found : (null), (null), (null)"));
}

}  // namespace
}  // namespace lyn::test
