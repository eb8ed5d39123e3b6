// SPDX-License-Identifier: Apache-2.0
#include "checks.h"

#include <glib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "Codes.h"
#include "bluez/Adapter.h"
#include "bluez/Bluez.h"
#include "bus/Bus.h"
#include "settings/Defaults.h"
#include "settings/SettingsStore.h"
#include "wifi/AccessPoint.h"
#include "wifi/DirectAddress.h"

namespace lynctl {

namespace {

namespace fs = std::filesystem;
using namespace lyn::linux_platform;

constexpr int kWantedMtu = 256;
constexpr int kNetRaw = 13;  // the bit of CAP_NET_RAW
constexpr const char* kSettings = "settings";

std::string ContentOf(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string FirstLineOf(const fs::path& file)
{
    const std::string content = ContentOf(file);
    return content.substr(0, content.find('\n'));
}

Check CheckBus(const Bus* bus)
{
    if (bus == nullptr) {
        return {"system bus", Level::problem, "cannot be reached", "sudo systemctl start dbus"};
    }
    return {"system bus", Level::good, "answers", ""};
}

Check CheckBluetoothd(const Bus& bus)
{
    constexpr const char* kName = "bluetoothd";
    const Reply reply = bus.CallNow(AllObjects(), nullptr);
    if (reply.Ok()) {
        return {kName, Level::good, "runs", ""};
    }
    switch (CodeOf(*reply.error)) {
    case kAdapterOff:
        return {kName, Level::problem, "does not run", "sudo systemctl start bluetooth"};
    case kRefused:
        return {kName, Level::problem, "does not let this user in",
                "sudo usermod -aG bluetooth $USER, and log in again; or run as a system service"};
    case kNoAnswer:
        return {kName, Level::problem, "does not answer", "sudo systemctl restart bluetooth"};
    default:
        return {kName, Level::problem, reply.error->name + ": " + reply.error->message,
                "sudo systemctl restart bluetooth"};
    }
}

/// False when bluetoothd says that the adapter cannot be a central, which is what scans and connects. Old ones do
/// not say anything.
bool DoesLowEnergy(const Bus& bus, const std::string& adapterPath)
{
    const Reply reply =
        bus.CallNow(BluezMethod(adapterPath, kProperties, "Get"), g_variant_new("(ss)", kAdapter, "Roles"));
    if (!reply.Ok() || !g_variant_is_of_type(reply.values.get(), G_VARIANT_TYPE("(v)"))) {
        return true;
    }
    const Variant boxed(g_variant_get_child_value(reply.values.get(), 0));
    const Variant roles(g_variant_get_variant(boxed.get()));
    if (!g_variant_is_of_type(roles.get(), G_VARIANT_TYPE_STRING_ARRAY)) {
        return true;
    }
    const std::unique_ptr<const char*, void (*)(gpointer)> names(g_variant_get_strv(roles.get(), nullptr),
                                                                 &g_free);
    return g_strv_contains(names.get(), "central") != FALSE;
}

Check CheckAdapter(const Bus& bus, const AdapterStatus& adapter)
{
    constexpr const char* kAnother = "plug in a Bluetooth adapter that does Low Energy";
    if (!adapter.path.empty()) {
        const std::string found = adapter.path.substr(adapter.path.rfind('/') + 1) + ", " + adapter.address;
        return DoesLowEnergy(bus, adapter.path)
                   ? Check{"adapter", Level::good, found, ""}
                   : Check{"adapter", Level::problem, found + ", does no Low Energy", kAnother};
    }
    const char* const asked = std::getenv("LYN_BT_ADAPTER");
    if (asked != nullptr && *asked != '\0') {
        return {"adapter", Level::problem,
                std::string("LYN_BT_ADAPTER asks for ") + asked + ", which is not there", "unset LYN_BT_ADAPTER"};
    }
    return {"adapter", Level::problem, "there is none", kAnother};
}

/// "soft" or "hard" when a switch of the machine blocks Bluetooth.
std::optional<std::string> BluetoothBlock(const fs::path& switches)
{
    std::error_code error;
    for (fs::directory_iterator entry(switches, error), end; !error && entry != end; entry.increment(error)) {
        if (FirstLineOf(entry->path() / "type") != "bluetooth") {
            continue;
        }
        for (const char* const kind : {"hard", "soft"}) {
            if (FirstLineOf(entry->path() / kind) == "1") {
                return kind;
            }
        }
    }
    return std::nullopt;
}

Check CheckPower(const AdapterStatus& adapter, const fs::path& switches)
{
    if (adapter.powered) {
        return {"power", Level::good, "the adapter is on", ""};
    }
    const auto block = BluetoothBlock(switches);
    if (block == "hard") {
        return {"power", Level::problem, "a switch of the machine keeps Bluetooth off", "turn that switch on"};
    }
    if (block == "soft") {
        return {"power", Level::problem, "Bluetooth is blocked", "rfkill unblock bluetooth"};
    }
    return {"power", Level::problem, "the adapter is off", "bluetoothctl power on"};
}

Check CheckRights(const fs::path& process)
{
    std::istringstream status(ContentOf(process));
    std::uint64_t effective = 0;
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("CapEff:", 0) == 0) {
            effective = std::strtoull(line.c_str() + std::string("CapEff:").size(), nullptr, 16);
        }
    }
    if ((effective >> kNetRaw & 1U) != 0) {
        return {"rights", Level::good, "may listen to advertisements (CAP_NET_RAW)", ""};
    }
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    return {"rights", Level::note, "without CAP_NET_RAW names and markers of phones arrive mixed",
            "sudo setcap cap_net_raw+ep " + self.string()};
}

Check CheckMtu(const fs::path& mainConf)
{
    const int mtu = ExchangeMtuIn(ContentOf(mainConf));
    if (mtu == 0) {
        return {"MTU", Level::good, "bluetoothd's own (517)", ""};
    }
    const std::string found = mainConf.string() + " says ExchangeMTU = " + std::to_string(mtu);
    if (mtu >= kWantedMtu) {
        return {"MTU", Level::good, found, ""};
    }
    return {"MTU", Level::note, found + ": messages take several writes",
            "set ExchangeMTU = 256 in the section [GATT] and restart bluetoothd"};
}

Check CheckAccessPoint()
{
    const auto found = FindConnectedAccessPoint();
    if (!found) {
        return {"access point", Level::note, "wpa_supplicant tells of no connection: channel 1 is offered",
                "sudo systemctl start wpa_supplicant (with its D-Bus interface, -u) and connect"};
    }
    return {"access point", Level::good, found->bssid + ", " + std::to_string(found->frequency) + " MHz", ""};
}

Check CheckDirectAddress()
{
    try {
        return {"Wi-Fi Direct", Level::good, ReadDirectAddress(), ""};
    } catch (const std::exception& error) {
        return {
            "Wi-Fi Direct", Level::problem, std::string("no address, so no message can be built: ") + error.what(),
            "start wpa_supplicant with ctrl_interface=DIR=/run/wpa_supplicant, and join the group of that folder"};
    }
}

/// How far a path leads: the deepest folder that is there, and the first one that is missing below it, if any is.
struct Reach {
    fs::path there;
    fs::path missing;
};

Reach ReachOf(const fs::path& folder)
{
    std::error_code error;
    Reach reach{fs::absolute(folder, error), {}};
    while (!fs::exists(reach.there, error) && reach.there.has_relative_path()) {
        reach.missing = reach.there;
        reach.there = reach.there.parent_path();
    }
    return reach;
}

/// What keeps a setting from being written, and what mends that; none when nothing does.
std::optional<Check> WhatKeepsFromWriting(const SettingsStore& store, const char* key)
{
    const Reach reach = ReachOf(store.FileOf(key).parent_path());
    const std::string there = reach.there.string();
    std::error_code error;
    if (!fs::is_directory(there, error)) {
        return Check{kSettings, Level::problem, there + " is no folder", "mv " + there + " " + there + ".old"};
    }
    if (::access(there.c_str(), W_OK) != 0) {
        return Check{kSettings, Level::problem, there + " cannot be written",
                     reach.missing.empty() ? "sudo chown -R $USER " + there
                                           : "sudo install -d -o $USER " + reach.missing.string()};
    }
    return std::nullopt;
}

/// The same for reading it: a value that is none, or of another kind than its default.
std::optional<Check> WhatIsWrongWith(const SettingsStore& store, const char* key)
{
    const std::string mend = std::string("lynctl settings set ") + key + " VALUE";
    try {
        const auto value = store.Read(key);
        const auto wanted = DefaultOf(key);
        if (value && wanted && value->index() != wanted->index()) {
            const bool text = std::holds_alternative<std::string>(*wanted);
            return Check{kSettings, Level::problem, std::string(key) + " holds no " + (text ? "text" : "number"),
                         mend + (text ? " --text" : "")};
        }
    } catch (const std::exception& error) {
        return Check{kSettings, Level::problem, error.what(), mend};
    }
    return std::nullopt;
}

Check CheckSettings()
{
    const auto folders = SettingsFolders::FromEnvironment();
    const SettingsStore store(folders);
    for (const char* const key :
         {"db/menu/network/devicename/tv_name", "memory/menu/network/screenmirroring/p2p_listen_channel"}) {
        for (const auto look : {WhatKeepsFromWriting, WhatIsWrongWith}) {
            if (auto problem = look(store, key)) {
                return *problem;
            }
        }
    }
    return {kSettings, Level::good, folders.state.string() + ", " + folders.runtime.string(), ""};
}

}  // namespace

int ExchangeMtuIn(const std::string& mainConf)
{
    GKeyFile* const file = g_key_file_new();
    int mtu = 0;
    if (g_key_file_load_from_data(file, mainConf.data(), mainConf.size(), G_KEY_FILE_NONE, nullptr) != FALSE) {
        mtu = g_key_file_get_integer(file, "GATT", "ExchangeMTU", nullptr);
    }
    g_key_file_unref(file);
    return mtu;
}

std::vector<Check> CheckMachine(const Places& places)
{
    const auto bus = Bus::System();
    std::vector<Check> checks = {CheckBus(bus.get())};
    if (bus != nullptr) {
        checks.push_back(CheckBluetoothd(*bus));
    }
    // Whoever cannot ask bluetoothd knows nothing of its adapters.
    if (checks.back().level == Level::good) {
        const AdapterStatus adapter = Adapter::Instance().Read();
        checks.push_back(CheckAdapter(*bus, adapter));
        if (!adapter.path.empty()) {
            checks.push_back(CheckPower(adapter, places.switches));
        }
    }
    checks.push_back(CheckRights(places.process));
    checks.push_back(CheckMtu(places.mainConf));
    for (const auto check : {CheckAccessPoint, CheckDirectAddress, CheckSettings}) {
        checks.push_back(check());
    }
    return checks;
}

}  // namespace lynctl
