// SPDX-License-Identifier: Apache-2.0
#include "adverts/HciReports.h"

#include <algorithm>
#include <optional>

namespace lyn::linux_platform {

namespace {

constexpr std::uint8_t kNoSet = 0xFF;
constexpr std::uint8_t kAnonymous = 0xFF;
constexpr std::size_t kAddressLength = 6;

// Bits of an extended report's event type.
constexpr unsigned kScannableBit = 0x02;
constexpr unsigned kScanResponseBit = 0x08;

/// Takes bytes from the front. What is not there is zero, and noticed at the end.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : m_left(bytes) {}

    std::span<const std::uint8_t> Take(std::size_t count)
    {
        if (count > m_left.size()) {
            m_short = true;
            m_left = {};
            return {};
        }
        const auto taken = m_left.first(count);
        m_left = m_left.subspan(count);
        return taken;
    }

    std::uint8_t Byte()
    {
        const auto taken = Take(1);
        return taken.empty() ? std::uint8_t{0} : taken[0];
    }

    int SignedByte()
    {
        const int byte = Byte();
        return byte < 0x80 ? byte : byte - 0x100;
    }

    unsigned TwoBytes()
    {
        const unsigned low = Byte();
        return low | static_cast<unsigned>(Byte()) << 8;
    }

    void Skip(std::size_t count) { Take(count); }
    bool IsShort() const { return m_short; }

private:
    std::span<const std::uint8_t> m_left;
    bool m_short = false;
};

DeviceAddress TakeDevice(Reader& reader)
{
    DeviceAddress device;
    device.type = reader.Byte();
    const auto bytes = reader.Take(kAddressLength);
    std::copy(bytes.begin(), bytes.end(), device.bytes.begin());
    return device;
}

std::optional<PacketKind> KindOf(std::uint8_t eventType)
{
    switch (eventType) {
    case 0x00:  // connectable and scannable
    case 0x02:  // scannable
        return PacketKind::scannable;
    case 0x01:  // directed
    case 0x03:  // neither connectable nor scannable
        return PacketKind::plain;
    case 0x04:
        return PacketKind::scanResponse;
    default:
        return std::nullopt;
    }
}

PacketKind ExtendedKindOf(unsigned eventType)
{
    if ((eventType & kScanResponseBit) != 0) {
        return PacketKind::scanResponse;
    }
    return (eventType & kScannableBit) != 0 ? PacketKind::scannable : PacketKind::plain;
}

std::optional<DataStatus> StatusOf(unsigned eventType)
{
    switch (eventType >> 5 & 0x03) {
    case 0:
        return DataStatus::complete;
    case 1:
        return DataStatus::unfinished;
    case 2:
        return DataStatus::truncated;
    default:
        return std::nullopt;
    }
}

std::optional<AdvertReport> TakeReport(Reader& reader)
{
    const auto kind = KindOf(reader.Byte());
    AdvertReport report;
    report.set = kNoSet;
    report.device = TakeDevice(reader);
    report.data = reader.Take(reader.Byte());
    report.rssi = reader.SignedByte();
    if (!kind) {
        return std::nullopt;
    }
    report.kind = *kind;
    return report;
}

std::optional<AdvertReport> TakeExtendedReport(Reader& reader)
{
    const unsigned eventType = reader.TwoBytes();
    const auto status = StatusOf(eventType);
    AdvertReport report;
    report.kind = ExtendedKindOf(eventType);
    report.device = TakeDevice(reader);
    reader.Skip(2);  // primary and secondary PHY
    report.set = reader.Byte();
    reader.Skip(1);  // transmit power
    report.rssi = reader.SignedByte();
    reader.Skip(2 + 1 + kAddressLength);  // periodic interval, whom it is directed to
    report.data = reader.Take(reader.Byte());
    if (!status || report.device.type == kAnonymous) {
        return std::nullopt;
    }
    report.status = *status;
    return report;
}

}  // namespace

std::vector<AdvertReport> ParseReports(std::span<const std::uint8_t> packet)
{
    Reader header(packet);
    if (header.Byte() != kHciEventPacket || header.Byte() != kLeMetaEvent) {
        return {};
    }
    Reader reader(header.Take(header.Byte()));
    const std::uint8_t what = reader.Byte();
    if (what != kAdvertisingReport && what != kExtendedAdvertisingReport) {
        return {};
    }
    std::vector<AdvertReport> reports;
    for (unsigned left = reader.Byte(); left > 0; --left) {
        const auto report = what == kAdvertisingReport ? TakeReport(reader) : TakeExtendedReport(reader);
        if (reader.IsShort()) {
            break;
        }
        if (report) {
            reports.push_back(*report);
        }
    }
    return reports;
}

}  // namespace lyn::linux_platform
