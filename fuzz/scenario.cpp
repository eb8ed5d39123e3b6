// SPDX-License-Identifier: Apache-2.0
//
// A scenario file of the simulator. It is refused with one line that names the place, and the room is as
// before; or it is taken, keeps the documented limits, and can be scanned.
#include <glib.h>

#include <algorithm>
#include <set>

#include "Room.h"

namespace {

using namespace lyn;
using fuzz::Require;

constexpr int A_DAY = 86'400'000;

bool IsTime(int ms)
{
    return ms >= 0 && ms <= A_DAY;
}

void RequireDocumentedPhones()
{
    std::set<std::string> addresses;
    for (const simulator::Phone& phone : simulator::Phones()) {
        Require(phone.address.size() == 17 && addresses.insert(phone.address).second, "each phone has an address");
        Require(IsTime(phone.intervalMs) && IsTime(phone.joinsAtMs) && IsTime(phone.leavesAtMs.value_or(0)) &&
                    IsTime(phone.mtuDelayMs) && IsTime(phone.disconnectDelayMs) &&
                    IsTime(phone.dropAfterConnectMs.value_or(0)),
                "a time is a day at most");
        Require(std::all_of(phone.connects.begin(), phone.connects.end(),
                            [](const auto& outcome) { return IsTime(outcome.delayMs); }),
                "a connect takes a day at most");
        Require(phone.limit >= 0 && phone.rssiJitter >= 0, "counts are not negative");
    }
}

void RequireError(const std::string& what, const std::string& text)
{
    const std::string file = "room.json:";
    Require(what.rfind(file, 0) == 0, "an error names the file");
    Require(what.find('\n') == std::string::npos, "an error is one line");
    const std::size_t digits = what.find_first_not_of("0123456789", file.size()) - file.size();
    Require(digits >= 1 && digits <= 5, "an error names the line");
    const auto lines = 1 + std::count_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; });
    const int line = std::stoi(what.substr(file.size(), digits));
    Require(line >= 1 && line <= lines, "the named line exists");
    const std::vector<simulator::Phone> phones = simulator::Phones();
    Require(phones.size() == 1 && phones.front().address == fuzz::ADDRESS, "a bad scenario changes nothing");
}

void Scan()
{
    constexpr int iterations = 30;
    lyn_service_h handle = nullptr;
    for (const char* service : {"mirroring", "nodlink", "kov"}) {
        if (lyn_create_service(&handle, service, nullptr, nullptr) != LYN_ERROR_NONE) {
            continue;  // Bluetooth is off.
        }
        lyn_start_scan(handle, nullptr, nullptr);
        for (int i = 0; i < iterations && g_main_context_iteration(nullptr, FALSE) != FALSE; ++i) {}
        lyn_stop_scan(handle);
        Require(lyn_destroy_service(handle) == LYN_ERROR_NONE, "a service is destroyed");
        handle = nullptr;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = fuzz::Input(data, size).TakeRest();
    const fuzz::Tv tv;
    simulator::AddPhone(simulator::MirroringPhone(fuzz::ADDRESS, "Phone", fuzz::UNIQUE_ID));
    try {
        simulator::LoadScenarioText(text, "room.json");
    } catch (const simulator::ScenarioError& e) {
        RequireError(e.what(), text);
        return 0;
    }
    RequireDocumentedPhones();
    Scan();
    return 0;
}
