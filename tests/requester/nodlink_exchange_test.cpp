// SPDX-License-Identifier: Apache-2.0
//
// NodLink's exchange of two steps, and everything that a phone may say in it.
#include <gmock/gmock.h>

#include <algorithm>

#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

constexpr const char* kMetaDataRw = "/home/owner/apps_rw/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
constexpr const char* kMetaData =
    R"({"screenmirroring_fullview":["full.app","both.app"],"soundmirroring":["sound.app","both.app"],"other":7})";
constexpr const char* kMultiView =
    R"({"BtMac":"02:00:00:00:00:AA","service":"screen","type":"reqService","view":"multi"})";
constexpr const char* kFullView =
    R"({"BtMac":"02:00:00:00:00:AA","service":"screen","type":"reqService","view":"full"})";
constexpr const char* kSound =
    R"({"BtMac":"02:00:00:00:00:AA","service":"sound","type":"reqService","view":"full"})";

std::string FgApp(const std::string& packageName)
{
    return R"({"type":"fgApp","packageName":")" + packageName + "\"}";
}

class NodLinkExchange : public NodLinkRequest {
protected:
    NodLinkExchange() { simulator::WriteFile(kMetaDataRw, kMetaData); }

    int Type() const
    {
        nod_link_type type = -1;
        EXPECT_EQ(lyn_get_nodlink_type(app.handle, &type), LYN_ERROR_NONE);
        return type;
    }

    static Texts LastCalls(std::size_t count)
    {
        Texts calls = simulator::JournalText();
        calls.erase(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(std::min(count, calls.size())));
        return calls;
    }

    /// The kernel log without the lines of the scanner, which is stopped before the request.
    static Texts KernelLogOfTheRequest()
    {
        Texts lines = simulator::KernelLog();
        std::erase_if(lines, [](const std::string& line) { return line.find("[StopScan]") != std::string::npos; });
        return lines;
    }
};

struct ModeCase {
    const char* name;
    const char* packageName;
    const char* message;
    int mode;
};

class Mode : public NodLinkExchange, public ::testing::WithParamInterface<ModeCase> {};

TEST_P(Mode, FollowsTheApplicationInTheForeground)
{
    const ModeCase& tested = GetParam();
    PhoneAnswers({Says(FgApp(tested.packageName)), Says("Success")});
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    ASSERT_EQ(MessagesToPhone().size(), 2U);
    EXPECT_EQ(MessagesToPhone()[1], tested.message);
    EXPECT_EQ(Type(), tested.mode);
    EXPECT_EQ(simulator::IntSetting(kKeyMirroringMode), tested.mode);
    EXPECT_TRUE(LogsInOrder({{INFO, "open meta data file successfully"},
                             {INFO, std::string("data : ") + tested.message},
                             {INFO, "screen mirroring mode : " + std::to_string(tested.mode)},
                             {INFO, "data : Success"},
                             {INFO, "screen mirroring mode : " + std::to_string(tested.mode)}}));
}

INSTANTIATE_TEST_SUITE_P(Applications, Mode,
                         ::testing::Values(ModeCase{"Unlisted", "any.app", kMultiView, 0},
                                           ModeCase{"AnotherCase", "Full.app", kMultiView, 0},
                                           ModeCase{"NoName", "", kMultiView, 0},
                                           ModeCase{"FullView", "full.app", kFullView, 1},
                                           ModeCase{"Sound", "sound.app", kSound, 2},
                                           ModeCase{"BothCountAsFullView", "both.app", kFullView, 1}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(NodLinkExchange, MakesThesePlatformCallsInTheSecondStep)
{
    PhoneAnswers({Says(FgApp("sound.app")), Says("Success")});
    AskFromHere();
    const std::string place = simulator::FilePrefix() + kMetaDataRw;
    const Texts end =
        Join({{"bt_gatt_client_unset_att_mtu_changed_cb()", "bt_adapter_get_address(-> \"02:00:00:00:00:AA\")",
               std::string("platform_file_path(\"") + kMetaDataRw + "\" -> \"" + place + "\")"},
              Write(kSound),
              BoostOff(),
              {"vconf_set_int(\"memory/lyn/nodlink/mirroring_mode\", 2)"},
              Disconnect(),
              ReleaseAfterDisconnection()});
    const Texts calls = simulator::JournalText();
    ASSERT_GE(calls.size(), end.size());
    EXPECT_EQ(Texts(calls.end() - static_cast<std::ptrdiff_t>(end.size()), calls.end()), end);
}

TEST_F(NodLinkExchange, HasNoResultBeforeTheLastStep)
{
    PhoneAnswers({Says(FgApp("sound.app")), StaysSilent()});
    Ask();
    EXPECT_TRUE(app.results.empty());
    EXPECT_EQ(Type(), 2) << "chosen, and not yet agreed";
    EXPECT_EQ(simulator::IntSetting(kKeyMirroringMode), std::nullopt);
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 0);
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(simulator::IntSetting(kKeyMirroringMode), std::nullopt);
}

TEST_F(NodLinkExchange, ChoosesAgainWhenThePhoneNamesAnotherApplication)
{
    PhoneAnswers({Says(FgApp("sound.app")), Says(FgApp("full.app")), Says("Success")});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    ASSERT_EQ(MessagesToPhone().size(), 3U);
    EXPECT_EQ(MessagesToPhone()[1], kSound);
    EXPECT_EQ(MessagesToPhone()[2], kFullView);
    EXPECT_EQ(Type(), 1);
}

TEST_F(NodLinkExchange, KeepsItsTypeUntilTheNextRequest)
{
    EXPECT_EQ(Type(), 0);
    PhoneAnswers({Says(FgApp("sound.app")), Says("NotTap"), StaysSilent()});
    Ask();
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_NOT_TAP);
    EXPECT_EQ(Type(), 2);
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(Type(), 0);
    simulator::Settle();
    LetTimeOut();
}

TEST_F(NodLinkExchange, ForgetsItsTypeAlsoInARefusedRequest)
{
    PhoneAnswers({Says(FgApp("full.app")), Says("Success")});
    Ask();
    EXPECT_EQ(Type(), 1);
    simulator::FailCall("bt_gatt_connect", -1, 1);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_OPERATION_FAILED);
    EXPECT_EQ(Type(), 0);
}

TEST_F(NodLinkExchange, StoresTheModeForSuccessOnly)
{
    for (const char* answer : {"GattFail", "Connected", "NotTap", "success", "Success ", "Successful"}) {
        SCOPED_TRACE(answer);
        PhoneAnswers({Says(FgApp("full.app")), Says(answer)});
        Ask();
        EXPECT_EQ(simulator::IntSetting(kKeyMirroringMode), std::nullopt);
        EXPECT_EQ(CountCalls("vconf_set_int"), 0);
    }
    PhoneAnswers({Says("Success")});
    Ask();
    EXPECT_EQ(simulator::IntSetting(kKeyMirroringMode), 0) << "also without the second step";
}

TEST_F(NodLinkExchange, SucceedsWhenTheModeCannotBeStored)
{
    simulator::FailCall("vconf_set_int", -1, 1);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_TRUE(HasLog(ERROR, "fail to set memory/lyn/nodlink/mirroring_mode"));
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 1);
}

struct AnswerCase {
    const char* name;
    std::string answer;
    lyn_request_initiating_result_e result;
    const char* exception;  ///< what is said of a standard exception, null for none
};

class NodLinkAnswer : public NodLinkExchange, public ::testing::WithParamInterface<AnswerCase> {};

TEST_P(NodLinkAnswer, BecomesOneResult)
{
    PhoneAnswers({Says(GetParam().answer)});
    AskFromHere();
    EXPECT_EQ(Result(), GetParam().result);
    EXPECT_EQ(MessagesToPhone().size(), 1U);
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 1);
    EXPECT_TRUE(ArmedTimeouts().empty());
    EXPECT_EQ(HasLogWith(ERROR, "exception : "), GetParam().exception != nullptr);
    if (GetParam().exception != nullptr) {
        EXPECT_TRUE(HasLogWith(ERROR, std::string("exception : ") + GetParam().exception));
    }
}

constexpr auto kCommandErr = LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR;
constexpr auto kGattFail = LYN_REQUEST_INITIATING_RESULT_GATT_FAIL;
constexpr auto kUnknownErr = LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR;

INSTANTIATE_TEST_SUITE_P(
    Answers, NodLinkAnswer,
    ::testing::Values(
        AnswerCase{"Plain", "NotRegisteredDevice", LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE, nullptr},
        AnswerCase{"PlainUnknown", "Whatever", kUnknownErr, nullptr},
        AnswerCase{"PlainBehindANul", std::string("NotTap\0{}", 9), LYN_REQUEST_INITIATING_RESULT_NOT_TAP,
                   nullptr},
        AnswerCase{"ANulAlone", std::string("\0", 1), kUnknownErr, nullptr},
        AnswerCase{"NoText", "\xff\x80\x01", kUnknownErr, nullptr},
        AnswerCase{"HalfAnObject", R"({"type":"fgApp")", kUnknownErr, nullptr},
        AnswerCase{"AnotherType", R"({"type":"reqService"})", kCommandErr, nullptr},
        AnswerCase{"TypeInAnotherCase", R"({"type":"FgApp"})", kCommandErr, nullptr},
        AnswerCase{"NoType", "{}", kCommandErr, nullptr},
        AnswerCase{"TypeIsNull", R"({"type":null})", kCommandErr, nullptr},
        AnswerCase{"TypeIsANumber", R"({"type":7})", kCommandErr, nullptr},
        AnswerCase{"Null", "null", kCommandErr, nullptr},
        AnswerCase{"TypeIsAnObject", R"({"type":{}})", kGattFail, ""},
        AnswerCase{"TypeIsAnArray", R"({"type":["fgApp"]})", kGattFail, ""},
        AnswerCase{"AnArray", R"(["fgApp"])", kGattFail, ""}, AnswerCase{"ANumber", "7", kGattFail, ""},
        AnswerCase{"AQuotedText", R"("Success")", kGattFail, ""},
        AnswerCase{"PackageNameIsAnObject", R"({"type":"fgApp","packageName":{}})", kGattFail, ""},
        AnswerCase{"TooDeep", std::string(1100, '[') + std::string(1100, ']'), kGattFail,
                   "Exceeded stackLimit in readValue()."},
        AnswerCase{"TooDeepInAType", R"({"type":)" + std::string(1100, '['), kGattFail,
                   "Exceeded stackLimit in readValue()."},
        AnswerCase{"FarTooDeep", std::string(200000, '['), kGattFail, "Exceeded stackLimit in readValue()."}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(NodLinkExchange, TellsOfAWrongCommandBeforeItDisconnects)
{
    PhoneAnswers({Says("{}")});
    AskFromHere();
    EXPECT_EQ(LastCalls(6), Join({BoostOff(), Disconnect(), ReleaseAfterDisconnection()}));
    EXPECT_EQ(Messages(ERROR), Texts{}) << "nothing is wrong on this side";
}

TEST_F(NodLinkExchange, TellsOfAnAnswerThatItCannotReadBeforeItDisconnects)
{
    PhoneAnswers({Says("7")});
    AskFromHere();
    EXPECT_EQ(LastCalls(6), Join({BoostOff(), Disconnect(), ReleaseAfterDisconnection()}));
}

TEST_F(NodLinkExchange, TellsOfAMessageThatCouldNotBeBuiltBeforeItDisconnects)
{
    simulator::RemoveSetting(kKeyTvName);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(LastCalls(6), Join({BoostOff(), Disconnect(), ReleaseAfterDisconnection()}));
}

TEST_F(NodLinkExchange, DoesNotBeginItsTimeAnewInTheSecondStep)
{
    simulator::Answer slow = Says(FgApp("full.app"));
    slow.delayMs = 20;
    PhoneAnswers({slow, StaysSilent()});
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_TRUE(RunUntilCalled("bt_gatt_client_write_value"));
    const guint armed = g_source_get_id(g_main_context_find_source_by_user_data(nullptr, LastTimeout().data));
    simulator::Settle();
    ASSERT_EQ(MessagesToPhone().size(), 2U);
    EXPECT_EQ(g_source_get_id(g_main_context_find_source_by_user_data(nullptr, LastTimeout().data)), armed);
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(NodLinkExchange, EndsInGattFailWithoutTheBluetoothAddressInTheSecondStep)
{
    simulator::FailCall("bt_adapter_get_address", -1, 2);
    PhoneAnswers({Says(FgApp("full.app"))});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_TRUE(HasLog(ERROR, "exception : btAddress is nullptr"));
    EXPECT_EQ(Type(), 0);
}

TEST_F(NodLinkExchange, TimesOutWhenTheSecondWriteCannotBegin)
{
    simulator::FailCall("bt_gatt_client_write_value", -1, 2);
    PhoneAnswers({Says(FgApp("full.app"))});
    Ask();
    EXPECT_TRUE(app.results.empty());
    EXPECT_TRUE(HasLog(ERROR, "fail to bt_gatt_client_write_value"));
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(NodLinkExchange, SaysAndForgetsTheEndOfASecondWriteThatCouldNotBegin)
{
    simulator::FailCall("bt_gatt_client_write_value", -1, 2);
    PhoneAnswers({Says(FgApp("full.app"))});
    Ask();
    const auto first = simulator::WriteRegistration(feature.characteristicUuid);
    ASSERT_NE(first.callback, nullptr);
    simulator::ClearLog();
    first.callback(5, simulator::CharacteristicHandle(feature.characteristicUuid), first.userData);
    EXPECT_EQ(Messages(ERROR), Texts{"m_WrietCompletedCb is nullptr"});
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
    LetTimeOut();
}

TEST_F(NodLinkExchange, EndsAtOnceWhenThePhoneRefusesTheSecondWrite)
{
    PhoneAnswers({Says(FgApp("full.app")), RefusesWrite(9)});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_TRUE(HasLog(INFO, "result : 9"));
}

TEST_F(NodLinkExchange, TakesAnswersThatComeTwice)
{
    simulator::Answer twice = Says(FgApp("full.app"));
    twice.repeat = 2;
    simulator::Answer result = Says("Success");
    result.repeat = 2;
    PhoneAnswers({twice, result});
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(CountCalls("vconf_set_int"), 1);
}

TEST_F(NodLinkExchange, WritesThreeLinesToTheKernelLog)
{
    Ask();
    const Texts lines = KernelLogOfTheRequest();
    ASSERT_EQ(lines.size(), 3U);
    const std::string time = "\\[Current time : [A-Za-z0-9: ]+\\] ";
    EXPECT_THAT(lines[0],
                ::testing::MatchesRegex("\\[LYN_SERVICE\\]\\[RequestInitiating\\]" + time + "addres :" + kPhone));
    EXPECT_THAT(lines[1], ::testing::MatchesRegex("\\[LYN_SERVICE\\]\\[OnMtuChanged\\]" + time +
                                                  "data :\\{\"BtMac\":.*\"type\":\"nodLink\"\\}"));
    EXPECT_THAT(lines[2],
                ::testing::MatchesRegex("\\[LYN_SERVICE\\]\\[NotifyRequestResult\\]" + time + "result :Success"));
}

TEST_F(NodLinkExchange, WritesItsKernelLogLinesAlsoWhenItFails)
{
    simulator::FailCall("bt_gatt_connect", -1, 1);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_OPERATION_FAILED);
    EXPECT_EQ(KernelLogOfTheRequest().size(), 1U) << "asked, and no result";
    simulator::RemoveSetting(kKeyTvName);
    Ask();
    const Texts lines = KernelLogOfTheRequest();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(lines[2], ::testing::HasSubstr("[NotifyRequestResult]"));
    EXPECT_THAT(lines[2], ::testing::EndsWith(" result :GattFail"));
}

TEST_F(NodLinkExchange, NeedsNoKernelLog)
{
    for (const auto mode : {simulator::KernelLogMode::refuseOpen, simulator::KernelLogMode::failWrite}) {
        simulator::SetKernelLogMode(mode);
        Ask();
        EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    }
}

TEST_F(MirroringRequest, WritesNothingToTheKernelLog)
{
    Ask();
    EXPECT_EQ(simulator::KernelLog(), Texts{});
}

}  // namespace
}  // namespace lyn::test
