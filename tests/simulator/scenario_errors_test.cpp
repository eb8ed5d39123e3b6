// SPDX-License-Identifier: Apache-2.0
//
// A bad scenario is refused with one line that says where and why, and changes nothing.
#include <cstdlib>
#include <fstream>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

std::string ErrorOf(const std::string& json)
{
    try {
        LoadScenarioText(json, "room.json");
    } catch (const ScenarioError& error) {
        return error.what();
    }
    return "accepted";
}

class ScenarioErrors : public SimulatorTest {};

TEST_F(ScenarioErrors, NameFileLineAndField)
{
    EXPECT_EQ(ErrorOf("{\n"
                      "  \"phones\": [\n"
                      "    { \"address\": \"AA:BB:CC:DD:EE:01\", \"advertising\": \"\" },\n"
                      "    {\n"
                      "      \"address\": \"AA:BB:CC:DD:EE:02\",\n"
                      "      \"advertising\": \"02 01 0\"\n"
                      "    }\n"
                      "  ]\n"
                      "}\n"),
              "room.json:6: phones[1].advertising: odd number of hex digits");
}

struct Sample {
    std::string json;
    std::string error;
};

std::string OnePhone(const std::string& members)
{
    return R"({"phones": [{"address": "AA:BB:CC:DD:EE:01", )" + members + "}]}";
}

std::string OneAnswer(const std::string& answer)
{
    return OnePhone(R"("advertising": "", "services": [{"feature": "kov", "answers": [)" + answer + "]}]");
}

const std::vector<Sample>& Samples()
{
    static const std::vector<Sample> samples = {
        {"", "not JSON: Syntax error: value, object or array expected."},
        {"[]", "must be an object"},
        {R"({"tvs": {}})", "tvs: unknown member; known are $schema, description, tv, phones"},
        {R"({"a\nb": {}})", "a?b: unknown member; known are $schema, description, tv, phones"},
        {R"({"a\u0000b": {}})", "a?b: unknown member; known are $schema, description, tv, phones"},
        {R"({"tv": 5})", "tv: must be an object"},
        {R"({"description": 5})", "description: must be a text"},
        {R"({"phones": {}})", "phones: must be an array"},
        {R"({"tv": {"bluetooth": {"on": 1}}})", "tv.bluetooth.on: must be true or false"},
        {R"({"tv": {"powerState": "on"}})", "tv.powerState: must be an integer"},
        {R"({"tv": {"powerState": -1}})", "tv.powerState: must be from 0 to 2147483647"},
        {R"({"tv": {"settings": {"a/b": []}}})", "tv.settings.a/b: must be an integer, a text, or null"},
        {R"({"tv": {"files": {"/a/../b": ""}}})",
         R"(tv.files./a/../b: a file's name must be an absolute path without "..")"},
        {R"({"tv": {"files": {"/a": 5}}})",
         "tv.files./a: must be a text, or an object or array to be written as JSON"},
        {R"({"tv": {"wifi": {"accessPoint": {"frequency": 1}}}})",
         R"(tv.wifi.accessPoint: member "bssid" is missing)"},
        {R"({"tv": {"timeline": [{"atMs": 1, "event": "explode"}]}})",
         "tv.timeline[0].event: must be bluetoothOn, bluetoothOff, suspend, powerOff, ambientOff, "
         "powerState or setting"},
        {R"({"tv": {"timeline": [5]}})", "tv.timeline[0]: must be an object"},
        {R"({"phones": [{"advertising": ""}]})", R"(phones[0]: member "address" is missing)"},
        {R"({"phones": [{"address": "kitchen"}]})",
         "phones[0].address: must be six hexadecimal pairs joined by colons"},
        {OnePhone(R"("advertising": ""}, {"address": "aa:bb:cc:dd:ee:01", "advertising": "")"),
         "phones[1].address: another phone has this address"},
        {OnePhone(R"("rssi": -128)"), "phones[0].rssi: must be from -127 to 20"},
        {OnePhone(R"("rssi": 1.5)"), "phones[0].rssi: must be an integer"},
        {OnePhone(R"("leavesAtMs": 0)"), "phones[0].leavesAtMs: must be later than joinsAtMs"},
        {OnePhone(R"("advertising": "xx")"), "phones[0].advertising: not a hex digit in text of bytes"},
        {OnePhone(R"("advertising": 5)"),
         "phones[0].advertising: must be a text of hex digits, an object, or null"},
        {OnePhone(R"("advertising": {"feature": "sharing"})"),
         "phones[0].advertising.feature: must be mirroring, nodlink or kov"},
        {OnePhone(R"("advertising": {"feature": "kov", "uniqueId": "short"})"),
         "phones[0].advertising.uniqueId: must have 22 bytes"},
        {OnePhone(R"("advertising": {"feature": "nodlink", "kind": "tv"})"),
         "phones[0].advertising.kind: must be mobile or av"},
        {OnePhone(R"("advertising": {"feature": "nodlink", "kind": "mobile", "version": "4.0"})"),
         "phones[0].advertising.version: must be 2.0 or 3.0"},
        {OnePhone(R"("advertising": {"structures": [{"hex": ""}]})"),
         R"(phones[0].advertising.structures[0]: must have either "type" or "company")"},
        {OnePhone(R"("advertising": {"structures": [{"type": 1}]})"),
         R"(phones[0].advertising.structures[0]: must have either "hex" or "text")"},
        {OnePhone(R"("advertising": {"feature": "kov", "uniqueId": "0123456789abcdefghijkl", "name": "x"},)"
                  R"("scanResponse": "")"),
         "phones[0].scanResponse: there is one already, made from advertising.name"},
        {OnePhone(R"("advertising": "", "connects": [{"code": "133"}])"),
         R"(phones[0].connects[0].code: must be an integer, or a text of hexadecimal digits such as "0xFE400104")"},
        {OnePhone(R"("advertising": "", "services": [{"uuid": "180f"}])"),
         R"(phones[0].services[0].uuid: must be a UUID such as "f7608236-13bd-4a99-bbcd-9426bccb6c24")"},
        {OneAnswer("5"), "phones[0].services[0].answers[0]: must be a text or an object"},
        {OneAnswer(R"({"kind": "shout"})"),
         "phones[0].services[0].answers[0].kind: must be notify, silent, disconnect or writeError"},
        {OneAnswer("{}"), R"(phones[0].services[0].answers[0]: must have one of "text", "hex" and "json")"},
        {OneAnswer(R"({"text": "abc", "cut": 4})"), "phones[0].services[0].answers[0].cut: must be from 0 to 3"},
        {OneAnswer(R"({"kind": "silent", "code": 1})"),
         "phones[0].services[0].answers[0].code: unknown member; known are kind, delayMs"},
    };
    return samples;
}

TEST_F(ScenarioErrors, HaveExactTexts)
{
    for (const Sample& sample : Samples()) {
        EXPECT_EQ(ErrorOf(sample.json), "room.json:1: " + sample.error) << sample.json;
    }
}

TEST_F(ScenarioErrors, OfTheJsonItselfNameTheLine)
{
    EXPECT_EQ(ErrorOf("{\n  \"phones\": [\n    oops\n  ]\n}"),
              "room.json:3: not JSON: Syntax error: value, object or array expected.");
    EXPECT_EQ(ErrorOf("{}\n{}"), "room.json:2: not JSON: Extra non-whitespace after JSON value.");
    EXPECT_NE(ErrorOf("{\"phones\": [], \"phones\": []}").find("room.json:1: not JSON: Duplicate key"),
              std::string::npos);
    EXPECT_NE(ErrorOf("// comment\n{}").find("room.json:1: not JSON: "), std::string::npos);
}

TEST_F(ScenarioErrors, OfADeepNestingAreNoCrash)
{
    EXPECT_NE(ErrorOf(std::string(100'000, '[')).find("room.json:1: not JSON: "), std::string::npos);
}

TEST_F(ScenarioErrors, OfAFileNameIt)
{
    try {
        LoadScenarioFile("/no/such/room.json");
        FAIL() << "accepted";
    } catch (const ScenarioError& error) {
        EXPECT_STREQ(error.what(), "/no/such/room.json: cannot be read");
    }
    EXPECT_THROW(LoadScenarioFile("/"), ScenarioError) << "a folder";
}

TEST_F(ScenarioErrors, ChangeNothing)
{
    AddPhone(AnsweringPhone({}));
    SetSetting("memory/key", 5);
    LinkUser user;
    bt_gatt_connect(kPhone, false);
    EXPECT_NE(ErrorOf("{\"phones\": 5}"), "accepted");
    EXPECT_EQ(Phones().size(), 1U);
    EXPECT_EQ(IntSetting("memory/key"), 5);
    Settle();
    EXPECT_EQ(user.reports.size(), 1U);
}

}  // namespace
}  // namespace lyn::simulator::test
