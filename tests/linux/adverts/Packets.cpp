// SPDX-License-Identifier: Apache-2.0
#include "Packets.h"

namespace lyn::linux_platform::test {

namespace {

void Append(Bytes& bytes, const Bytes& more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

std::uint8_t Byte(std::size_t value)
{
    return static_cast<std::uint8_t>(value);
}

Bytes DeviceBytes(const Report& report)
{
    return {report.addressType, Byte(static_cast<std::size_t>(report.device)), 0, 0, 0, 0, 0xC0};
}

Bytes Event(std::uint8_t what, std::size_t count, const Bytes& reports)
{
    Bytes event{kHciEventPacket, kLeMetaEvent, Byte(reports.size() + 2), what, Byte(count)};
    Append(event, reports);
    return event;
}

}  // namespace

std::string Address(int device)
{
    return TextOf(Device(device));
}

DeviceAddress Device(int device, std::uint8_t type)
{
    return {type, {static_cast<std::uint8_t>(device), 0, 0, 0, 0, 0xC0}};
}

Bytes LegacyEvent(const std::vector<Report>& reports)
{
    Bytes all;
    for (const Report& report : reports) {
        all.push_back(Byte(report.eventType));
        Append(all, DeviceBytes(report));
        all.push_back(Byte(report.data.size()));
        Append(all, report.data);
        all.push_back(static_cast<std::uint8_t>(report.rssi));
    }
    return Event(kAdvertisingReport, reports.size(), all);
}

Bytes ExtendedEvent(const std::vector<Report>& reports)
{
    Bytes all;
    for (const Report& report : reports) {
        all.push_back(Byte(report.eventType & 0xFF));
        all.push_back(Byte(report.eventType >> 8));
        Append(all, DeviceBytes(report));
        Append(all, {0x01, 0x00, report.set, 0x7F, static_cast<std::uint8_t>(report.rssi), 0, 0});
        Append(all, {0, 0, 0, 0, 0, 0, 0, Byte(report.data.size())});
        Append(all, report.data);
    }
    return Event(kExtendedAdvertisingReport, reports.size(), all);
}

Bytes Manufacturer(unsigned company, const Bytes& data)
{
    return Joined({Byte(data.size() + 3), 0xFF, Byte(company & 0xFF), Byte(company >> 8)}, data);
}

Bytes Joined(Bytes head, const Bytes& tail)
{
    Append(head, tail);
    return head;
}

Bytes PhoneData(char letter)
{
    const Bytes id(22, static_cast<std::uint8_t>(letter));
    return Joined({0x02, 0x01, 0x06}, Manufacturer(117, Joined({0x01, 25}, id)));
}

Bytes NameData(const std::string& name)
{
    return Manufacturer(117, Joined({0x01, 25}, Bytes(name.begin(), name.end())));
}

}  // namespace lyn::linux_platform::test
