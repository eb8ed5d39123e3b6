// SPDX-License-Identifier: Apache-2.0
#include "advertisement.h"

#include <array>
#include <vector>

#include "failure.h"

namespace lynphone {

namespace {

constexpr std::uint16_t kAddAdvertising = 0x003E;
constexpr std::uint16_t kRemoveAdvertising = 0x003F;
constexpr std::uint8_t kInstance = 1;
/// Connectable, and nothing of the kernel's own in the packet.
constexpr std::uint8_t kFlags = 0x01;
/// Duration and time-out: until it is removed.
constexpr std::size_t kUnlimited = 4;
constexpr std::size_t kMostBytes = 31;

using lyn::simulator::Bytes;

void CheckLength(const Bytes& bytes, const char* name)
{
    if (bytes.size() > kMostBytes) {
        throw lynctl::Failure(lynctl::kExitUsage, std::string("the ") + name + " has " +
                                                      std::to_string(bytes.size()) + " bytes: at most " +
                                                      std::to_string(kMostBytes) + " can be sent");
    }
}

}  // namespace

Advertisement::Advertisement(std::uint16_t adapter, const lyn::simulator::Phone& phone) : m_adapter(adapter)
{
    const Bytes& packet = phone.advertising;
    const Bytes response = phone.scanResponse.value_or(Bytes{});
    CheckLength(packet, "advertising packet");
    CheckLength(response, "scan response");
    std::vector<std::uint8_t> parameters = {kInstance, kFlags, 0, 0, 0};
    parameters.insert(parameters.end(), kUnlimited, 0);
    parameters.push_back(static_cast<std::uint8_t>(packet.size()));
    parameters.push_back(static_cast<std::uint8_t>(response.size()));
    parameters.insert(parameters.end(), packet.begin(), packet.end());
    parameters.insert(parameters.end(), response.begin(), response.end());
    m_management.Command(kAddAdvertising, adapter, parameters, "advertising");
}

Advertisement::~Advertisement()
{
    try {
        m_management.Command(kRemoveAdvertising, m_adapter, std::array{kInstance}, "the end of advertising");
    } catch (const lynctl::Failure&) {
        // The adapter is gone, or off: then nothing is on the air either.
    }
}

}  // namespace lynphone
