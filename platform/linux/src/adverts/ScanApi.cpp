// SPDX-License-Identifier: Apache-2.0
//
// Scanning. bluetoothd chooses mode, interval and window itself: it offers no way to set them for one process.
// (Who has CAP_NET_ADMIN can change an adapter's defaults over the management socket; that would be for every
// program of the system, and for longer than this one lives.)
#include "Codes.h"
#include "ManufacturerData.h"
#include "PlatformApi.h"
#include "adverts/Scan.h"

using namespace lyn::linux_platform;
namespace platform = lyn::platform;

int bt_adapter_le_enable_le_scan_performance_boost(bool /*enable*/)
{
    return 0;
}

int bt_adapter_le_set_scan_mode(int mode)
{
    return mode < 0 ? kInvalidArgument : 0;
}

int bt_adapter_le_set_customized_scan_mode_with_scan_type(int type, float interval_ms, float window_ms)
{
    const bool good = (type == 0 || type == 1) && window_ms > 0 && window_ms <= interval_ms;
    return good ? 0 : kInvalidArgument;
}

int bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void* user_data)
{
    return callback != nullptr ? Scan::Instance().Start(callback, user_data) : kInvalidArgument;
}

int bt_adapter_le_stop_scan(void)
{
    return Scan::Instance().Stop();
}

int bt_adapter_le_get_scan_result_manufacturer_data(const bt_adapter_le_device_scan_result_info_s* info,
                                                    bt_adapter_le_packet_type_e packet_type, int* company,
                                                    char** data, int* length)
{
    const int type = static_cast<int>(packet_type);
    if (info == nullptr || company == nullptr || data == nullptr || length == nullptr || type < 0 || type > 1) {
        return kInvalidArgument;
    }
    const auto found = platform::FindManufacturerData(platform::PacketOf(*info, packet_type));
    if (!found) {
        return kMalformed;
    }
    char* const copy = platform::CopyWithNul(found->data);
    if (copy == nullptr) {
        return kOutOfMemory;
    }
    *company = found->company;
    *data = copy;
    *length = static_cast<int>(found->data.size());
    return 0;
}
