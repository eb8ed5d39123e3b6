// SPDX-License-Identifier: Apache-2.0
#include "adverts/MergedData.h"

#include <algorithm>
#include <utility>

namespace lyn::linux_platform {

namespace {

constexpr int kRssiUnknown = 127;  // as the Bluetooth standard has it

constexpr std::size_t kLongestStructureData = 252;

// What the scanners look for.
constexpr std::size_t kPhoneLength = 24;
constexpr std::size_t kNodLinkLength = 14;
constexpr std::uint8_t kMirroringMarker = 25;
constexpr std::uint8_t kKovMarker = 23;
constexpr std::uint8_t kNodLinkPhone = 13;
constexpr std::uint8_t kNodLinkAv = 4;

bool IsPhone(const Bytes& data)
{
    return data.size() == kPhoneLength && (data[1] == kMirroringMarker || data[1] == kKovMarker);
}

bool IsNodLink(const Bytes& data)
{
    return data.size() >= kNodLinkLength && (data[1] == kNodLinkPhone || data[1] == kNodLinkAv);
}

Bytes PacketWith(const CompanyData& company)
{
    Bytes packet(4 + company.data.size());
    packet[0] = static_cast<std::uint8_t>(packet.size() - 1);
    packet[1] = platform::kManufacturerDataType;
    packet[2] = static_cast<std::uint8_t>(company.company & 0xFF);
    packet[3] = static_cast<std::uint8_t>(company.company >> 8);
    std::copy(company.data.begin(), company.data.end(), packet.begin() + 4);
    return packet;
}

bool Fits(const CompanyData& company)
{
    return company.data.size() <= kLongestStructureData;
}

}  // namespace

MergedData::Device* MergedData::Find(const std::string& address)
{
    const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                    [&](const Device& device) { return device.address == address; });
    return found != m_devices.end() ? &*found : nullptr;
}

MergedData::Device& MergedData::FindOrAdd(const std::string& address)
{
    if (Device* const known = Find(address)) {
        return *known;
    }
    if (m_devices.size() == kMostDevices) {
        m_devices.erase(m_devices.begin());
    }
    m_devices.push_back({address, kRssiUnknown, std::nullopt, std::nullopt, false});
    return m_devices.back();
}

std::optional<Advert> MergedData::Take(const std::string& address, std::optional<int> rssi,
                                       const std::vector<CompanyData>& all)
{
    const auto isPhones = [](const CompanyData& one) { return one.company == platform::kPhoneCompany; };
    const auto ours = std::find_if(all.begin(), all.end(), isPhones);
    const bool isAPhone = ours != all.end() && Fits(*ours);
    Device* const known = isAPhone ? &FindOrAdd(address) : Find(address);
    if (known != nullptr && rssi) {
        known->rssi = *rssi;
    }
    if (!isAPhone) {
        return std::nullopt;
    }
    Device& device = *known;
    const auto other = std::find_if_not(all.begin(), all.end(), isPhones);
    if (IsPhone(ours->data)) {
        device.ambiguous = device.ambiguous || (device.phone && *device.phone != ours->data);
        device.phone = ours->data;
        if (other != all.end() && Fits(*other)) {
            device.response = PacketWith(*other);
        }
    } else if (!IsNodLink(ours->data)) {
        device.response = PacketWith(*ours);
    }
    const bool isHalf = IsPhone(ours->data) || (device.phone && !IsNodLink(ours->data));
    if (!isHalf || device.ambiguous) {
        return Advert{address, device.rssi, PacketWith(*ours), std::nullopt};
    }
    return Advert{address, device.rssi, PacketWith({platform::kPhoneCompany, *device.phone}), device.response};
}

}  // namespace lyn::linux_platform
