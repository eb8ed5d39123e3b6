// SPDX-License-Identifier: Apache-2.0
//
// The file that says how to mirror which application, and what the phone is told of the TV itself.
#include <sys/stat.h>

#include <filesystem>

#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

constexpr const char* kRo = "/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
constexpr const char* kRw = "/home/owner/apps_rw/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";

class MetaData : public NodLinkRequest {
protected:
    /// The mode for an application that the phone names so; -1 when there is none.
    int ModeFor(const std::string& packageName)
    {
        return ModeOf(R"({"type":"fgApp","packageName":)" + packageName + "}");
    }

    int ModeOf(const std::string& message)
    {
        PhoneAnswers({Says(message), Says("NotTap")});
        app.results.clear();
        simulator::ClearLog();
        const std::size_t had = MessagesToPhone().size();
        Ask();
        nod_link_type type = -1;
        lyn_get_nodlink_type(app.handle, &type);
        const bool answered = MessagesToPhone().size() == had + 2;
        EXPECT_EQ(Result(),
                  answered ? LYN_REQUEST_INITIATING_RESULT_NOT_TAP : LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        return answered ? type : -1;
    }
};

TEST_F(MetaData, IsReadFromTheWritableCopyFirst)
{
    simulator::WriteFile(kRw, R"({"soundmirroring":["a"]})");
    simulator::WriteFile(kRo, R"({"screenmirroring_fullview":["a"]})");
    EXPECT_EQ(ModeFor(R"("a")"), 2);
    EXPECT_TRUE(HasLog(INFO, "open meta data file successfully"));
    EXPECT_FALSE(HasLogWith(ERROR, "from RW"));
}

TEST_F(MetaData, IsReadFromTheReadOnlyCopyWhenThereIsNoOther)
{
    simulator::WriteFile(kRo, R"({"screenmirroring_fullview":["a"]})");
    EXPECT_EQ(ModeFor(R"("a")"), 1);
    EXPECT_TRUE(LogsInOrder(
        {{ERROR, std::string("Fail to open ") + kRw + " from RW"}, {INFO, "open meta data file successfully"}}));
}

TEST_F(MetaData, IsReadFromTheReadOnlyCopyWhenTheOtherIsNoFile)
{
    simulator::WriteFile(kRo, R"({"screenmirroring_fullview":["a"]})");
    const std::string place = simulator::FilePrefix() + kRw;
    std::filesystem::create_directories(place);
    EXPECT_EQ(ModeFor(R"("a")"), 1);
    EXPECT_TRUE(HasLog(ERROR, std::string("Fail to open ") + kRw + " from RW"));
    std::filesystem::remove(place);
    ASSERT_EQ(mkfifo(place.c_str(), 0600), 0);
    EXPECT_EQ(ModeFor(R"("a")"), 1);
    EXPECT_TRUE(HasLog(ERROR, std::string("Fail to open ") + kRw + " from RW"));
}

TEST_F(MetaData, EndsTheRequestWhenItIsLongerThanAMebibyte)
{
    const std::string start = R"({"soundmirroring":["a"],"other":")";
    const std::string end = "\"}";
    const std::size_t most = 1024 * 1024;
    const std::string longest = start + std::string(most - start.size() - end.size(), 'x') + end;
    simulator::WriteFile(kRo, R"({"screenmirroring_fullview":["a"]})");
    simulator::WriteFile(kRw, longest);
    EXPECT_EQ(ModeFor(R"("a")"), 2);
    simulator::WriteFile(kRw, longest + " ");
    EXPECT_EQ(ModeFor(R"("a")"), -1) << "the other copy does not help";
    EXPECT_EQ(Messages(ERROR).back(), "exception : meta_data file is too long");
}

TEST_F(MetaData, EndsTheRequestWhenItIsNowhere)
{
    EXPECT_EQ(ModeFor(R"("a")"), -1);
    EXPECT_EQ(Messages(ERROR), (Texts{std::string("Fail to open ") + kRw + " from RW",
                                      "fail to open meta_data file", "exception : fail to open meta_data file"}));
    EXPECT_FALSE(HasLog(INFO, "open meta data file successfully"));
    EXPECT_EQ(FunctionsThatSay("from RW"), std::set<std::string>{"GetMirroringTypeFromAppId"});
}

TEST_F(MetaData, EndsTheRequestWhenThePlatformHasNoPlaceForIt)
{
    simulator::WriteFile(kRw, "{}");
    simulator::FailCall("platform_file_path", -1, 0);
    EXPECT_EQ(ModeFor(R"("a")"), -1);
    EXPECT_TRUE(HasLog(ERROR, "exception : fail to open meta_data file"));
}

TEST_F(MetaData, EndsTheRequestWhenItCannotBeParsed)
{
    simulator::WriteFile(kRo, R"({"soundmirroring":["a"]})");
    const std::string tooDeep(1100, '[');
    for (const std::string& content : {std::string(), std::string("{"), std::string("music"), tooDeep}) {
        SCOPED_TRACE(content.substr(0, 20));
        simulator::WriteFile(kRw, content);
        EXPECT_EQ(ModeFor(R"("a")"), -1) << "the other copy does not help";
        EXPECT_TRUE(HasLogWith(ERROR, "exception : "));
        EXPECT_TRUE(HasLog(INFO, "open meta data file successfully"));
    }
}

TEST_F(MetaData, EndsTheRequestWithTheParsersText)
{
    simulator::WriteFile(kRw, "{");
    EXPECT_EQ(ModeFor(R"("a")"), -1);
    EXPECT_TRUE(HasLogWith(ERROR, "exception : * Line 1, Column"));
    EXPECT_EQ(FunctionsThatSay("* Line 1, Column"),
              (std::set<std::string>{"GetMirroringTypeFromAppId", "OnCharateristicValueChangedCb"}));
    simulator::WriteFile(kRw, std::string(1100, '['));
    EXPECT_EQ(ModeFor(R"("a")"), -1);
    EXPECT_TRUE(HasLog(ERROR, "exception : Exceeded stackLimit in readValue()."));
}

TEST_F(MetaData, EndsTheRequestWhenItIsNoObject)
{
    for (const char* content : {"[]", "7", "\"text\"", "true"}) {
        SCOPED_TRACE(content);
        simulator::WriteFile(kRw, content);
        EXPECT_EQ(ModeFor(R"("a")"), -1);
        EXPECT_TRUE(HasLogWith(ERROR, "exception : "));
    }
}

TEST_F(MetaData, MayLackEitherArray)
{
    for (const char* content :
         {"{}", "null", R"({"soundmirroring":[]})", R"({"screenmirroring_fullview":null})"}) {
        SCOPED_TRACE(content);
        simulator::WriteFile(kRw, content);
        EXPECT_EQ(ModeFor(R"("a")"), 0);
    }
    simulator::WriteFile(kRw, R"({"soundmirroring":["a"]})");
    EXPECT_EQ(ModeFor(R"("a")"), 2);
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":["a"]})");
    EXPECT_EQ(ModeFor(R"("a")"), 1);
}

TEST_F(MetaData, IsSearchedToTheEndOfItsArrays)
{
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":["a","b","c"],"soundmirroring":["d","e","f"]})");
    EXPECT_EQ(ModeFor(R"("a")"), 1);
    EXPECT_EQ(ModeFor(R"("c")"), 1);
    EXPECT_EQ(ModeFor(R"("d")"), 2);
    EXPECT_EQ(ModeFor(R"("f")"), 2);
    EXPECT_EQ(ModeFor(R"("g")"), 0);
    EXPECT_EQ(ModeFor(R"("")"), 0);
}

TEST_F(MetaData, TakesElementsAsTexts)
{
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":[5,true],"soundmirroring":[null]})");
    EXPECT_EQ(ModeFor(R"("5")"), 1);
    EXPECT_EQ(ModeFor("5"), 1);
    EXPECT_EQ(ModeFor(R"("true")"), 1);
    EXPECT_EQ(ModeFor(R"("")"), 2);
}

TEST_F(MetaData, IsSearchedNoFurtherThanTheFirstMatch)
{
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":["a",{},"b"],"soundmirroring":[[]]})");
    EXPECT_EQ(ModeFor(R"("a")"), 1);
    EXPECT_EQ(ModeFor(R"("b")"), -1) << "an element on the way is no text";
}

TEST_F(MetaData, IsSearchedForAnEmptyNameWhenThePhoneNamesNone)
{
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":["a"],"soundmirroring":["b"]})");
    EXPECT_EQ(ModeOf(R"({"type":"fgApp"})"), 0);
    EXPECT_EQ(ModeFor("null"), 0);
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":["a"],"soundmirroring":[""]})");
    EXPECT_EQ(ModeOf(R"({"type":"fgApp"})"), 2);
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":[""],"soundmirroring":[""]})");
    EXPECT_EQ(ModeOf(R"({"type":"fgApp"})"), 1);
}

TEST_F(MetaData, GivesMultiViewWhenThePhoneNamesNoApplication)
{
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":["a"],"soundmirroring":["b"]})");
    EXPECT_EQ(ModeOf(R"({"type":"fgApp"})"), 0);
}

TEST_F(MetaData, GivesFullViewToAnApplicationThatBothArraysList)
{
    simulator::WriteFile(kRw, R"({"soundmirroring":["a"],"screenmirroring_fullview":["a"]})");
    EXPECT_EQ(ModeFor(R"("a")"), 1);
}

TEST_F(MetaData, IsReadAnewForEachAnswer)
{
    simulator::WriteFile(kRw, R"({"soundmirroring":["a"]})");
    EXPECT_EQ(ModeFor(R"("a")"), 2);
    simulator::WriteFile(kRw, R"({"screenmirroring_fullview":["a"]})");
    EXPECT_EQ(ModeFor(R"("a")"), 1);
}

TEST_F(MetaData, IsNotReadForPlainAnswers)
{
    PhoneAnswers({Says("Success")});
    Ask();
    EXPECT_EQ(CountCalls("platform_file_path"), 0);
}

TEST_F(NodLinkRequest, TellsThePhoneOfTheseTypesAndIcons)
{
    struct Case {
        int type;
        int icon;
        int sentType;
        int sentIcon;
    };
    const std::vector<Case> cases = {
        {41, 2, 6, 4},  {41, 1, 41, 1}, {41, 3, 41, 3}, {41, 0, 41, 0},   {23, 2, 6, 5},  {23, 0, 6, 5},
        {23, 99, 6, 5}, {23, -1, 6, 5}, {22, 2, 22, 2}, {24, 2, 24, 2},   {40, 2, 40, 2}, {42, 2, 42, 2},
        {12, 3, 12, 3}, {6, 4, 6, 4},   {0, 0, 0, 0},   {-41, 2, -41, 2},
    };
    for (const Case& tested : cases) {
        simulator::SetSystemInfo(kDeviceType, tested.type);
        simulator::SetSystemInfo(kDeviceIcon, tested.icon);
        Ask();
        const std::string expected = R"("deviceIcon":")" + std::to_string(tested.sentIcon) +
                                     R"(","deviceType":")" + std::to_string(tested.sentType) + "\"";
        EXPECT_NE(MessagesToPhone().back().find(expected), std::string::npos)
            << tested.type << ", " << tested.icon << ": " << MessagesToPhone().back();
    }
}

TEST_F(NodLinkRequest, SendsType23AsType6WithIcon5WhateverTheIcon)
{
    simulator::SetSystemInfo(kDeviceType, 23);
    for (const int icon : {0, 2, 7}) {
        simulator::SetSystemInfo(kDeviceIcon, icon);
        Ask();
        EXPECT_NE(MessagesToPhone().back().find(R"("deviceIcon":"5","deviceType":"6")"), std::string::npos);
    }
}

TEST_F(NodLinkRequest, SendsType41WithIcon2AsType6WithIcon4)
{
    simulator::SetSystemInfo(kDeviceType, 41);
    simulator::SetSystemInfo(kDeviceIcon, 2);
    Ask();
    EXPECT_NE(MessagesToPhone().back().find(R"("deviceIcon":"4","deviceType":"6")"), std::string::npos);
}

TEST_F(NodLinkRequest, EndsWithoutEitherTypeOrIcon)
{
    for (const char* key : {kDeviceType, kDeviceIcon}) {
        SCOPED_TRACE(key);
        SetUpTv();
        simulator::SetSystemInfo(key, std::nullopt);
        app.results.clear();
        AskFromHere();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_EQ(Messages(ERROR), (Texts{"Fail to get fms key", "exception : Fail to get fms key"}));
    }
}

}  // namespace
}  // namespace lyn::test
