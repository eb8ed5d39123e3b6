// SPDX-License-Identifier: Apache-2.0
//
// The extra data that an application gives with a mirroring request. Whatever it is, the phone gets one
// line of JSON or the request fails.
#include <json/reader.h>

#include <memory>

#include "Room.h"

namespace {

bool IsJsonObject(const std::string& text)
{
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value value;
    return reader->parse(text.data(), text.data() + text.size(), &value, nullptr) && value.isObject();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace lyn;
    const std::string extraData = fuzz::Input(data, size).TakeRest();
    const std::string address = "AA:BB:CC:DD:EE:01";

    fuzz::PrepareTv();
    simulator::AddPhone(simulator::MirroringPhone(address, "Phone", "0123456789abcdefghijkl"));
    {
        fuzz::App app("mirroring");
        app.RequestAndRequireOneResult(address, extraData);
    }
    for (const std::string& message : simulator::MessagesTo(address)) {
        fuzz::Require(message.find('\n') == std::string::npos, "a message is one line");
        fuzz::Require(IsJsonObject(message), "a message is a JSON object");
    }
    return 0;
}
