// SPDX-License-Identifier: Apache-2.0
#include "ExpectedExchange.h"

#include <json/reader.h>

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>

#include "Room.h"

namespace lyn::fuzz {
namespace {

// Default address of the simulated TV.
constexpr const char* BT_ADDRESS = "02:00:00:00:00:01";

// Nothing when it is no JSON. Throws, as the reader does, when it is nested too deep.
std::optional<Json::Value> Read(const std::string& text)
{
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value value;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, nullptr)) {
        return std::nullopt;
    }
    return value;
}

bool IsPlain(const Json::Value& value)
{
    return !value.isObject() && !value.isArray();
}

std::string TextOf(const Json::Value& value)
{
    if (!IsPlain(value)) {
        throw std::invalid_argument("no text");
    }
    return value.asString();
}

bool IsListed(const Json::Value& list, const std::string& package)
{
    if (IsPlain(list)) {
        return false;
    }
    for (const Json::Value& entry : list) {
        if (TextOf(entry) == package) {
            return true;
        }
    }
    return false;
}

nod_link_type TypeOf(const std::string& package, const std::string& metaDataFile)
{
    const std::optional<Json::Value> metaData = Read(metaDataFile);
    if (!metaData || !(metaData->isObject() || metaData->isNull())) {
        throw std::invalid_argument("no metadata");
    }
    if (IsListed(metaData->get("screenmirroring_fullview", Json::Value()), package)) {
        return LYN_NOD_LINK_TYPE_FULL_VIEW;
    }
    return IsListed(metaData->get("soundmirroring", Json::Value()), package) ? LYN_NOD_LINK_TYPE_SOUND
                                                                             : LYN_NOD_LINK_TYPE_MULTI_VIEW;
}

std::string MessageOf(nod_link_type type)
{
    const std::string service = type == LYN_NOD_LINK_TYPE_SOUND ? "sound" : "screen";
    const std::string view = type == LYN_NOD_LINK_TYPE_MULTI_VIEW ? "multi" : "full";
    return std::string(R"({"BtMac":")") + BT_ADDRESS + R"(","service":")" + service +
           R"(","type":"reqService","view":")" + view + R"("})";
}

// One answer. True when the exchange goes on.
bool Answer(ExpectedExchange& exchange, const std::string& answer, const std::string& metaDataFile)
{
    const std::optional<Json::Value> message = Read(answer);
    if (!message) {
        exchange.result = ExpectResult(answer);
        exchange.hasSucceeded = answer == "Success";
        return false;
    }
    if (message->isNull()) {
        exchange.result = LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR;
        return false;
    }
    if (!message->isObject()) {
        return false;
    }
    if (TextOf(message->get("type", Json::Value())) != "fgApp") {
        exchange.result = LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR;
        return false;
    }
    exchange.type = TypeOf(TextOf(message->get("packageName", Json::Value())), metaDataFile);
    exchange.furtherMessages.push_back(MessageOf(exchange.type));
    return true;
}

}  // namespace

lyn_request_initiating_result_e ExpectResult(const std::string& answer)
{
    static const std::map<std::string, int> documented{{"Success", 0},
                                                       {"GattFail", 1},
                                                       {"NotRegisteredDevice", 2},
                                                       {"UnknownErr", 3},
                                                       {"CommandErr", 4},
                                                       {"NotSupported", 5},
                                                       {"Connected", 6},
                                                       {"NotTap", 8},
                                                       {"NotStartedKov", 9},
                                                       {"NotStartedMirroring", 10},
                                                       {"GattDisconnected", 11}};
    if (answer.empty()) {
        return LYN_REQUEST_INITIATING_RESULT_GATT_FAIL;
    }
    const auto found = documented.find(UpToZero(answer));
    return static_cast<lyn_request_initiating_result_e>(found != documented.end() ? found->second : 3);
}

ExpectedExchange ExpectNodLinkExchange(const std::vector<std::string>& answers, const std::string& metaDataFile)
{
    ExpectedExchange exchange;
    try {
        for (const std::string& answer : answers) {
            if (answer.empty()) {
                break;  // Nobody hears it.
            }
            const std::string heard = UpToZero(answer);
            if (heard.empty()) {
                exchange.result = LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR;
                break;
            }
            if (!Answer(exchange, heard, metaDataFile)) {
                break;
            }
        }
    } catch (const std::exception&) {
        exchange.result = LYN_REQUEST_INITIATING_RESULT_GATT_FAIL;
    }
    return exchange;
}

std::vector<std::string> Split(const std::string& text, char border, std::size_t most)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (parts.size() + 1 < most) {
        const std::size_t end = text.find(border, begin);
        if (end == std::string::npos) {
            break;
        }
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    parts.push_back(text.substr(begin));
    return parts;
}

}  // namespace lyn::fuzz
