// SPDX-License-Identifier: Apache-2.0
#include "ManufacturerData.h"
#include "PlatformApi.h"
#include "PlatformCall.h"

using namespace lyn::simulator;
namespace platform = lyn::platform;

int bt_product_init(void)
{
    return Perform("bt_product_init", In(), [](PlatformCall& call) {
        if (!call.simulator.startError.empty()) {
            return kNoScenario;
        }
        ++call.simulator.adapter.productInits;
        return 0;
    });
}

int bt_product_deinit(void)
{
    return Perform("bt_product_deinit", In(), [](PlatformCall& call) {
        int& inits = call.simulator.adapter.productInits;
        inits = inits > 0 ? inits - 1 : 0;
        return 0;
    });
}

int bt_adapter_get_state(bt_adapter_state_e* state)
{
    return Perform("bt_adapter_get_state", In(), [&](PlatformCall& call) {
        if (state == nullptr) {
            return kInvalidArgument;
        }
        *state = call.simulator.adapter.state;
        call.Out(static_cast<int>(*state));
        return 0;
    });
}

int bt_adapter_set_state_changed_cb(bt_adapter_state_changed_cb callback, void* user_data)
{
    return Perform("bt_adapter_set_state_changed_cb", In(), [&](PlatformCall& call) {
        if (callback == nullptr) {
            return kInvalidArgument;
        }
        call.simulator.adapter.Register(callback, user_data);
        return 0;
    });
}

int bt_adapter_unset_state_changed_cb(void)
{
    return Perform("bt_adapter_unset_state_changed_cb", In(), [](PlatformCall& call) {
        call.simulator.adapter.registration = {};
        return 0;
    });
}

int bt_adapter_get_address(char** address)
{
    return Perform("bt_adapter_get_address", In(), [&](PlatformCall& call) {
        if (address == nullptr) {
            return kInvalidArgument;
        }
        const auto& own = call.simulator.adapter.address;
        return call.GiveText(own ? &*own : nullptr, address);
    });
}

int bt_adapter_le_enable_le_scan_performance_boost(bool enable)
{
    return Perform("bt_adapter_le_enable_le_scan_performance_boost", In(enable), [&](PlatformCall& call) {
        call.simulator.adapter.boosted = enable;
        return 0;
    });
}

int bt_adapter_le_set_scan_mode(int mode)
{
    return Perform("bt_adapter_le_set_scan_mode", In(mode),
                   [&](PlatformCall&) { return mode < 0 ? kInvalidArgument : 0; });
}

int bt_adapter_le_set_customized_scan_mode_with_scan_type(int type, float interval_ms, float window_ms)
{
    return Perform("bt_adapter_le_set_customized_scan_mode_with_scan_type", In(type, interval_ms, window_ms),
                   [&](PlatformCall&) {
                       const bool good = (type == 0 || type == 1) && window_ms > 0 && window_ms <= interval_ms;
                       return good ? 0 : kInvalidArgument;
                   });
}

int bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void* user_data)
{
    return Perform("bt_adapter_le_start_scan", In(), [&](PlatformCall& call) {
        if (callback == nullptr) {
            return kInvalidArgument;
        }
        if (!call.simulator.adapter.IsOn()) {
            return kAdapterOff;
        }
        call.simulator.radio.StartScan(callback, user_data);
        return 0;
    });
}

int bt_adapter_le_stop_scan(void)
{
    return Perform("bt_adapter_le_stop_scan", In(),
                   [](PlatformCall& call) { return call.simulator.radio.StopScan() ? 0 : kScanNotRunning; });
}

int bt_adapter_le_get_scan_result_manufacturer_data(const bt_adapter_le_device_scan_result_info_s* info,
                                                    bt_adapter_le_packet_type_e packet_type, int* company,
                                                    char** data, int* length)
{
    const int type = static_cast<int>(packet_type);
    return Perform("bt_adapter_le_get_scan_result_manufacturer_data", In(type), [&](PlatformCall& call) {
        if (info == nullptr || company == nullptr || data == nullptr || length == nullptr || type < 0 ||
            type > 1) {
            return kInvalidArgument;
        }
        const auto found = platform::FindManufacturerData(platform::PacketOf(*info, packet_type));
        if (!found) {
            return kMalformed;
        }
        char* copy = nullptr;
        if (!call.simulator.faults.DrawNull("bt_adapter_le_get_scan_result_manufacturer_data")) {
            copy = platform::CopyWithNul(found->data);
        }
        *company = found->company;
        *data = copy;
        *length = static_cast<int>(found->data.size());
        call.Out(*company, *length);
        return 0;
    });
}
