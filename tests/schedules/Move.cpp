// SPDX-License-Identifier: Apache-2.0
#include "schedules/Move.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace lyn::schedules {
namespace {

struct Verb {
    What what;
    const char* name;
    const char* function;
};

constexpr std::array kVerbs = {
    Verb{What::create, "create", "lyn_create_service"},
    Verb{What::destroy, "destroy", "lyn_destroy_service"},
    Verb{What::scan, "scan", "lyn_start_scan"},
    Verb{What::scanJson, "scan-json", "lyn_start_scan_with_serialization"},
    Verb{What::stop, "stop", "lyn_stop_scan"},
    Verb{What::request, "request", "lyn_request_initiating"},
    Verb{What::requestExtra, "request-extra", "lyn_request_initiating_with_extra_data"},
    Verb{What::advertise, "advertise", "lyn_start_advertise"},
    Verb{What::unadvertise, "unadvertise", "lyn_stop_advertise"},
    Verb{What::version, "version", "lyn_set_nodlink_version"},
    Verb{What::type, "type", "lyn_get_nodlink_type"},
    Verb{What::text, "text", "lyn_get_request_initiating_error_string"},
    Verb{What::iterate, "iterate", nullptr},
    Verb{What::exit, "exit", nullptr},
    Verb{What::bluetoothOff, "bluetooth-off", nullptr},
    Verb{What::bluetoothOn, "bluetooth-on", nullptr},
    Verb{What::suspend, "suspend", nullptr},
    Verb{What::ambient, "ambient", nullptr},
    Verb{What::elapse, "elapse", nullptr},
    Verb{What::loseLink, "lose-link", nullptr},
    Verb{What::channel, "channel", nullptr},
    Verb{What::fail, "fail", nullptr},
};

const Verb* Find(What what)
{
    const auto* const found =
        std::find_if(kVerbs.begin(), kVerbs.end(), [&](const Verb& verb) { return verb.what == what; });
    return found != kVerbs.end() ? found : nullptr;
}

/// The words that stand for a verb's numbers, if any do.
const std::vector<std::string>* WordsOf(What what)
{
    if (what == What::create) {
        return &ServiceNames();
    }
    return what == What::fail ? &FallibleFunctions() : nullptr;
}

bool HasNumber(What what)
{
    switch (what) {
    case What::create:
    case What::request:
    case What::requestExtra:
    case What::advertise:
    case What::version:
    case What::text:
    case What::loseLink:
    case What::channel:
    case What::fail:
        return true;
    default:
        return false;
    }
}

int NumberOf(const std::vector<std::string>& words, const std::string& word)
{
    const auto found = std::find(words.begin(), words.end(), word);
    if (found == words.end()) {
        throw std::runtime_error("not understood: " + word);
    }
    return static_cast<int>(found - words.begin());
}

int ParseNumber(What what, const std::string& word)
{
    const auto* const words = WordsOf(what);
    return words != nullptr ? NumberOf(*words, word) : std::stoi(word);
}

}  // namespace

bool IsCall(What what)
{
    return what >= What::create && what <= What::text;
}

bool IsTvMove(What what)
{
    return what >= What::bluetoothOff;
}

bool IsWork(What what)
{
    return what >= What::scan && what <= What::requestExtra;
}

const char* FunctionOf(What what)
{
    const Verb* verb = Find(what);
    return verb != nullptr && verb->function != nullptr ? verb->function : "";
}

std::string ToText(const Move& move)
{
    std::string text = move.who == 'T' ? "TV" : std::string(1, move.who);
    const Verb* verb = Find(move.what);
    if (verb == nullptr) {
        return text;
    }
    text += std::string(" ") + verb->name;
    if (HasNumber(move.what)) {
        const auto* const words = WordsOf(move.what);
        text += " " + (words != nullptr ? words->at(static_cast<std::size_t>(move.number))
                                        : std::to_string(move.number));
    }
    if (move.handle != Handle::current) {
        text += move.handle == Handle::old ? " old" : " null";
    }
    return text;
}

Move ParseMove(char who, const std::vector<std::string>& words)
{
    const auto* const verb =
        std::find_if(kVerbs.begin(), kVerbs.end(), [&](const Verb& one) { return one.name == words.at(0); });
    if (verb == kVerbs.end() || IsTvMove(verb->what) != (who == 'T')) {
        throw std::runtime_error("no such move: " + words.at(0));
    }
    Move move{who, verb->what};
    std::size_t next = 1;
    if (HasNumber(move.what)) {
        move.number = ParseNumber(move.what, words.size() > next ? words[next] : "");
        ++next;
    }
    if (words.size() > next) {
        if (!IsCall(move.what) || (words[next] != "old" && words[next] != "null")) {
            throw std::runtime_error("not understood: " + words[next]);
        }
        move.handle = words[next] == "old" ? Handle::old : Handle::null;
    }
    return move;
}

const std::vector<std::string>& ServiceNames()
{
    // Never destroyed: other threads may go on while the process ends.
    static const auto* const names =
        new std::vector<std::string>{"mirroring", "nodlink", "kov", "dummy", "unknown"};
    return *names;
}

int ServiceNumber(const std::string& name)
{
    return NumberOf(ServiceNames(), name);
}

// Calls that release something are left out: nothing sensible can follow their failure.
const std::vector<std::string>& FallibleFunctions()
{
    static const auto* const names =
        new std::vector<std::string>{"bt_gatt_connect",
                                     "bt_gatt_client_create",
                                     "bt_gatt_client_get_service",
                                     "bt_gatt_service_get_characteristic",
                                     "bt_gatt_client_set_characteristic_value_changed_cb",
                                     "bt_gatt_set_value",
                                     "bt_gatt_client_write_value",
                                     "bt_gatt_client_request_att_mtu_change",
                                     "bt_gatt_set_connection_state_changed_cb",
                                     "bt_adapter_le_start_scan",
                                     "bt_adapter_le_stop_scan",
                                     "bt_adapter_le_set_scan_mode",
                                     "bt_adapter_le_enable_le_scan_performance_boost",
                                     "bt_product_init",
                                     "bt_adapter_get_state",
                                     "wifi_direct_initialize",
                                     "vconf_set_int",
                                     "vconf_get_int",
                                     "system_info_get_custom_int"};
    return *names;
}

}  // namespace lyn::schedules
