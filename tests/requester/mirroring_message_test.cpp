// SPDX-License-Identifier: Apache-2.0
//
// The control message of screen mirroring, byte by byte; that of Kov beside it.
#include <sys/stat.h>

#include <filesystem>

#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

constexpr const char* kAppIdFile = "/opt/etc/.lyn_appid";

/// The message with these members put at their places in the order of keys.
std::string Message(const std::string& beforeDeviceIcon, const std::string& atTheEnd = "")
{
    return R"({"P2PChannel":"1","P2PMac":"02:00:00:00:00:BB",)" + beforeDeviceIcon +
           R"("deviceIcon":"3","deviceType":"12","displayName":"Salon","type":"mirroring")" + atTheEnd + "}";
}

class MirroringMessage : public MirroringRequest {
protected:
    std::string Sent(const std::string& extraData = "")
    {
        const std::size_t had = MessagesToPhone().size();
        Ask(extraData);
        const Texts messages = MessagesToPhone();
        return messages.size() == had + 1 ? messages.back() : "";
    }
};

TEST_F(MirroringMessage, HoldsTheCommonMembersInTheOrderOfTheirKeys)
{
    EXPECT_EQ(Sent(), Message(""));
}

TEST_F(MirroringMessage, IsTheSameWithoutExtraData)
{
    Ask();
    EXPECT_EQ(MessagesToPhone(), Texts{Message("")});
    EXPECT_EQ(Sent(""), Message(""));
}

TEST_F(MirroringMessage, NamesTheApplicationOfTheFile)
{
    simulator::WriteFile(kAppIdFile, "com.example.app");
    EXPECT_EQ(Sent(), Message(R"("appLaunch":"com.example.app",)"));
    EXPECT_TRUE(HasLog(INFO, "app id in /opt/etc/.lyn_appid : com.example.app"));
}

TEST_F(MirroringMessage, TakesTheFirstWordOfTheFile)
{
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"first second", "first"},
        {"  \t\n first\nsecond\n", "first"},
        {"first\n", "first"},
        {"first\tsecond", "first"},
        {"", ""},
        {" \n\t ", ""},
    };
    for (const auto& [content, word] : cases) {
        SCOPED_TRACE(content);
        simulator::WriteFile(kAppIdFile, content);
        simulator::ClearLog();
        EXPECT_EQ(Sent(), Message(std::string(R"("appLaunch":")") + word + "\","));
        EXPECT_TRUE(HasLog(INFO, std::string("app id in /opt/etc/.lyn_appid : ") + word));
        EXPECT_EQ(FunctionsThatSay("app id in"), std::set<std::string>{"BuildControlData"});
    }
}

TEST_F(MirroringMessage, LeavesTheApplicationOutWithoutTheFileAndSaysNothing)
{
    EXPECT_EQ(Sent().find("appLaunch"), std::string::npos);
    EXPECT_FALSE(HasLogWith(INFO, "app id in"));
    EXPECT_EQ(Messages(ERROR), Texts{});
}

TEST_F(MirroringMessage, LeavesTheApplicationOutWhenThePlatformHasNoPlaceForTheFile)
{
    simulator::WriteFile(kAppIdFile, "com.example.app");
    simulator::FailCall("platform_file_path", -1, 1);
    EXPECT_EQ(Sent(), Message(""));
}

TEST_F(MirroringMessage, LeavesTheApplicationOutWhenItsFileIsNone)
{
    const std::string place = simulator::FilePrefix() + kAppIdFile;
    std::filesystem::create_directories(place);
    EXPECT_EQ(Sent(), Message(""));
    std::filesystem::remove(place);
    ASSERT_EQ(mkfifo(place.c_str(), 0600), 0);
    EXPECT_EQ(Sent(), Message(""));
    EXPECT_EQ(Messages(ERROR), Texts{});
}

TEST_F(MirroringMessage, NamesAnApplicationWithinTheFirst256Bytes)
{
    const std::string longest(256, 'a');
    for (const std::string& content : {longest, longest + "\nmore", longest + " " + std::string(10000, 'b'),
                                       std::string(200, ' ') + std::string(56, 'a') + " b"}) {
        SCOPED_TRACE(content.size());
        simulator::WriteFile(kAppIdFile, content);
        const std::string word = content.substr(0, 256);
        EXPECT_EQ(Sent(), Message(R"("appLaunch":")" + word.substr(word.find('a')) + "\","));
    }
}

TEST_F(MirroringMessage, LeavesAnApplicationOutThatWouldHaveToBeCut)
{
    const std::string error = "app id in /opt/etc/.lyn_appid is not within its first 256 bytes";
    for (const std::string& content : {std::string(257, 'a'), std::string(100000, 'a'),
                                       std::string(256, ' ') + "a", " " + std::string(256, 'a')}) {
        SCOPED_TRACE(content.size());
        simulator::WriteFile(kAppIdFile, content);
        simulator::ClearLog();
        EXPECT_EQ(Sent(), Message(""));
        EXPECT_EQ(Messages(ERROR), Texts{error});
        EXPECT_EQ(FunctionsThatSay(error), std::set<std::string>{"BuildControlData"});
    }
}

TEST_F(MirroringMessage, CarriesNoCommentOfTheExtraData)
{
    EXPECT_EQ(Sent("// x\n{ // y\n /* z */ \"appid\" : [ // u\n 1, // v\n {\"a\":2 /* w */} ] // t\n } // end"),
              Message(R"("appid":[1,{"a":2}],)"));
    EXPECT_EQ(Sent("{\"appid\":\"// no comment\"}"), Message(R"("appid":"// no comment",)"));
}

TEST_F(MirroringMessage, CarriesTheExtraData)
{
    EXPECT_EQ(Sent(R"({"appid":"music"})"), Message(R"("appid":"music",)"));
}

TEST_F(MirroringMessage, CarriesExtraDataOfAnyType)
{
    EXPECT_EQ(Sent(R"( { "z" : [1, {"b":true}, null], "y":{"n":-1.5}, "x":null, "zz":"\u00fc" } )"),
              Message("", R"(,"x":null,"y":{"n":-1.5},"z":[1,{"b":true},null],"zz":"\u00fc")"));
}

TEST_F(MirroringMessage, IsOverriddenByTheExtraData)
{
    simulator::WriteFile(kAppIdFile, "com.example.app");
    EXPECT_EQ(Sent(R"({"displayName":"Attic","appLaunch":7})"),
              R"({"P2PChannel":"1","P2PMac":"02:00:00:00:00:BB","appLaunch":7,"deviceIcon":"3","deviceType":"12",)"
              R"("displayName":"Attic","type":"mirroring"})");
    EXPECT_EQ(Sent(R"({"type":{},"P2PMac":null,"P2PChannel":[],"deviceType":1,"deviceIcon":true,"displayName":2,)"
                   R"("appLaunch":""})"),
              R"({"P2PChannel":[],"P2PMac":null,"appLaunch":"","deviceIcon":true,"deviceType":1,"displayName":2,)"
              R"("type":{}})");
}

TEST_F(MirroringMessage, TakesTheLaterOfTwoMembersOfOneName)
{
    EXPECT_EQ(Sent(R"({"a":1,"a":2})"), Message(R"("a":2,)"));
}

TEST_F(MirroringMessage, TakesAnEmptyObjectAndNull)
{
    EXPECT_EQ(Sent("{}"), Message(""));
    EXPECT_EQ(Sent("null"), Message("")) << "it has no members";
}

TEST_F(MirroringMessage, TakesDeepExtraDataWithinTheReadersLimit)
{
    const std::string deep = std::string(150, '[') + std::string(150, ']');
    EXPECT_EQ(Sent("{\"a\":" + deep + "}"), Message("\"a\":" + deep + ","));
}

TEST_F(MirroringMessage, CannotBeMadeOfBadExtraData)
{
    const std::string tooDeep(1100, '[');
    const std::vector<std::string> bad = {
        "{",
        " ",
        "music",
        R"({"a")",
        "[1]",
        "7",
        R"("text")",
        "true",
        tooDeep + std::string(1100, ']'),
        "{\"a\":" + tooDeep + std::string(1100, ']') + "}",
        std::string(100000, '['),
    };
    for (const std::string& extraData : bad) {
        SCOPED_TRACE(extraData.substr(0, 40));
        app.results.clear();
        simulator::ClearLog();
        Ask(extraData);
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_TRUE(HasLogWith(ERROR, "exception : "));
        EXPECT_TRUE(ArmedTimeouts().empty());
    }
    EXPECT_EQ(MessagesToPhone(), Texts{});
}

TEST_F(MirroringMessage, SaysWhyExtraDataCannotBeRead)
{
    Ask("{");
    EXPECT_TRUE(HasLogWith(ERROR, "exception : * Line 1, Column"));
    simulator::ClearLog();
    Ask(std::string(1100, '['));
    EXPECT_TRUE(HasLog(ERROR, "exception : Exceeded stackLimit in readValue()."));
}

TEST_F(MirroringMessage, ForgetsTheExtraDataOfTheRequestBefore)
{
    EXPECT_EQ(Sent(R"({"a":1})"), Message(R"("a":1,)"));
    Ask();
    EXPECT_EQ(MessagesToPhone().back(), Message(""));
}

TEST_F(MirroringMessage, SurvivesFormatsInItsTexts)
{
    simulator::SetSetting(kKeyTvName, "%s%n%d");
    EXPECT_EQ(Sent(R"({"%s":"%n"})"),
              R"({"%s":"%n","P2PChannel":"1","P2PMac":"02:00:00:00:00:BB","deviceIcon":"3","deviceType":"12",)"
              R"("displayName":"%s%n%d","type":"mirroring"})");
}

TEST_F(KovRequest, SendsTheSameMessageWhateverTheExtraData)
{
    simulator::WriteFile(kAppIdFile, "com.example.app");
    const std::string message = R"({"P2PChannel":"1","P2PMac":"02:00:00:00:00:BB","deviceIcon":"3",)"
                                R"("deviceType":"12","displayName":"Salon","type":"kov"})";
    for (const std::string& extraData : {std::string(), std::string(R"({"displayName":"Attic","a":1})"),
                                         std::string("{"), std::string(1100, '[')}) {
        SCOPED_TRACE(extraData.substr(0, 40));
        app.results.clear();
        Ask(extraData);
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        EXPECT_EQ(MessagesToPhone().back(), message);
    }
    EXPECT_EQ(CountCalls("platform_file_path"), 0) << "no application to launch";
}

TEST_F(NodLinkRequest, SendsTheSameMessageWhateverTheExtraData)
{
    simulator::WriteFile(kAppIdFile, "com.example.app");
    Ask(R"({"displayName":"Attic","a":1})");
    Ask("{");
    EXPECT_EQ(MessagesToPhone(),
              Texts(2, R"({"BtMac":"02:00:00:00:00:AA","P2PChannel":"1","P2PMac":"02:00:00:00:00:BB",)"
                       R"("deviceIcon":"3","deviceType":"12","displayName":"Salon","type":"nodLink"})"));
    EXPECT_EQ(CountCalls("platform_file_path"), 0);
}

}  // namespace
}  // namespace lyn::test
