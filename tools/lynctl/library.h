// SPDX-License-Identifier: Apache-2.0
//
// The service library and a platform, opened at run time.
//
// The platform's file comes first; the service library needs a library of the same name and is
// satisfied with the one that is there. So the platform is chosen by opening it, and no environment
// variable is needed (the loader ignores those for a program with file capabilities).
#pragma once

#include <string>

#include "lyn_service.h"

namespace lynctl {

/// The functions of lyn_service.h, without the prefix.
struct Functions {
    decltype(&lyn_create_service) createService = nullptr;
    decltype(&lyn_destroy_service) destroyService = nullptr;
    decltype(&lyn_start_scan) startScan = nullptr;
    decltype(&lyn_start_scan_with_serialization) startScanWithSerialization = nullptr;
    decltype(&lyn_stop_scan) stopScan = nullptr;
    decltype(&lyn_request_initiating) requestInitiating = nullptr;
    decltype(&lyn_request_initiating_with_extra_data) requestInitiatingWithExtraData = nullptr;
    decltype(&lyn_start_advertise) startAdvertise = nullptr;
    decltype(&lyn_stop_advertise) stopAdvertise = nullptr;
    decltype(&lyn_set_nodlink_version) setNodlinkVersion = nullptr;
    decltype(&lyn_get_nodlink_type) getNodlinkType = nullptr;
    decltype(&lyn_get_request_initiating_error_string) getRequestInitiatingErrorString = nullptr;
};

/// Stays open until the process ends.
class Library {
public:
    /// Opens `<folder>/lyn/<platform>/liblyn_platform.so.0` and `<folder>/liblyn_service.so.0`. An empty
    /// folder means the one that belongs to this program, an empty platform the default one.
    /// Throws Failure: kExitFailure when a file cannot be opened or lacks a function, kExitUsage when a
    /// program with special rights is told to load code from a folder.
    Library(const std::string& folder, const std::string& platform);

    /// A function that only some platforms offer, or null.
    template <typename Function>
    Function PlatformFunction(const char* name) const
    {
        return reinterpret_cast<Function>(Symbol(name));
    }

    /// What to call the platform in front of people.
    const std::string& PlatformName() const { return m_platformName; }

    Functions call;

private:
    void* Symbol(const char* name) const;

    std::string m_platformName;
    void* m_platform = nullptr;
    void* m_service = nullptr;
};

}  // namespace lynctl
