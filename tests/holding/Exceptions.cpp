// SPDX-License-Identifier: Apache-2.0
#include "holding/Exceptions.h"

#include <algorithm>
#include <initializer_list>
#include <string>

namespace lyn::test {
namespace {

bool IsOneOfThree(Work work)
{
    return work == Work::startOrStop || work == Work::request;
}

bool BeginsWithOneOf(const std::string& text, std::initializer_list<const char*> beginnings)
{
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](const char* beginning) { return text.rfind(beginning, 0) == 0; });
}

}  // namespace

const std::array<Exception, kExceptions> s_exceptions = {{
    {"inside a start scan, a stop scan or a request", "these three, of the same service",
     [](const Place& place) { return place.isInThree; },
     [](Work work, bool isOfSuccessor) { return IsOneOfThree(work) && !isOfSuccessor; }},
    {"while a state is written and reported", "these three, of the same service",
     [](const Place& place) { return place.reportsState; },
     [](Work work, bool isOfSuccessor) { return IsOneOfThree(work) && !isOfSuccessor; }},
    {"while a state is written and reported", "what moves the state from the main loop",
     [](const Place& place) { return place.reportsState; },
     [](Work work, bool) { return work == Work::movingReport; }},
    {"registering for link reports, connecting, disconnecting", "a request, of the next service too",
     IsAtLinkRegistration, [](Work work, bool) { return work == Work::request; }},
    {"at the platform's one scan, its mode and its boost", "these three, of the next service too", IsAtScan,
     [](Work work, bool) { return IsOneOfThree(work); }},
}};

bool IsAtLinkRegistration(const Place& place)
{
    return BeginsWithOneOf(place.what,
                           {"bt_gatt_set_connection_state_changed_cb", "bt_gatt_unset_connection_state_changed_cb",
                            "bt_gatt_connect", "bt_gatt_disconnect"});
}

bool IsAtScan(const Place& place)
{
    return place.isInThree &&
           BeginsWithOneOf(place.what, {"bt_adapter_le_", "vconf_get_int", "log Util.cpp SetBtPerformanceBoost",
                                        "log Util.cpp IsAcmWorkOn2_4Ghz", "log CScanner.cpp StartScan",
                                        "log CScanner.cpp StopScan", "log CPhoneScanner.cpp StartScan"});
}

bool IsCallbackBeginning(const Place& place)
{
    return BeginsWithOneOf(place.what, {"log CService.cpp OnStateChanged", "log lyn_service.cpp operator()"});
}

std::optional<std::size_t> MayWait(const Place& held, Work work, bool isOfSuccessor)
{
    for (std::size_t i = 0; i < s_exceptions.size(); ++i) {
        if (s_exceptions[i].isHeldThere(held) && s_exceptions[i].concerns(work, isOfSuccessor)) {
            return i;
        }
    }
    return std::nullopt;
}

}  // namespace lyn::test
