// SPDX-License-Identifier: Apache-2.0
#include "holding/Scenes.h"

#include <utility>

#include "lifetime/Phones.h"
#include "support/Clock.h"

namespace lyn::test {
namespace {

using simulator::Answer;
using simulator::Phone;

constexpr const char* kListenChannel = "memory/menu/network/screenmirroring/p2p_listen_channel";
constexpr const char* kMetaData = "/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
constexpr int kOftenFailing = 133;
constexpr int kTimedOut = static_cast<int>(0xC0000001);
constexpr int kLinkLost = static_cast<int>(0xFE400104);
constexpr std::uint32_t kSuspend = 0x40000000;

void Advance()
{
    simulator::Settle();
}

void PassTenSeconds()
{
    ElapseTimeout();
    simulator::Settle();
}

void TurnBluetooth(bt_adapter_state_e state)
{
    simulator::SetAdapterState(state);
    simulator::Settle();
}

/// Makes scenes, all with the same service's phone in the room.
class Director {
public:
    explicit Director(std::string service) : m_service(std::move(service)) {}

    /// Begins a scene. What is given is done to the room first.
    Director& Scene(std::function<void(Guest&)> setUp = {})
    {
        const Phone phone = AgreeingPhone(m_service, kPhone);
        m_scenes.push_back({[phone, setUp = std::move(setUp)](Guest& guest) {
                                simulator::AddPhone(phone);
                                if (setUp) {
                                    setUp(guest);
                                }
                            },
                            {}});
        return *this;
    }

    /// Begins a scene in which the phone is another.
    Director& SceneWith(const std::function<void(Phone&)>& change, const std::function<void()>& more = {})
    {
        Phone phone = AgreeingPhone(m_service, kPhone);
        change(phone);
        return Scene([phone, more](Guest&) {
            simulator::AddPhone(phone);
            if (more) {
                more();
            }
        });
    }

    Director& Call(const std::string& name, lyn_error_e (Guest::*function)())
    {
        return Add({name, false, [function](Guest& guest) { return std::to_string((guest.*function)()); }});
    }

    Director& Request(const std::string& name = "request")
    {
        return Add({name, false, [](Guest& guest) { return std::to_string(guest.Request(kPhone)); }});
    }

    Director& RequestWith(const std::string& name, const std::string& extraData)
    {
        return Add({name, false, [extraData](Guest& guest) {
                        return std::to_string(guest.RequestWith(kPhone, extraData.c_str()));
                    }});
    }

    Director& AskName(const std::string& name)
    {
        return Add({name, false, [](Guest& guest) { return guest.AskName(); }});
    }

    Director& Loop(const std::string& name, const std::function<void()>& work = Advance)
    {
        return Add({name, true, [work](Guest&) {
                        work();
                        return std::string();
                    }});
    }

    Director& Create(const std::string& name = "create") { return Call(name, &Guest::Create); }
    Director& Destroy(const std::string& name = "destroy") { return Call(name, &Guest::Destroy); }
    Director& StartScan(const std::string& name = "start scan") { return Call(name, &Guest::StartScan); }
    Director& StopScan(const std::string& name = "stop scan") { return Call(name, &Guest::StopScan); }

    std::vector<test::Scene> Take() { return std::move(m_scenes); }

private:
    Director& Add(Step step)
    {
        m_scenes.back().steps.push_back(std::move(step));
        return *this;
    }

    std::string m_service;
    std::vector<test::Scene> m_scenes;
};

void AddScans(Director& director)
{
    director.Scene().Create().StartScan().Loop("phone found").StopScan().Destroy();
    director.Scene().Create();
    director.Call("start scan for JSON", &Guest::StartScanForJson).Loop("phone found as JSON");
    director.StartScan("start scan (scanning)");
    director.Call("start advertise (scanning)", &Guest::Advertise);
    director.Call("stop advertise (scanning)", &Guest::EndAdvertise).Destroy("destroy (scanning)");
}

void AddShortCalls(Director& director)
{
    director.Scene().Create().Call("start advertise", &Guest::Advertise);
    director.Call("stop advertise", &Guest::EndAdvertise).Call("set version", &Guest::SetVersion);
    director.Call("ask type", &Guest::AskType).AskName("ask name");
    director.Create("create (again)").StopScan("stop scan (ready)").Destroy();
    director.StopScan("stop scan (destroyed)").Destroy("destroy (destroyed)");
}

void AddRequests(Director& director)
{
    director.Scene().Create().Request().Loop("answer");
    director.RequestWith("request with extra data", R"({"a member":[1,2]})");
    director.Loop("answer to extra data").Destroy();
    director.Scene().Create().Call("start advertise", &Guest::Advertise).StartScan().Loop("phone found");
    director.Request("request (scanning)").Loop("answer").Destroy();
}

void AddCallsInsideCallbacks(Director& director)
{
    const auto destroy = [](Guest& guest) { guest.Destroy(); };
    const auto request = [](Guest& guest) { guest.Request(kPhone); };
    const auto advertise = [](Guest& guest) { guest.Advertise(); };
    const auto inside = [](const char* report, const std::function<void(Guest&)>& work) {
        return [report, work](Guest& guest) { guest.Inside(report, work); };
    };
    director.Scene(inside("result", destroy)).Create().Request().Loop("answer, destroyed inside the result");
    director.Scene(inside("result", request)).Create().Request().Loop("answer, asked again inside the result");
    director.Scene(inside("phone", request)).Create().StartScan("start scan, to ask inside the phone");
    director.Loop("phone found, asked inside").Destroy("destroy, asked inside the phone");
    director.Scene(inside("phone", destroy)).Create().StartScan("start scan, to destroy inside the phone");
    director.Loop("phone found, destroyed inside");
    director.Scene(inside("state SCANNING", advertise)).Create().StartScan("start scan, advertised inside");
    director.Scene(inside("state READY", destroy)).Create().StopScan("stop scan, destroyed inside");
}

void AddBrokenExchanges(Director& director)
{
    const auto answers = [](Answer::Kind kind, int code) {
        return [kind, code](Phone& phone) {
            Answer answer;
            answer.kind = kind;
            answer.code = code;
            CharacteristicOf(phone).answers = {answer};
        };
    };
    const auto connects = [](std::vector<simulator::ConnectOutcome> outcomes) {
        return [outcomes = std::move(outcomes)](Phone& phone) { phone.connects = outcomes; };
    };
    director.SceneWith(answers(Answer::Kind::writeError, kOftenFailing)).Create().Request().Loop("write refused");
    director.SceneWith(answers(Answer::Kind::disconnect, 0)).Create().Request().Loop("disconnected");
    director.SceneWith(answers(Answer::Kind::disconnect, kLinkLost)).Create().Request().Loop("link lost");
    director.SceneWith(answers(Answer::Kind::disconnect, -5)).Create().Request();
    director.Loop("disconnected in error").Loop("ten seconds pass, disconnected in error", PassTenSeconds);
    director.SceneWith(connects({{kOftenFailing, 0}})).Create().Request().Loop("connection refused six times");
    director.SceneWith(connects({{kTimedOut, 0}})).Create().Request().Loop("connection given up");
    director.SceneWith([](Phone& phone) { phone.services.clear(); }).Create().Request().Loop("no service");
    director.SceneWith([](Phone& phone) { CharacteristicOf(phone).notifies = false; }).Create().Request();
    director.Loop("no notifications");
    director.SceneWith([](Phone& phone) { CharacteristicOf(phone).writable = false; }).Create().Request();
    director.Loop("nothing can be written");
}

void AddSettings(Director& director)
{
    const auto listenChannel = [](int channel) {
        return [channel](Guest&) { simulator::SetSetting(kListenChannel, channel); };
    };
    director.Scene(listenChannel(99)).Create().Request().Loop("answer, channel of the access point");
    director.Scene(listenChannel(-1)).Create().Request().Loop("no listener");
    director.Scene([](Guest&) { simulator::WriteFile("/opt/etc/.lyn_appid", "org.example.tv"); }).Create();
    director.RequestWith("request with bad extra data", "{").Loop("bad extra data");
}

void AddPlatformFailures(Director& director)
{
    const auto fails = [](const char* function) {
        return [function](Guest&) { simulator::FailCall(function, -5); };
    };
    director.Scene(fails("bt_gatt_connect")).Create().Request("request (connect refused)").Destroy();
    director.Scene(fails("bt_gatt_set_connection_state_changed_cb")).Create();
    director.Request("request (registration refused)");
    director.Scene(fails("bt_adapter_le_start_scan")).Create().StartScan("start scan (refused)");
    director.Scene(fails("bt_adapter_le_stop_scan")).Create().StartScan().StopScan("stop scan (refused)");
    director.Scene(fails("bt_product_init")).Create("create (Bluetooth not made ready)").Destroy();
}

void AddMidRequest(Director& director)
{
    const auto isSilent = [](Phone& phone) { CharacteristicOf(phone).answers.clear(); };
    director.SceneWith(isSilent).Create().Request().Loop("written to a silent phone");
    director.StopScan("stop scan (requesting)")
        .StartScan("start scan (requesting)")
        .Request("request (requesting)");
    director.Call("start advertise (requesting)", &Guest::Advertise);
    director.Call("stop advertise (requesting)", &Guest::EndAdvertise);
    director.Call("set version (requesting)", &Guest::SetVersion).Call("ask type (requesting)", &Guest::AskType);
    director.AskName("ask name (requesting)").Destroy("destroy (requesting)");
    director.Loop("ten seconds pass for nobody", PassTenSeconds);
    director.SceneWith(isSilent).Create().Request().Loop("written to a silent phone");
    director.Loop("ten seconds pass", PassTenSeconds).Destroy("destroy (timed out)");
    director.Scene().Create().Request().Destroy("destroy (connecting)").Loop("connected for nobody");
}

void AddTwoSteps(Director& director)
{
    const auto says = [](std::vector<std::string> texts) {
        return [texts = std::move(texts)](Phone& phone) {
            CharacteristicOf(phone).answers.clear();
            for (const std::string& text : texts) {
                Answer answer;
                answer.text = text;
                CharacteristicOf(phone).answers.push_back(answer);
            }
        };
    };
    const std::string first = R"({"type":"fgApp","packageName":"full"})";
    const auto metaData = [] { simulator::WriteFile(kMetaData, R"({"screenmirroring_fullview":["full"]})"); };
    director.SceneWith(says({first, "Success"}), metaData).Create().Request().Loop("two steps").Destroy();
    director.SceneWith(says({first, "Success"})).Create().Request().Loop("two steps without meta data");
    director.SceneWith(says({R"({"type":"other"})"})).Create().Request().Loop("strange message").Destroy();
}

void AddDeviceStates(Director& director)
{
    const auto off = [] { TurnBluetooth(BT_ADAPTER_DISABLED); };
    const auto on = [] { TurnBluetooth(BT_ADAPTER_ENABLED); };
    const auto suspend = [] {
        simulator::PowerOff(kSuspend);
        simulator::Settle();
    };
    const auto ambientOff = [] {
        simulator::AmbientPowerOff();
        simulator::Settle();
    };
    director.Scene().Create().Loop("Bluetooth off", off).StartScan("start scan (not ready)");
    director.Request("request (not ready)").StopScan("stop scan (not ready)").Loop("Bluetooth on", on);
    director.Loop("suspend", suspend).Loop("suspend again", suspend).Destroy("destroy (not ready)");
    director.Scene().Create().Loop("ambient off", ambientOff);
    director.Scene().Create().StartScan().Loop("Bluetooth off (scanning)", off);
    director.SceneWith([](Phone& phone) { CharacteristicOf(phone).answers.clear(); }).Create().Request();
    director.Loop("written to a silent phone").Loop("Bluetooth off (requesting)", off);
    director.Loop("Bluetooth on (requesting)", on).Destroy("destroy (requested in vain)");
    director.Scene([](Guest&) { simulator::SetAdapterState(BT_ADAPTER_DISABLED, false); });
    director.Create("create (Bluetooth off)");
    director.Scene([](Guest& guest) { guest.Inside("state NOT_READY", [](Guest& own) { own.Destroy(); }); });
    director.Create().Loop("Bluetooth off, destroyed inside", off);
}

}  // namespace

simulator::Phone AgreeingPhone(const std::string& service, const std::string& address)
{
    Phone phone = PhoneFor(service);
    phone.address = address;
    phone.limit = 1;
    return phone;
}

std::vector<Scene> ScenesOf(const std::string& service)
{
    Director director(service);
    AddScans(director);
    AddShortCalls(director);
    AddRequests(director);
    AddCallsInsideCallbacks(director);
    if (service == "dummy") {
        director.Scene().Create().Request().StopScan("stop scan (requesting)").Destroy("destroy (requesting)");
    } else {
        AddBrokenExchanges(director);
        AddSettings(director);
        AddPlatformFailures(director);
        AddMidRequest(director);
    }
    if (service == "nodlink") {
        AddTwoSteps(director);
        AddDeviceStates(director);
    }
    return director.Take();
}

}  // namespace lyn::test
