// SPDX-License-Identifier: Apache-2.0
//
// The extra data that an application gives with a mirroring request. The phone gets the one message that
// docs/behaviour.md says, with every member of the extra data, or the request fails.
#include <json/reader.h>
#include <json/writer.h>

#include <memory>
#include <optional>

#include "Room.h"

namespace {

using namespace lyn;

constexpr std::size_t LONGEST_MESSAGE = 512;

// What the phone is to be told; nothing when the extra data are no JSON object.
std::optional<std::string> ExpectMessage(const std::string& extraData)
{
    Json::Value message;
    message["type"] = "mirroring";
    message["P2PMac"] = "02:00:00:00:00:02";
    message["P2PChannel"] = "1";
    message["displayName"] = "Living Room TV";
    message["deviceType"] = "12";
    message["deviceIcon"] = "1";
    Json::Value extra;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    try {
        const bool isJson = extraData.empty() ||
                            reader->parse(extraData.data(), extraData.data() + extraData.size(), &extra, nullptr);
        if (!isJson || !(extra.isObject() || extra.isNull())) {
            return std::nullopt;
        }
    } catch (const Json::Exception&) {
        return std::nullopt;  // Nested too deep.
    }
    for (auto member = extra.begin(); member != extra.end(); ++member) {
        message[member.name()] = *member;
    }
    Json::StreamWriterBuilder oneLine;
    oneLine["indentation"] = "";
    oneLine["commentStyle"] = "None";
    std::string text = Json::writeString(oneLine, message);
    return text.size() <= LONGEST_MESSAGE ? std::optional(text) : std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string extraData = fuzz::UpToZero(fuzz::Input(data, size).TakeRest());

    const fuzz::Tv tv;
    simulator::Phone phone = simulator::MirroringPhone(fuzz::ADDRESS, "Phone", fuzz::UNIQUE_ID);
    phone.services.at(0).characteristics.at(0).answers = {simulator::Answer{.text = "Success"}};
    simulator::AddPhone(phone);
    fuzz::App app("mirroring");
    const lyn_request_initiating_result_e result = app.Request(fuzz::ADDRESS, extraData);

    const std::optional<std::string> expected = ExpectMessage(extraData);
    const std::vector<std::string> messages = simulator::MessagesTo(fuzz::ADDRESS);
    fuzz::Require(result ==
                      (expected ? LYN_REQUEST_INITIATING_RESULT_SUCCESS : LYN_REQUEST_INITIATING_RESULT_GATT_FAIL),
                  "a request succeeds with a JSON object that fits, and fails without");
    fuzz::Require(messages == (expected ? std::vector{*expected} : std::vector<std::string>()),
                  "the message is the expected one");
    for (const std::string& message : messages) {
        fuzz::Require(fuzz::IsAsciiLine(message), "a message is one line of ASCII");
    }
    return 0;
}
