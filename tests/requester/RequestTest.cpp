// SPDX-License-Identifier: Apache-2.0
#include "requester/RequestTest.h"

#include <algorithm>

namespace lyn::test {
namespace {

constexpr const char* kKeyFrequency = "memory/wifi/frequency";
constexpr int kFrequency = 5180;

std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + "\"";
}

}  // namespace

Texts Join(std::initializer_list<Texts> parts)
{
    Texts joined;
    for (const Texts& part : parts) {
        joined.insert(joined.end(), part.begin(), part.end());
    }
    return joined;
}

simulator::Answer Says(const std::string& text)
{
    simulator::Answer answer;
    answer.text = text;
    return answer;
}

simulator::Answer StaysSilent()
{
    simulator::Answer answer;
    answer.kind = simulator::Answer::Kind::silent;
    return answer;
}

simulator::Answer Drops(int code)
{
    simulator::Answer answer;
    answer.kind = simulator::Answer::Kind::disconnect;
    answer.code = code;
    return answer;
}

simulator::Answer RefusesWrite(int code)
{
    simulator::Answer answer;
    answer.kind = simulator::Answer::Kind::writeError;
    answer.code = code;
    return answer;
}

simulator::Phone PhoneWith(const Feature& feature, const std::vector<simulator::Answer>& answers)
{
    simulator::Characteristic characteristic;
    characteristic.uuid = feature.characteristicUuid;
    characteristic.answers = answers;
    simulator::Phone phone;
    phone.address = kPhone;
    phone.services = {{feature.serviceUuid, {characteristic}}};
    return phone;
}

void SetUpTv()
{
    simulator::SetSetting(kKeyTvName, "Salon");
    simulator::SetSetting(kKeyListenChannel, 0);
    simulator::SetSetting(kKeyFrequency, kFrequency);
    simulator::SetAdapterAddress("02:00:00:00:00:AA");
    simulator::SetWifiDirectAddress("02:00:00:00:00:BB");
    simulator::SetSystemInfo(kDeviceType, 12);
    simulator::SetSystemInfo(kDeviceIcon, 3);
    simulator::SetAccessPoint(std::nullopt);
}

RequestTest::RequestTest(const Feature& theFeature)
    : feature(theFeature),
      phone(PhoneWith(theFeature, {Says("Success")})),
      app(theFeature.service)
{
    while (ElapseTimeout()) {
        simulator::Settle();  // Left by a service that was destroyed in mid-request.
    }
    SetUpTv();
    simulator::AddPhone(phone);
}

void RequestTest::PhoneAnswers(const std::vector<simulator::Answer>& answers)
{
    phone.services[0].characteristics[0].answers = answers;
    simulator::AddPhone(phone);
}

void RequestTest::Ask()
{
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    simulator::Settle();
}

void RequestTest::Ask(const std::string& extraData)
{
    ASSERT_EQ(app.Request(kPhone, extraData), LYN_ERROR_NONE);
    simulator::Settle();
}

void RequestTest::AskFromHere()
{
    simulator::ClearJournal();
    simulator::ClearLog();
    Ask();
}

void RequestTest::LetTimeOut()
{
    ASSERT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    ASSERT_TRUE(ElapseTimeout());
    simulator::Settle();
}

bool RequestTest::RunUntilCalled(const std::string& function)
{
    const int had = CountCalls(function);
    return simulator::RunUntil([&] { return CountCalls(function) > had; });
}

lyn_request_initiating_result_e RequestTest::Result() const
{
    EXPECT_EQ(app.results.size(), 1U);
    return app.results.empty() ? LYN_REQUEST_INITIATING_RESULT_RESERVED : app.results.back();
}

Texts RequestTest::MessagesToPhone()
{
    return simulator::MessagesTo(kPhone);
}

Texts RequestTest::BoostOn()
{
    return {"vconf_get_int(\"memory/wifi/frequency\" -> 5180)",
            "bt_adapter_le_enable_le_scan_performance_boost(true)"};
}

Texts RequestTest::BoostOff()
{
    return {"bt_adapter_le_enable_le_scan_performance_boost(false)"};
}

Texts RequestTest::Connect()
{
    return {"bt_gatt_set_connection_state_changed_cb()", "bt_gatt_connect(" + Quoted(kPhone) + ", false)"};
}

Texts RequestTest::SetUpLink() const
{
    return {"bt_gatt_client_create(" + Quoted(kPhone) + ")",
            "bt_gatt_client_get_service(" + Quoted(feature.serviceUuid) + ")",
            "bt_gatt_service_get_characteristic(" + Quoted(feature.characteristicUuid) + ")",
            "bt_gatt_client_set_characteristic_value_changed_cb()",
            "bt_gatt_client_set_att_mtu_changed_cb()",
            "bt_gatt_client_request_att_mtu_change(256)"};
}

Texts RequestTest::Disconnect()
{
    return {"bt_gatt_client_unset_characteristic_value_changed_cb()", "bt_gatt_client_destroy()",
            "bt_gatt_disconnect(" + Quoted(kPhone) + ")"};
}

Texts RequestTest::ReleaseAfterDisconnection()
{
    // Once by the client that hears of its disconnection, once by its release.
    return {"bt_gatt_unset_connection_state_changed_cb()", "bt_gatt_unset_connection_state_changed_cb()"};
}

Texts RequestTest::Write(const std::string& message)
{
    return {"bt_gatt_set_value(" + Quoted(message) + ", " + std::to_string(message.size()) + ")",
            "bt_gatt_client_write_value()"};
}

}  // namespace lyn::test
