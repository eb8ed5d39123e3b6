// SPDX-License-Identifier: Apache-2.0
//
// Advertising bytes, as they come from the air, against the scanner of FUZZ_SERVICE. Input: a byte of
// flags (1: no advertising packet, 2: no scan response, 4: scan with serialization), the packet with its
// length in front, the rest is the scan response. What is reported is compared with ExpectedPhone.
#include <json/reader.h>

#include <memory>

#include "ExpectedPhone.h"
#include "Room.h"

namespace {

using namespace lyn;
using fuzz::ExpectedPhone;
using fuzz::Require;

constexpr int RSSI = -50;

struct Found {
    std::optional<ExpectedPhone> expected;
    int reports = 0;
};

void OnFound(const lyn_device_info_t* info, void* userData)
{
    auto& found = *static_cast<Found*>(userData);
    ++found.reports;
    Require(found.expected.has_value(), "only advertisements of the documented layout are reported");
    Require(info->name == nullptr || *info->name != '\0', "an empty name is absent");
    Require((info->name != nullptr ? info->name : "") == found.expected->name, "the name is the expected one");
    Require(info->address == std::string(fuzz::ADDRESS), "the address is the sender's");
    Require(info->unique_id == found.expected->uniqueId, "the unique id is the expected one");
    Require(info->extra_data == found.expected->extraData, "the extra data are the expected ones");
    Require(info->rssi == RSSI, "the RSSI is the packet's");
}

void OnJson(const char* json, void* userData)
{
    auto& found = *static_cast<Found*>(userData);
    ++found.reports;
    Require(found.expected.has_value(), "only advertisements of the documented layout are reported");
    const std::string line = json;
    Require(fuzz::IsAsciiLine(line), "a serialized phone is one line of ASCII");
    Json::CharReaderBuilder strict;
    Json::CharReaderBuilder::strictMode(&strict.settings_);
    const std::unique_ptr<Json::CharReader> reader(strict.newCharReader());
    Json::Value device;
    Require(reader->parse(line.data(), line.data() + line.size(), &device, nullptr) && device.size() == 5,
            "a serialized phone is a JSON object of five members");
    const auto isMember = [&](const char* name, const std::string& text) {
        return !fuzz::IsUtf8(text) || device[name] == text;  // Other bytes cannot be told in JSON.
    };
    Require(isMember("Name", found.expected->name) && isMember("UniqueID", found.expected->uniqueId) &&
                isMember("ExtraData", found.expected->extraData) && isMember("Address", fuzz::ADDRESS) &&
                device["RSSI"] == RSSI,
            "the members are the expected ones");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Input input(data, size);
    const unsigned flags = input.TakeByte();
    std::optional<simulator::Bytes> advertising = input.TakeBytes();
    const std::string rest = input.TakeRest();
    std::optional<simulator::Bytes> scanResponse(std::in_place, rest.begin(), rest.end());
    if ((flags & 1U) != 0) {
        advertising.reset();
    }
    if ((flags & 2U) != 0) {
        scanResponse.reset();
    }

    const fuzz::Tv tv;
    const fuzz::App app(FUZZ_SERVICE);
    Found found{fuzz::ExpectPhone(FUZZ_SERVICE, advertising, scanResponse)};
    Require(((flags & 4U) != 0 ? lyn_start_scan_with_serialization(app.handle, OnJson, &found)
                               : lyn_start_scan(app.handle, OnFound, &found)) == LYN_ERROR_NONE,
            "a scan starts");
    simulator::DeliverAdvertisement(fuzz::ADDRESS, RSSI, advertising, scanResponse);
    Require(found.reports == (found.expected ? 1 : 0), "a phone is reported once, and nothing else is");
    Require(lyn_stop_scan(app.handle) == LYN_ERROR_NONE, "a scan stops");
    return 0;
}
