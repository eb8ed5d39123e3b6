// SPDX-License-Identifier: Apache-2.0
//
// What a scenario says is what the simulation does.
#include <fstream>
#include <sstream>

#include "SimulatorTest.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/system_info.h"

namespace lyn::simulator::test {
namespace {

class ScenarioFile : public SimulatorTest {
protected:
    /// The one phone of a scenario, whose members these are besides its address.
    static Phone PhoneOf(const std::string& members)
    {
        LoadScenarioText("{\"phones\": [{\"address\": \"aa:bb:cc:dd:ee:01\", " + members + "}]}");
        return Phones().at(0);
    }

    static std::vector<Answer> AnswersOf(const std::string& answers)
    {
        const Phone phone = PhoneOf("\"advertising\": \"\", \"services\": [{\"feature\": \"kov\", \"answers\": [" +
                                    answers + "]}]");
        return phone.services.at(0).characteristics.at(0).answers;
    }
};

TEST_F(ScenarioFile, DescribesTheTv)
{
    LoadScenarioText(R"({
        "tv": {
            "bluetooth": { "on": false, "address": "aa:00:00:00:00:0a" },
            "settings": { "memory/number": 5, "memory/text": "x", "memory/wifi/frequency": null },
            "systemInfo": { "some/value": 7, "com.calyxon/featureconf/devicename.icon_index": null },
            "wifi": { "accessPoint": null, "directAddress": null },
            "powerState": 3,
            "files": { "/a/plain": "text", "/a/list.json": [1] }
        }
    })");
    bt_adapter_state_e state{};
    bt_adapter_get_state(&state);
    EXPECT_EQ(state, BT_ADAPTER_DISABLED);
    char* address = nullptr;
    bt_adapter_get_address(&address);
    EXPECT_EQ(TakeText(address), "AA:00:00:00:00:0A");
    EXPECT_EQ(IntSetting("memory/number"), 5);
    EXPECT_EQ(TextSetting("memory/text"), "x");
    EXPECT_FALSE(IntSetting("memory/wifi/frequency")) << "null takes a key away";
    EXPECT_EQ(TextSetting("db/menu/network/devicename/tv_name"), "Living Room TV") << "not named: as ever";
    int value = 0;
    EXPECT_EQ(system_info_get_custom_int("some/value", &value), 0);
    EXPECT_EQ(value, 7);
    EXPECT_NE(system_info_get_custom_int("com.calyxon/featureconf/devicename.icon_index", &value), 0);
    EXPECT_EQ(device_power_get_state(), 3);
    std::ostringstream content;
    content << std::ifstream(FilePrefix() + "/a/plain").rdbuf();
    content << std::ifstream(FilePrefix() + "/a/list.json").rdbuf();
    EXPECT_EQ(content.str(), "text[\n\t1\n]\n");
}

TEST_F(ScenarioFile, DescribesAPhone)
{
    const Phone phone = PhoneOf(R"(
        "rssi": -70, "rssiJitter": 2, "intervalMs": 30, "limit": 4, "joinsAtMs": 1000, "leavesAtMs": 2000,
        "advertising": "02 01 06", "scanResponse": "",
        "connects": [{ "code": 133, "delayMs": 5 }, { "code": "0xC0000001" }],
        "mtu": { "max": 100, "status": 2, "delayMs": 3 },
        "drop": { "afterMs": 50, "code": "0xFE400104" },
        "disconnect": { "delayMs": 9, "code": 8 })");
    EXPECT_EQ(phone.address, kPhone);
    EXPECT_EQ(phone.rssi, -70);
    EXPECT_EQ(phone.rssiJitter, 2);
    EXPECT_EQ(phone.intervalMs, 30);
    EXPECT_EQ(phone.limit, 4);
    EXPECT_EQ(phone.joinsAtMs, 1000);
    EXPECT_EQ(phone.leavesAtMs, 2000);
    EXPECT_TRUE(phone.hasAdvertising);
    EXPECT_EQ(phone.advertising, (Bytes{2, 1, 6}));
    EXPECT_EQ(phone.scanResponse, Bytes{});
    ASSERT_EQ(phone.connects.size(), 2U);
    EXPECT_EQ(phone.connects[0].code, 133);
    EXPECT_EQ(phone.connects[0].delayMs, 5);
    EXPECT_EQ(phone.connects[1].code, kConnectTimedOut);
    EXPECT_EQ(phone.maxMtu, 100U);
    EXPECT_EQ(phone.mtuStatus, 2U);
    EXPECT_EQ(phone.mtuDelayMs, 3);
    EXPECT_EQ(phone.dropAfterConnectMs, 50);
    EXPECT_EQ(phone.dropCode, kLinkLost);
    EXPECT_EQ(phone.disconnectDelayMs, 9);
    EXPECT_EQ(phone.disconnectCode, 8);
}

TEST_F(ScenarioFile, TakesPacketsInReadableForm)
{
    const std::string id = "\"uniqueId\": \"0123456789abcdefghijkl\"";
    Phone phone = PhoneOf("\"advertising\": {\"feature\": \"mirroring\", " + id + ", \"name\": \"Kitchen\"}");
    Phone expected = MirroringPhone(kPhone, "Kitchen", kUniqueId);
    EXPECT_EQ(phone.advertising, expected.advertising);
    EXPECT_EQ(phone.scanResponse, expected.scanResponse);

    phone = PhoneOf("\"advertising\": {\"feature\": \"kov\", " + id + "}");
    EXPECT_EQ(phone.advertising, KovPhone(kPhone, "", kUniqueId).advertising);
    EXPECT_FALSE(phone.scanResponse);

    phone = PhoneOf(R"("advertising": { "feature": "nodlink", "kind": "mobile",
                                        "mirroringAvailable": true, "version": "3.0" })");
    EXPECT_EQ(phone.advertising, NodLinkPhone(kPhone, true, true).advertising);
    phone = PhoneOf(R"("advertising": { "feature": "nodlink", "kind": "av" })");
    EXPECT_EQ(phone.advertising, NodLinkAvDevice(kPhone).advertising);

    phone =
        PhoneOf(R"("advertising": { "structures": [{ "type": 9, "text": "ab" }, { "company": 117, "hex": "01" }] },
                       "scanResponse": { "structures": [{ "type": 22, "hex": "" }] })");
    EXPECT_EQ(phone.advertising, (Bytes{3, 9, 'a', 'b', 4, 0xFF, 117, 0, 1}));
    EXPECT_EQ(phone.scanResponse, (Bytes{1, 22}));

    EXPECT_FALSE(PhoneOf("\"advertising\": null").hasAdvertising);
}

TEST_F(ScenarioFile, TakesServicesOfFeaturesAndAnyOther)
{
    const Phone phone = PhoneOf(R"("advertising": "", "services": [
        { "feature": "nodlink", "notifies": false, "answersPerLink": true },
        { "uuid": "0000180F-0000-1000-8000-00805F9B34FB",
          "characteristics": [{ "uuid": "00002a19-0000-1000-8000-00805f9b34fb", "writable": false }] }])");
    ASSERT_EQ(phone.services.size(), 2U);
    EXPECT_EQ(phone.services[0].uuid, "95e60810-8ad0-11e6-bdf4-4b1e122d00d0");
    EXPECT_FALSE(phone.services[0].characteristics.at(0).notifies);
    EXPECT_TRUE(phone.services[0].characteristics.at(0).answersPerLink);
    EXPECT_EQ(phone.services[1].uuid, "0000180f-0000-1000-8000-00805f9b34fb");
    EXPECT_FALSE(phone.services[1].characteristics.at(0).writable);
    EXPECT_TRUE(phone.services[1].characteristics.at(0).notifies);
}

TEST_F(ScenarioFile, TakesAnswersOfEachKind)
{
    const auto answers = AnswersOf(R"(
        "Success",
        { "text": "Success", "cut": 3, "delayMs": 5, "repeat": 2, "beforeCompletion": true },
        { "hex": "00 FF" },
        { "json": { "b": 1, "a": "x" } },
        { "kind": "silent", "delayMs": 1 },
        { "kind": "disconnect", "code": 8 },
        { "kind": "writeError", "code": 3 })");
    ASSERT_EQ(answers.size(), 7U);
    EXPECT_EQ(answers[0].text, "Success");
    EXPECT_EQ(answers[1].text, "Suc");
    EXPECT_EQ(answers[1].delayMs, 5);
    EXPECT_EQ(answers[1].repeat, 2);
    EXPECT_TRUE(answers[1].beforeCompletion);
    EXPECT_EQ(answers[2].text, std::string("\0\xFF", 2));
    EXPECT_EQ(answers[3].text, "{\"a\":\"x\",\"b\":1}");
    EXPECT_EQ(answers[4].kind, Answer::Kind::silent);
    EXPECT_EQ(answers[5].kind, Answer::Kind::disconnect);
    EXPECT_EQ(answers[5].code, 8);
    EXPECT_EQ(answers[6].kind, Answer::Kind::writeError);
    EXPECT_EQ(answers[6].code, 3);
}

TEST_F(ScenarioFile, TakesThePlaceOfTheOneBefore)
{
    AddPhone(AnsweringPhone({}, kOther));
    Listener listener;
    listener.Start();
    LoadScenarioText("{}");
    EXPECT_TRUE(Phones().empty());
    EXPECT_FALSE(Alive().scanning);
}

}  // namespace
}  // namespace lyn::simulator::test
