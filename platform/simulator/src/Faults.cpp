// SPDX-License-Identifier: Apache-2.0
#include "Faults.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace lyn::simulator {

namespace {

constexpr std::array<std::string_view, 48> kFunctions = {
    "bt_product_init",
    "bt_product_deinit",
    "bt_adapter_get_state",
    "bt_adapter_set_state_changed_cb",
    "bt_adapter_unset_state_changed_cb",
    "bt_adapter_get_address",
    "bt_adapter_le_enable_le_scan_performance_boost",
    "bt_adapter_le_set_scan_mode",
    "bt_adapter_le_set_customized_scan_mode_with_scan_type",
    "bt_adapter_le_start_scan",
    "bt_adapter_le_stop_scan",
    "bt_adapter_le_get_scan_result_manufacturer_data",
    "bt_gatt_set_connection_state_changed_cb",
    "bt_gatt_unset_connection_state_changed_cb",
    "bt_gatt_connect",
    "bt_gatt_disconnect",
    "bt_gatt_client_create",
    "bt_gatt_client_destroy",
    "bt_gatt_client_get_service",
    "bt_gatt_service_get_characteristic",
    "bt_gatt_client_set_characteristic_value_changed_cb",
    "bt_gatt_client_unset_characteristic_value_changed_cb",
    "bt_gatt_set_value",
    "bt_gatt_client_write_value",
    "bt_gatt_client_set_att_mtu_changed_cb",
    "bt_gatt_client_unset_att_mtu_changed_cb",
    "bt_gatt_client_request_att_mtu_change",
    "bt_gatt_characteristic_get_service",
    "bt_gatt_get_uuid",
    "wifi_initialize",
    "wifi_deinitialize",
    "wifi_get_connected_ap",
    "wifi_ap_get_bssid",
    "wifi_ap_get_frequency",
    "wifi_direct_initialize",
    "wifi_direct_deinitialize",
    "wifi_direct_get_mac_address",
    "vconf_set_int",
    "vconf_get_int",
    "vconf_get_str",
    "device_power_get_state",
    "device_power_subscribe_poweroff_event",
    "device_power_unsubscribe_poweroff_event",
    "device_power_subscribe_ambient_poweroff",
    "device_power_unsubscribe_ambient_poweroff",
    "system_info_get_custom_int",
    "platform_file_path",
    "platform_kmsg_open",
};

constexpr std::array<std::string_view, 6> kTextFunctions = {
    "bt_adapter_get_address", "bt_adapter_le_get_scan_result_manufacturer_data",
    "bt_gatt_get_uuid",       "wifi_ap_get_bssid",
    "vconf_get_str",          "wifi_direct_get_mac_address",
};

template <std::size_t Size>
void CheckFunction(const std::array<std::string_view, Size>& known, const std::string& function, int nth)
{
    if (std::find(known.begin(), known.end(), function) == known.end()) {
        throw std::invalid_argument("no such function of the platform for this fault: " + function);
    }
    if (nth < 0) {
        throw std::invalid_argument("a call's number is 1 or more, or 0 for every call");
    }
}

}  // namespace

void Faults::Fail(const std::string& function, int code, int nth)
{
    CheckFunction(kFunctions, function, nth);
    m_failures.push_back({function, code, nth});
}

void Faults::FailAny(int code, int nth)
{
    if (nth < 0) {
        throw std::invalid_argument("a call's number is 1 or more, or 0 for every call");
    }
    m_failures.push_back({{}, code, nth});
}

void Faults::GiveNull(const std::string& function, int nth)
{
    CheckFunction(kTextFunctions, function, nth);
    m_nulls.push_back({function, 0, nth});
}

void Faults::Clear()
{
    m_failures.clear();
    m_nulls.clear();
}

std::optional<int> Faults::DrawFailure(std::string_view function)
{
    return Draw(m_failures, function);
}

bool Faults::DrawNull(std::string_view function)
{
    return Draw(m_nulls, function).has_value();
}

std::optional<int> Faults::Draw(std::vector<Fault>& faults, std::string_view function)
{
    std::optional<int> drawn;
    for (auto fault = faults.begin(); fault != faults.end();) {
        const bool concerns =
            fault->function.empty() ? function != "platform_kmsg_open" : fault->function == function;
        const bool every = fault->nth == 0;
        if (!concerns || (!every && --fault->nth > 0)) {
            ++fault;
            continue;
        }
        drawn = drawn.value_or(fault->code);
        fault = every ? fault + 1 : faults.erase(fault);
    }
    return drawn;
}

}  // namespace lyn::simulator
