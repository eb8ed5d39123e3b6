// SPDX-License-Identifier: Apache-2.0
#include "faults/Expectations.h"

#include <algorithm>
#include <utility>

#include "faults/Scenarios.h"

namespace lyn::test {
namespace {

constexpr int kFailure = -77;  // means nothing anywhere
constexpr int kAlreadyOpen = -38;
constexpr int kReportedAsSuccess = static_cast<int>(0xFE400103);
constexpr int kHciDisconnection = static_cast<int>(0xFE400104);
constexpr int kNoScanRunning = static_cast<int>(0xFE400105);
constexpr int kConnectionTimeout = static_cast<int>(0xC0000001);

constexpr const char* kAsBefore = "=";
constexpr const char* kTimeOut = "(10 s) ";

/// A row says what changes when a call fails. The first row that fits counts.
struct Row {
    const char* function;
    const char* argument = "";     ///< part of the arguments
    const char* step = "";         ///< "": any
    std::optional<int> code = {};  ///< none: any, and a null text
    Lines instead = {};            ///< steps that say something else; none: the story goes on
    unsigned mayLeave = kNothing;
    int nthInStep = 0;  ///< 0: any
};

/// Every step but the creation gets the same answer.
Lines EveryCallSays(const std::string& created, const std::string& code)
{
    Lines lines = {{"create", created},   {"phone", ""},         {"result", ""},         {"until connected", ""},
                   {"until written", ""}, {"bluetooth off", ""}, {"bluetooth lost", ""}, {"bluetooth on", ""}};
    for (const char* step : {"scan", "stop", "advertise", "end advertise", "request", "version", "type"}) {
        lines.push_back({step, code});
    }
    return lines;
}

Lines NoParts()
{
    return EveryCallSays("0", "2");
}

Lines NoService()
{
    Lines lines = EveryCallSays("2", "4");
    lines.push_back({"name", "UnknownErr"});
    lines.push_back({"destroy", "4"});
    return lines;
}

const Lines kRefused = {{"request", "6 READY"}, {"result", ""}};
const Lines kGattFail = {{"result", "READY result 1"}};
const Lines kGattFailInTime = {{"result", "(10 s) READY result 1"}};
const Lines kNoScan = {{"scan", "6"}, {"phone", ""}};
const Lines kNoAdapterReports = {
    {"bluetooth off", ""}, {"bluetooth lost", "READY result 1"}, {"bluetooth on", ""}};
const Lines kSecondPhone = {{"phone", "second phone"}};

const std::vector<Row>& Table()
{
    static const std::vector<Row> table = {
        // The service comes into being, and goes.
        {"bt_product_init", "", "create", {}, NoParts()},
        {"device_power_get_state", "", "create", 0},
        {"device_power_get_state", "", "create", 2},
        {"device_power_get_state", "", "create", 4},
        {"device_power_get_state", "", "create", {}, NoService()},
        {"bt_adapter_get_state", "", "create", {}, NoService()},
        {"device_power_subscribe_poweroff_event", "", "create"},
        {"device_power_subscribe_ambient_poweroff", "", "create"},
        {"bt_adapter_set_state_changed_cb", "", "create", {}, kNoAdapterReports},
        {"device_power_unsubscribe_poweroff_event", "", "", {}, {}, kRegistration},
        {"device_power_unsubscribe_ambient_poweroff", "", "", {}, {}, kRegistration},
        {"bt_adapter_unset_state_changed_cb", "", "", {}, {}, kRegistration},
        {"bt_product_deinit", "", "", {}, {}, kBluetooth},
        // The scan and the advertisement.
        {"bt_adapter_le_set_scan_mode", "", "scan", {}, kNoScan},
        {"bt_adapter_le_set_customized_scan_mode_with_scan_type", "", "scan"},
        {"bt_adapter_le_start_scan", "", "scan", {}, kNoScan},
        {"bt_adapter_le_get_scan_result_manufacturer_data", "", "phone", {}, kSecondPhone},
        {"bt_adapter_le_stop_scan", "", "", kNoScanRunning, {}, kScan},
        {"bt_adapter_le_stop_scan", "", "stop", {}, {{"stop", "6"}}, kScan},
        {"bt_adapter_le_stop_scan", "", "request", {}, {{"request", "0 REQUESTING"}}, kScan},
        {"bt_adapter_le_enable_le_scan_performance_boost", "", "", {}, {}, kBoost},
        {"vconf_get_int", "memory/wifi/frequency"},
        {"vconf_get_int", "memory/acm/networkspeaker_status"},
        {"vconf_set_int", "_trigger", "advertise", {}, {{"advertise", "6"}}},
        {"vconf_set_int", "_trigger", "end advertise", {}, {{"end advertise", "6"}}},
        {"vconf_set_int", "_trigger", "request", {}, {{"request", "0 REQUESTING"}}, kScan},
        // The link.
        {"bt_gatt_set_connection_state_changed_cb", "", "request", {}, kRefused},
        {"bt_gatt_connect", "", "request", {}, kRefused},
        {"bt_gatt_connect", "", "", {}, kGattFail},
        {"bt_gatt_client_create", "", "", {}, kGattFailInTime},
        {"bt_gatt_client_get_service", "", "", {}, kGattFail},
        {"bt_gatt_service_get_characteristic", "", "", {}, kGattFail},
        {"bt_gatt_client_set_characteristic_value_changed_cb", "", "", {}, kGattFail},
        {"bt_gatt_client_set_att_mtu_changed_cb", "", "", {}, kGattFailInTime},
        {"bt_gatt_client_request_att_mtu_change", "", "", {}, kGattFailInTime},
        {"bt_gatt_client_unset_att_mtu_changed_cb"},
        {"bt_gatt_client_unset_characteristic_value_changed_cb"},
        {"bt_gatt_client_destroy", "", "", {}, {}, kClient | kRegistration},
        {"bt_gatt_disconnect", "", "", {}, {}, kLink},
        {"bt_gatt_unset_connection_state_changed_cb", "", "", {}, {}, kRegistration},
        // The message.
        {"wifi_direct_initialize", "", "", {}, kGattFail},
        {"wifi_direct_get_mac_address", "", "", {}, kGattFail},
        {"wifi_direct_deinitialize", "", "", {}, {}, kWifiDirect},
        {"bt_adapter_get_address", "", "", {}, kGattFail},
        {"vconf_get_int", "p2p_listen_channel", "", {}, kGattFail},
        {"wifi_initialize", "", "", kAlreadyOpen},
        {"wifi_initialize", "", "", {}, kGattFail},
        {"wifi_get_connected_ap", "", "", {}, {}, kWifi},
        {"wifi_ap_get_bssid", "", "", {}, kGattFail},
        {"wifi_ap_get_frequency", "", "", {}, kGattFail},
        {"wifi_deinitialize", "", "", {}, {}, kWifi},
        {"vconf_get_str", "tv_name", "", {}, kGattFail},
        {"system_info_get_custom_int", "", "", {}, kGattFail},
        {"platform_file_path", "/opt/etc/.lyn_appid"},
        {"platform_file_path", "/apps_rw/"},
        {"platform_file_path", "meta_data_nodlink.json", "", {}, kGattFail},
        // Its way to the phone, and what follows.
        {"bt_gatt_set_value", "", "", {}, {{"result", "(10 s) READY result 1"}, {"type", kAsBefore}}, kNothing, 2},
        {"bt_gatt_set_value", "", "", {}, kGattFailInTime},
        {"bt_gatt_client_write_value",
         "",
         "",
         {},
         {{"result", "(10 s) READY result 1"}, {"type", kAsBefore}},
         kNothing,
         2},
        {"bt_gatt_client_write_value", "", "", {}, kGattFailInTime},
        {"vconf_set_int", "mirroring_mode", "", {}, {{"stored", "none"}}},
        {"platform_kmsg_open"},
    };
    return table;
}

bool Fits(const Row& row, const PlatformFault& fault, const std::string& step)
{
    const auto isOrAny = [](const std::string& wanted, const std::string& is) {
        return wanted.empty() || wanted == is;
    };
    return fault.function == row.function && fault.arguments.find(row.argument) != std::string::npos &&
           isOrAny(row.step, step) && (!row.code || row.code == fault.code) &&
           (row.nthInStep == 0 || row.nthInStep == fault.nthInStep);
}

/// The first line of a step from here on, or null.
Line* Find(Lines& lines, std::size_t from, const std::string& step)
{
    const auto found = std::find_if(lines.begin() + static_cast<std::ptrdiff_t>(from), lines.end(),
                                    [&](const Line& line) { return line.step == step; });
    return found != lines.end() ? &*found : nullptr;
}

/// What an exchange leaves behind that has not come to its good end.
void AddConsequences(Lines& instead)
{
    const auto concerns = [&](const char* step) {
        return std::any_of(instead.begin(), instead.end(), [&](const Line& line) { return line.step == step; });
    };
    if (!concerns("result")) {
        return;
    }
    instead.push_back({"stored", "none"});
    if (!concerns("type")) {
        instead.push_back({"type", "0 type 0"});
    }
}

void Replace(Lines& lines, std::size_t from, const Line& change)
{
    if (change.step == "result") {
        // A story that goes on before its result may hear one that comes at once.
        Line* waiting = Find(lines, from, "until written");
        if (waiting != nullptr && change.said.rfind(kTimeOut, 0) != 0) {
            waiting->said = change.said;
        }
    }
    Line* line = Find(lines, from, change.step);
    const bool hasNoResult = change.step == "result" && line != nullptr && line->said.empty();
    if (line != nullptr && !hasNoResult && change.said != kAsBefore) {
        line->said = change.said;
    }
}

}  // namespace

std::vector<std::optional<int>> FaultsOf(const std::string& function)
{
    const auto isOne = [&](std::initializer_list<const char*> names) {
        return std::any_of(names.begin(), names.end(), [&](const char* name) { return function == name; });
    };
    if (isOne({"device_power_get_state"})) {
        return {0, 2, 4, 3, 5, -1};
    }
    if (isOne({"bt_adapter_le_stop_scan"})) {
        return {kFailure, kNoScanRunning, kReportedAsSuccess};
    }
    if (isOne({"wifi_initialize"})) {
        return {kFailure, kAlreadyOpen};
    }
    if (isOne({"bt_gatt_connect", "bt_gatt_disconnect"})) {
        return {kFailure, kReportedAsSuccess, kHciDisconnection, kConnectionTimeout};
    }
    if (isOne({"bt_adapter_get_address", "bt_adapter_le_get_scan_result_manufacturer_data", "wifi_ap_get_bssid",
               "vconf_get_str", "wifi_direct_get_mac_address"})) {
        return {kFailure, std::nullopt};
    }
    return {kFailure};
}

Expected Expect(const Lines& clean, const PlatformFault& fault)
{
    const std::string& step = clean.at(fault.line).step;
    const auto row = std::find_if(Table().begin(), Table().end(),
                                  [&](const Row& candidate) { return Fits(candidate, fault, step); });
    if (row == Table().end()) {
        return {};
    }
    Expected expected{true, clean, row->mayLeave};
    Lines instead = row->instead;
    AddConsequences(instead);
    for (const Line& change : instead) {
        Replace(expected.lines, fault.line, change);
    }
    return expected;
}

}  // namespace lyn::test
