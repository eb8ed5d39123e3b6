// SPDX-License-Identifier: Apache-2.0
//
// Packets and scan results for the tests of the scanners.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "lyn_platform/bluetooth.h"
#include "lyn_simulator/simulator.h"

namespace lyn::test {

using simulator::Bytes;

constexpr std::uint16_t COMPANY = 117;
constexpr std::uint8_t MIRRORING_MARKER = 25;
constexpr std::uint8_t KOV_MARKER = 23;
constexpr const char* ADDRESS = "AA:BB:CC:DD:EE:01";
constexpr const char* UNIQUE_ID = "0123456789abcdefghijkl";

/// The bytes of a text.
Bytes BytesOf(const std::string& text);
/// Two leading bytes, the second of which is the marker, and what follows them.
Bytes Marked(std::uint8_t marker, const std::string& rest);
/// An advertising packet: flags, then manufacturer data.
Bytes Advertising(const Bytes& data, std::uint16_t company = COMPANY);
/// A scan response with the name behind two bytes.
Bytes NameResponse(const std::string& name, std::uint16_t company = COMPANY);
/// 14 bytes of a NodLink phone that can mirror and speaks version 3.0.
Bytes NodLinkData();

/// Bytes on the heap, so that a reader who goes one byte too far is caught.
class ExactBytes {
public:
    explicit ExactBytes(const Bytes& bytes);

    const char* Data() const { return m_bytes.get(); }
    unsigned int Size() const { return static_cast<unsigned int>(m_size); }

private:
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size;
};

/// A scan result in buffers of exactly the packets' sizes.
class ScanResult {
public:
    explicit ScanResult(const std::optional<Bytes>& advertising,
                        const std::optional<Bytes>& scanResponse = std::nullopt);
    ~ScanResult();
    ScanResult(const ScanResult&) = delete;
    ScanResult& operator=(const ScanResult&) = delete;

    bt_adapter_le_device_scan_result_info_s* Info() { return &m_info; }

private:
    std::string m_address = ADDRESS;
    bt_adapter_le_device_scan_result_info_s m_info{};
};

}  // namespace lyn::test
