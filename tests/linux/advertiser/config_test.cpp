// SPDX-License-Identifier: Apache-2.0
#include "Config.h"

#include <gtest/gtest.h>

namespace lyn::advertiser {
namespace {

std::string ErrorOf(const std::string& text)
{
    try {
        ParseConfig(text, "f.json");
    } catch (const ConfigError& error) {
        return error.what();
    }
    return "accepted";
}

TEST(AdvertiserConfig, HoldsAPayloadForEachFeature)
{
    const Config config = ParseConfig(
        R"({"mirroring":{"manufacturerData":{"company":117,"data":"01 19aB"},"localName":"TV","connectable":false},
            "kov":{"serviceUuids":["1e5ed7a3-9e92-41c1-af60-6a15643dfb34"]}})",
        "f.json");
    ASSERT_EQ(config.size(), 2U);
    const Payload& mirroring = config.at("mirroring");
    EXPECT_FALSE(mirroring.connectable);
    EXPECT_EQ(mirroring.localName, "TV");
    EXPECT_EQ(mirroring.manufacturerData.at(117), (std::vector<std::uint8_t>{0x01, 0x19, 0xAB}));
    EXPECT_TRUE(config.at("kov").connectable);
    EXPECT_EQ(config.at("kov").serviceUuids.front(), "1e5ed7a3-9e92-41c1-af60-6a15643dfb34");
}

TEST(AdvertiserConfig, SaysWhichFieldIsWrong)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"{}", "f.json: neither mirroring nor kov has a payload"},
        {"[]", "f.json: an object is wanted"},
        {R"({"nodlink":{}})", "f.json: nodlink: unknown field"},
        {R"({"kov":5})", "f.json: kov: an object is wanted"},
        {R"({"kov":{"name":"x"}})", "f.json: kov.name: unknown field"},
        {R"({"kov":{"connectable":1}})", "f.json: kov.connectable: true or false is wanted"},
        {R"({"kov":{"localName":7}})", "f.json: kov.localName: a text is wanted"},
        {R"({"kov":{"localName":")" + std::string(27, 'x') + R"("}})", "f.json: kov.localName: at most 26 bytes"},
        {"{\"kov\":{\"localName\":\"T\xff\"}}",
         "f.json: kov.localName: a text in UTF-8, without a NUL, is wanted"},
        {R"({"kov":{"localName":"T\u0000V"}})",
         "f.json: kov.localName: a text in UTF-8, without a NUL, is wanted"},
        {R"({"kov":{"serviceUuids":"x"}})", "f.json: kov.serviceUuids: an array is wanted"},
        {R"({"kov":{"serviceUuids":["x"]}})", "f.json: kov.serviceUuids[0]: a UUID of 36 characters is wanted"},
        {R"({"kov":{"manufacturerData":{"company":65536,"data":""}}})",
         "f.json: kov.manufacturerData.company: a whole number from 0 to 65535 is wanted"},
        {R"({"kov":{"manufacturerData":{"company":-1,"data":""}}})",
         "f.json: kov.manufacturerData.company: a whole number from 0 to 65535 is wanted"},
        {R"({"kov":{"manufacturerData":{"company":1,"data":"0"}}})",
         "f.json: kov.manufacturerData.data: pairs of hexadecimal digits are wanted"},
        {R"({"kov":{"manufacturerData":{"company":1,"data":"0g"}}})",
         "f.json: kov.manufacturerData.data: pairs of hexadecimal digits are wanted"},
        {R"({"kov":{"manufacturerData":{"company":1,"data":")" + std::string(50, '0') + R"("}}})",
         "f.json: kov.manufacturerData.data: an advertising packet has room for 24 bytes"},
        {R"({"kov":{"manufacturerData":{"company":1}}})", "f.json: kov.manufacturerData.data: a text is wanted"},
    };
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(ErrorOf(text), error) << text;
    }
}

TEST(AdvertiserConfig, IsRefusedWhenItIsNoJson)
{
    for (const char* const text : {"", "{", "{} {}", "{\"kov\":{},\"kov\":{}}", "\xff"}) {
        EXPECT_EQ(ErrorOf(text).rfind("f.json: ", 0), 0U) << text;
        EXPECT_EQ(ErrorOf(text).find('\n'), std::string::npos) << text;
    }
    EXPECT_EQ(ErrorOf(std::string(5000, '[')).rfind("f.json: ", 0), 0U);
}

TEST(AdvertiserConfig, NamesAFileThatCannotBeRead)
{
    try {
        ReadConfig("/nowhere/at/all.json");
        FAIL();
    } catch (const ConfigError& error) {
        EXPECT_STREQ(error.what(), "/nowhere/at/all.json: No such file or directory");
    }
}

}  // namespace
}  // namespace lyn::advertiser
