// SPDX-License-Identifier: Apache-2.0
#include "scanner/Advertisements.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace lyn::test {
namespace {

char* ExactCopy(const std::optional<Bytes>& packet)
{
    if (!packet) {
        return nullptr;
    }
    auto* const copy = static_cast<char*>(std::malloc(packet->size()));
    if (!packet->empty()) {
        std::memcpy(copy, packet->data(), packet->size());
    }
    return copy;
}

int SizeOf(const std::optional<Bytes>& packet)
{
    return packet ? static_cast<int>(packet->size()) : 0;
}

}  // namespace

Bytes BytesOf(const std::string& text)
{
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    return {bytes, bytes + text.size()};
}

Bytes Marked(std::uint8_t marker, const std::string& rest)
{
    Bytes data{0x42, marker};
    const Bytes behind = BytesOf(rest);
    data.insert(data.end(), behind.begin(), behind.end());
    return data;
}

Bytes Advertising(const Bytes& data, std::uint16_t company)
{
    Bytes packet = simulator::AdStructure(0x01, {0x06});
    const Bytes structure = simulator::ManufacturerData(company, data);
    packet.insert(packet.end(), structure.begin(), structure.end());
    return packet;
}

Bytes NameResponse(const std::string& name, std::uint16_t company)
{
    return simulator::ManufacturerData(company, Marked(0, name));
}

Bytes NodLinkData()
{
    Bytes data(14, 0);
    data[1] = 13;
    data[5] = 0x04;
    data[6] = 0x01;
    data[13] = 0x01;
    return data;
}

ExactBytes::ExactBytes(const Bytes& bytes) : m_bytes(new char[bytes.size()]), m_size(bytes.size())
{
    std::copy_n(reinterpret_cast<const char*>(bytes.data()), m_size, m_bytes.get());
}

ScanResult::ScanResult(const std::optional<Bytes>& advertising, const std::optional<Bytes>& scanResponse)
{
    m_info.remote_address = m_address.data();
    m_info.rssi = -50;
    m_info.adv_data = ExactCopy(advertising);
    m_info.adv_data_len = SizeOf(advertising);
    m_info.scan_data = ExactCopy(scanResponse);
    m_info.scan_data_len = SizeOf(scanResponse);
}

ScanResult::~ScanResult()
{
    std::free(m_info.adv_data);
    std::free(m_info.scan_data);
}

}  // namespace lyn::test
