// SPDX-License-Identifier: Apache-2.0
#include "AdvertisingData.h"

#include <algorithm>

namespace lyn::simulator {

namespace {

constexpr std::uint8_t kFlagsType = 0x01;
constexpr std::uint8_t kMirroringMarker = 25;
constexpr std::uint8_t kKovMarker = 23;
constexpr std::uint8_t kNodLinkPhoneKind = 13;
constexpr std::uint8_t kNodLinkAvKind = 4;
constexpr std::size_t kNodLinkLength = 14;

/// Bytes, and more bytes or a text behind them.
template <typename Tail>
Bytes Joined(const Bytes& head, const Tail& tail)
{
    Bytes joined(head.size() + tail.size());
    const auto behind = std::copy(head.begin(), head.end(), joined.begin());
    std::copy(tail.begin(), tail.end(), behind);
    return joined;
}

std::uint8_t Marker(Feature feature)
{
    switch (feature) {
    case Feature::mirroring:
        return kMirroringMarker;
    case Feature::kov:
        return kKovMarker;
    case Feature::nodLink:
        break;
    }
    throw std::invalid_argument("NodLink phones have no marker of a name and an id");
}

Bytes WithFlags(const Bytes& manufacturerValue)
{
    return Joined(AdStructure(kFlagsType, {0x06}), ManufacturerData(kPhoneCompany, manufacturerValue));
}

}  // namespace

std::optional<Feature> FeatureNamed(const std::string& name)
{
    if (name == "mirroring") {
        return Feature::mirroring;
    }
    if (name == "kov") {
        return Feature::kov;
    }
    if (name == "nodlink") {
        return Feature::nodLink;
    }
    return std::nullopt;
}

Bytes AdStructure(std::uint8_t type, const Bytes& value)
{
    if (value.size() > kMaxStructureValue) {
        throw std::invalid_argument("an advertising structure holds at most 254 bytes");
    }
    return Joined({static_cast<std::uint8_t>(value.size() + 1), type}, value);
}

Bytes ManufacturerData(std::uint16_t company, const Bytes& value)
{
    const Bytes identifier{static_cast<std::uint8_t>(company & 0xFF), static_cast<std::uint8_t>(company >> 8)};
    return AdStructure(kManufacturerDataType, Joined(identifier, value));
}

Bytes PhoneAdvertising(Feature feature, const std::string& uniqueId)
{
    if (uniqueId.size() != kUniqueIdLength) {
        throw std::invalid_argument("a unique id has 22 bytes");
    }
    return WithFlags(Joined({0x01, Marker(feature)}, uniqueId));
}

Bytes PhoneScanResponse(Feature feature, const std::string& name)
{
    return ManufacturerData(kPhoneCompany, Joined({0x01, Marker(feature)}, name));
}

Bytes NodLinkPhoneAdvertising(bool mirroringAvailable, bool version3)
{
    Bytes value(kNodLinkLength, 0);
    value[1] = kNodLinkPhoneKind;
    value[5] = 0x04;
    value[6] = mirroringAvailable ? 0x01 : 0x00;
    value[13] = version3 ? 0x01 : 0x00;
    return WithFlags(value);
}

Bytes NodLinkAvAdvertising()
{
    Bytes value(kNodLinkLength, 0);
    value[1] = kNodLinkAvKind;
    value[2] = 0x03;
    value[4] = 0x20;
    return WithFlags(value);
}

Service FeatureService(Feature feature)
{
    const auto make = [](const char* service, const char* characteristic) {
        return Service{service, {Characteristic{.uuid = characteristic, .answers = {}}}};
    };
    switch (feature) {
    case Feature::mirroring:
        return make("f7608236-13bd-4a99-bbcd-9426bccb6c24", "9be85432-b1db-416c-9e1c-d6d381305337");
    case Feature::kov:
        return make("1e5ed7a3-9e92-41c1-af60-6a15643dfb34", "fc4e4003-dd1f-4896-bc77-35a759445f69");
    case Feature::nodLink:
        break;
    }
    return make("95e60810-8ad0-11e6-bdf4-4b1e122d00d0", "7909f901-904c-11e6-bdf4-9bbdfdaad9d9");
}

}  // namespace lyn::simulator
