// SPDX-License-Identifier: Apache-2.0
#include "json_line.h"

#include <gtest/gtest.h>

namespace lynctl {
namespace {

using namespace std::string_literals;

TEST(JsonLine, GivesTextAsItIs)
{
    Json::Value object;
    SetText(object, "Zoë");
    EXPECT_EQ(object["text"].asString(), "Zoë");
    EXPECT_FALSE(object.isMember("hex"));
}

TEST(JsonLine, GivesBytesThatAreNoTextInHexadecimalToo)
{
    Json::Value object;
    SetText(object, "a\xff");
    EXPECT_EQ(object["hex"].asString(), "61ff");
    SetText(object, "a\0b"s);
    EXPECT_EQ(object["text"].asString(), "a\0b"s);
    EXPECT_EQ(object["hex"].asString(), "610062");
}

TEST(JsonLine, PrintsOneLineOfAscii)
{
    Json::Value object = Event("written", 0.12345);
    SetText(object, "\x1b\nZoë");
    testing::internal::CaptureStdout();
    PrintJson(object);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              R"({"event":"written","seconds":0.123,"text":"\u001b\nZo\u00eb"})"
              "\n");
}

}  // namespace
}  // namespace lynctl
