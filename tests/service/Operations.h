// SPDX-License-Identifier: Apache-2.0
//
// The operations that the manager forwards, for tests that go through all of them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Service/ServiceManager.h"

namespace lyn::test {

struct Forwarding {
    std::string name;
    std::function<void(lyn_service_h)> call;
    /// What a FakeService is asked.
    std::string asked;
};

inline CServiceManager& Manager()
{
    return CServiceManager::GetInstance();
}

inline std::vector<Forwarding> Forwardings()
{
    const auto device = [](const lyn_device_info_t&) {};
    const auto result = [](lyn_request_initiating_result_e) {};
    return {
        {"StartScan", [=](lyn_service_h h) { Manager().StartScan(h, device); }, "start scan"},
        {"StopScan", [](lyn_service_h h) { Manager().StopScan(h); }, "stop scan"},
        {"RequestInitiating",
         [=](lyn_service_h h) { Manager().RequestInitiating(h, "the id", "the extra data", result); },
         "request 'the id' 'the extra data'"},
        {"StartAdvertisement", [](lyn_service_h h) { Manager().StartAdvertisement(h, 4711); },
         "start advertise 4711"},
        {"StopAdvertisement", [](lyn_service_h h) { Manager().StopAdvertisement(h); }, "stop advertise"},
        {"SetNodlinkVersion", [](lyn_service_h h) { Manager().SetNodlinkVersion(h, "the version"); },
         "version 'the version'"},
        {"GetNodlinkType", [](lyn_service_h h) { Manager().GetNodlinkType(h); }, "nodlink type"},
        {"GetRequestIntiatingErrorString",
         [](lyn_service_h h) {
             Manager().GetRequestIntiatingErrorString(h, LYN_REQUEST_INITIATING_RESULT_NOT_TAP);
         },
         "error string 8"},
    };
}

}  // namespace lyn::test
