// SPDX-License-Identifier: Apache-2.0
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "faults/ScenarioList.h"
#include "lifetime/Phones.h"

namespace lyn::test {
namespace {

using simulator::Answer;
using Kind = Answer::Kind;

constexpr const char* kRo = "/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
constexpr const char* kRw = "/home/owner/apps_rw/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
constexpr const char* kMetaData = R"({"screenmirroring_fullview":["full"],"soundmirroring":["sound"]})";
constexpr int kReportedAsSuccess = static_cast<int>(0xFE400103);
constexpr int kHciDisconnection = static_cast<int>(0xFE400104);
constexpr int kConnectionTimeout = static_cast<int>(0xC0000001);

constexpr const char* kSuccess = "READY result 0";
constexpr const char* kGattFail = "READY result 1";
constexpr const char* kGattFailInTime = "(10 s) READY result 1";

Answer Says(const std::string& text)
{
    Answer answer;
    answer.text = text;
    return answer;
}

Answer Does(Kind kind, int code = 0)
{
    Answer answer;
    answer.kind = kind;
    answer.code = code;
    return answer;
}

SetUp PhoneAnswers(const std::string& service, const std::vector<Answer>& answers)
{
    simulator::Phone phone = QuietPhone(service);
    CharacteristicOf(phone).answers = answers;
    return RoomWith(phone);
}

void AddAnswers(ScenarioList& list)
{
    const std::map<std::string, int> answers = {{"NotRegisteredDevice", 2},
                                                {"UnknownErr", 3},
                                                {"CommandErr", 4},
                                                {"NotSupported", 5},
                                                {"Connected", 6},
                                                {"NotTap", 8},
                                                {"NotStartedKov", 9},
                                                {"NotStartedMirroring", 10},
                                                {"GattDisconnected", 11},
                                                {"GattFail", 1},
                                                {"what no phone ever said", 3}};
    constexpr std::size_t longestInPlace = 15;  // A longer text needs memory.
    for (const auto& [answer, result] : answers) {
        Scenario& added = list.Add("answer " + answer, PhoneAnswers(list.Service(), {Says(answer)}), Ask);
        added.result = "READY result " + std::to_string(result);
        added.alike = answer.size() > longestInPlace ? "a long answer" : "a short answer";
    }
}

void AddBrokenExchanges(ScenarioList& list)
{
    const auto add = [&](const char* name, const std::vector<Answer>& answers, const char* result) {
        list.Add(name, PhoneAnswers(list.Service(), answers), Ask).result = result;
    };
    add("silence", {}, kGattFailInTime);
    add("write refused", {Does(Kind::writeError, 133)}, kGattFail);
    add("disconnected", {Does(Kind::disconnect)}, kGattFail);
    add("link lost", {Does(Kind::disconnect, kHciDisconnection)}, kGattFail);
    add("disconnected in error", {Does(Kind::disconnect, -5)}, kGattFailInTime);
}

void AddConnections(ScenarioList& list)
{
    const auto add = [&](const char* name, const std::vector<simulator::ConnectOutcome>& how, const char* result) {
        simulator::Phone phone = QuietPhone(list.Service());
        phone.connects = how;
        list.Add(name, RoomWith(phone), Ask).result = result;
    };
    add("connection refused", {{133, 0}}, kGattFail);
    add("connection refused once", {{133, 0}, {0, 0}}, kSuccess);
    add("connection given up", {{kConnectionTimeout, 0}}, kGattFail);
    add("connection counts as made", {{kReportedAsSuccess, 0}}, kSuccess);
}

void AddLackingPhones(ScenarioList& list)
{
    simulator::Phone phone = QuietPhone(list.Service());
    CharacteristicOf(phone).notifies = false;
    list.Add("no notifications", RoomWith(phone), Ask).result = kGattFail;
    phone.services[0].characteristics.clear();
    list.Add("no characteristic", RoomWith(phone), Ask).result = kGattFail;
    phone.services.clear();
    list.Add("no service", RoomWith(phone), Ask).result = kGattFail;
}

void AddListenChannels(ScenarioList& list)
{
    const auto add = [&](const char* name, int setting, bool hasAccessPoint) -> Scenario& {
        const SetUp room = RoomWith(QuietPhone(list.Service()));
        const SetUp setUp = [room, setting, hasAccessPoint] {
            room();
            simulator::SetSetting(kListenChannel, setting);
            if (!hasAccessPoint) {
                simulator::SetAccessPoint(std::nullopt);
            }
        };
        return list.Add(name, setUp, Ask);
    };
    add("channel of the access point", 99, true).result = kSuccess;
    add("no listener", -1, true).result = kGattFail;
    Scenario& noAccessPoint = add("no access point", 99, false);
    noAccessPoint.result = kSuccess;
    noAccessPoint.leaves = kWifi;
}

void AddExtraData(ScenarioList& list)
{
    const SetUp room = RoomWith(QuietPhone(list.Service()));
    const SetUp setUp = [room] {
        room();
        simulator::WriteFile("/opt/etc/.lyn_appid", "org.example.livingroom.of.the.tv");
    };
    const Story story = [](Application& app) {
        app.Create();
        app.RequestWith(R"({"a member":"with its value","another":[1,2,3]})");
        app.Result();
        app.StopScan();
        app.End();
    };
    list.Add("extra data", setUp, story).result = kSuccess;
}

void AskForType(Application& app)
{
    app.Create();
    app.SetVersion("3.0");
    app.Request();
    app.Result();
    app.AskType();
    app.ReadStoredMode();
    app.StopScan();
    app.End();
}

void AddTwoSteps(ScenarioList& list)
{
    const auto add = [&](const char* name, const std::string& application, const Answer& last,
                         const std::vector<const char*>& files) -> Scenario& {
        const std::string first = R"({"type":"fgApp","packageName":")" + application + "\"}";
        const SetUp room = PhoneAnswers(list.Service(), {Says(first), last});
        const SetUp setUp = [room, files] {
            room();
            for (const char* file : files) {
                simulator::WriteFile(file, kMetaData);
            }
        };
        return list.Add(name, setUp, AskForType);
    };
    add("two steps, multi-view", "another", Says("Success"), {kRw, kRo}).result = kSuccess;
    add("two steps, full view", "full", Says("Success"), {kRw, kRo}).result = kSuccess;
    add("two steps, sound", "sound", Says("Success"), {kRo}).result = kSuccess;
    add("two steps, no list", "full", Says("Success"), {}).result = kGattFail;
    add("two steps, silence", "full", Does(Kind::silent), {kRo}).result = kGattFailInTime;
    const Answer strange = Says(R"({"type":"something else"})");
    list.Add("CommandErr", PhoneAnswers(list.Service(), {strange}), Ask).result = "READY result 4";
    list.Add("answer is a number", PhoneAnswers(list.Service(), {Says("5")}), Ask).result = kGattFail;
}

void AddDeviceStates(ScenarioList& list)
{
    list.Add("bluetooth off and on", [](Application& app) {
        app.Create();
        app.TurnBluetooth("bluetooth off", false);
        app.TurnBluetooth("bluetooth on", true);
        app.Scan();
        app.Phone();
        app.StopScan();
        app.End();
    });
    list.Add("bluetooth off in a request", [](Application& app) {
        app.Create();
        app.Request();
        app.UntilConnected();
        app.TurnBluetooth("bluetooth lost", false);
        app.Result();
        app.TurnBluetooth("bluetooth on", true);
        app.StopScan();
        app.End();
    });
}

}  // namespace

void AddRequests(ScenarioList& list)
{
    AddAnswers(list);
    AddBrokenExchanges(list);
    AddConnections(list);
    AddLackingPhones(list);
    AddListenChannels(list);
    AddExtraData(list);
}

void AddNodLink(ScenarioList& list)
{
    AddTwoSteps(list);
    AddDeviceStates(list);
}

}  // namespace lyn::test
