// SPDX-License-Identifier: Apache-2.0
#include "NodLinkTalk.h"

#include "ExpectedExchange.h"
#include "Room.h"

namespace lyn::fuzz {
namespace {

constexpr const char* META_DATA = "/home/owner/apps_rw/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
constexpr const char* KEY_MODE = "memory/lyn/nodlink/mirroring_mode";
constexpr int UNTOUCHED = -1;

}  // namespace

void TalkNodLink(const std::vector<std::string>& answers, const std::string& metaDataFile)
{
    using simulator::Answer;
    const Tv tv;
    simulator::WriteFile(META_DATA, metaDataFile);
    simulator::SetSetting(KEY_MODE, UNTOUCHED);
    simulator::Phone phone = simulator::NodLinkPhone(ADDRESS, true, true);
    auto& script = phone.services.at(0).characteristics.at(0).answers;
    for (const std::string& answer : answers) {
        script.push_back(Answer{.text = answer});
    }
    // The last one is given again and again: a phone that asks for ever would take the ten seconds.
    script.push_back(Answer{.kind = Answer::Kind::silent});
    simulator::AddPhone(phone);

    App app("nodlink");
    const lyn_request_initiating_result_e result = app.Request(ADDRESS);

    const ExpectedExchange expected = ExpectNodLinkExchange(answers, metaDataFile);
    Require(result == expected.result, "the result is the expected one, " + std::to_string(expected.result) +
                                           " and not " + std::to_string(result));
    std::vector<std::string> messages = simulator::MessagesTo(ADDRESS);
    Require(!messages.empty() && messages.front().find(R"("type":"nodLink")") != std::string::npos,
            "the first message is the control message");
    messages.erase(messages.begin());
    Require(messages == expected.furtherMessages, "the further messages are the expected ones");
    nod_link_type type = UNTOUCHED;
    Require(lyn_get_nodlink_type(app.handle, &type) == LYN_ERROR_NONE && type == expected.type,
            "the type is the expected one");
    Require(simulator::IntSetting(KEY_MODE) == (expected.hasSucceeded ? expected.type : UNTOUCHED),
            "the mode is stored with the answer Success, and only then");
}

}  // namespace lyn::fuzz
