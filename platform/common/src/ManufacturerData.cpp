// SPDX-License-Identifier: Apache-2.0
#include "ManufacturerData.h"

#include <cstdlib>
#include <cstring>

namespace lyn::platform {

std::optional<ManufacturerDataView> FindManufacturerData(std::span<const std::uint8_t> packet)
{
    while (!packet.empty()) {
        const std::size_t length = packet[0];
        if (length == 0 || length >= packet.size()) {
            return std::nullopt;  // padding up to the end, or a lie
        }
        if (packet[1] == kManufacturerDataType) {
            if (length < 3) {
                return std::nullopt;
            }
            const auto company = static_cast<std::uint16_t>(packet[2] | packet[3] << 8);
            return ManufacturerDataView{company, packet.subspan(4, length - 3)};
        }
        packet = packet.subspan(length + 1);
    }
    return std::nullopt;
}

std::span<const std::uint8_t> PacketOf(const bt_adapter_le_device_scan_result_info_s& info,
                                       bt_adapter_le_packet_type_e type)
{
    const bool advertising = type == BT_ADAPTER_LE_PACKET_ADVERTISING;
    const char* data = advertising ? info.adv_data : info.scan_data;
    const int length = advertising ? info.adv_data_len : info.scan_data_len;
    if (data == nullptr || length <= 0) {
        return {};
    }
    return {reinterpret_cast<const std::uint8_t*>(data), static_cast<std::size_t>(length)};
}

char* CopyWithNul(std::span<const std::uint8_t> bytes)
{
    auto* copy = static_cast<char*>(std::malloc(bytes.size() + 1));
    if (copy == nullptr) {
        return nullptr;
    }
    if (!bytes.empty()) {
        std::memcpy(copy, bytes.data(), bytes.size());
    }
    copy[bytes.size()] = '\0';
    return copy;
}

}  // namespace lyn::platform
