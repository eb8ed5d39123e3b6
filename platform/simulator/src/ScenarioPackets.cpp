// SPDX-License-Identifier: Apache-2.0
#include "AdvertisingData.h"
#include "ScenarioParts.h"

namespace lyn::simulator {

namespace {

/// What fits behind a company identifier and the two bytes before a name.
constexpr std::size_t kMaxName = kMaxStructureValue - 4;

Bytes ParseStructure(const JsonField& field)
{
    field.OnlyMembers({"type", "company", "hex", "text"});
    if (field.Has("type") == field.Has("company")) {
        field.Fail("must have either \"type\" or \"company\"");
    }
    if (field.Has("hex") == field.Has("text")) {
        field.Fail("must have either \"hex\" or \"text\"");
    }
    Bytes value;
    if (const auto hex = field.Find("hex")) {
        value = hex->Hex();
    } else {
        const std::string text = field.Get("text").Text();
        value.assign(text.begin(), text.end());
    }
    const std::size_t room = field.Has("company") ? kMaxStructureValue - 2 : kMaxStructureValue;
    if (value.size() > room) {
        field.Fail("holds at most " + std::to_string(room) + " bytes");
    }
    if (const auto company = field.Find("company")) {
        return ManufacturerData(static_cast<std::uint16_t>(company->Integer(0, 0xFFFF)), value);
    }
    return AdStructure(static_cast<std::uint8_t>(field.Get("type").Integer(0, 0xFF)), value);
}

Bytes ParseStructures(const JsonField& field)
{
    field.OnlyMembers({"structures"});
    Bytes packet;
    for (const JsonField& element : field.Get("structures").Elements()) {
        const Bytes structure = ParseStructure(element);
        packet.insert(packet.end(), structure.begin(), structure.end());
    }
    return packet;
}

std::string ParseName(const JsonField& field)
{
    std::string name = field.Text();
    if (name.size() > kMaxName) {
        field.Fail("holds at most " + std::to_string(kMaxName) + " bytes");
    }
    return name;
}

Feature ParseFeature(const JsonField& field)
{
    const auto feature = FeatureNamed(field.Text());
    if (!feature) {
        field.Fail("must be mirroring, nodlink or kov");
    }
    return *feature;
}

void ParseNamedFeature(const JsonField& field, Feature feature, Phone& phone)
{
    field.OnlyMembers({"feature", "uniqueId", "name"});
    const JsonField uniqueId = field.Get("uniqueId");
    if (uniqueId.Text().size() != kUniqueIdLength) {
        uniqueId.Fail("must have 22 bytes");
    }
    phone.advertising = PhoneAdvertising(feature, uniqueId.Text());
    if (const auto name = field.Find("name")) {
        phone.scanResponse = PhoneScanResponse(feature, ParseName(*name));
    }
}

void ParseNodLinkFeature(const JsonField& field, Phone& phone)
{
    field.OnlyMembers({"feature", "kind", "mirroringAvailable", "version"});
    const JsonField kind = field.Get("kind");
    if (kind.Text() == "av") {
        field.OnlyMembers({"feature", "kind"});
        phone.advertising = NodLinkAvAdvertising();
        return;
    }
    if (kind.Text() != "mobile") {
        kind.Fail("must be mobile or av");
    }
    const JsonField version = field.Get("version");
    if (version.Text() != "2.0" && version.Text() != "3.0") {
        version.Fail("must be 2.0 or 3.0");
    }
    phone.advertising = NodLinkPhoneAdvertising(field.Get("mirroringAvailable").Bool(), version.Text() == "3.0");
}

void ParseAdvertising(const JsonField& field, Phone& phone)
{
    if (field.IsNull()) {
        phone.hasAdvertising = false;
    } else if (field.IsText()) {
        phone.advertising = field.Hex();
    } else if (!field.IsObject()) {
        field.Fail("must be a text of hex digits, an object, or null");
    } else if (!field.Has("feature")) {
        phone.advertising = ParseStructures(field);
    } else if (const Feature feature = ParseFeature(field.Get("feature")); feature == Feature::nodLink) {
        ParseNodLinkFeature(field, phone);
    } else {
        ParseNamedFeature(field, feature, phone);
    }
}

void ParseScanResponse(const JsonField& field, Phone& phone)
{
    if (field.IsNull()) {
        return;
    }
    if (phone.scanResponse) {
        field.Fail("there is one already, made from advertising.name");
    }
    if (field.IsText()) {
        phone.scanResponse = field.Hex();
    } else if (field.IsObject()) {
        phone.scanResponse = ParseStructures(field);
    } else {
        field.Fail("must be a text of hex digits, an object, or null");
    }
}

}  // namespace

void ParsePackets(const JsonField& field, Phone& phone)
{
    ParseAdvertising(field.Get("advertising"), phone);
    if (const auto scanResponse = field.Find("scanResponse")) {
        ParseScanResponse(*scanResponse, phone);
    }
}

}  // namespace lyn::simulator
