// SPDX-License-Identifier: Apache-2.0
#include "interface/Functions.h"

#include <regex>

namespace lyn::test {

const std::vector<Function>& FunctionsWithAHandle()
{
    constexpr lyn_error_e stale = LYN_ERROR_INVALID_PARAMETER;
    static const std::vector<Function> functions = {
        {"lyn_set_nodlink_version", "lyn_error_e lyn_set_nodlink_version(lyn_service_h, const char*)", stale,
         [](lyn_service_h h) { return lyn_set_nodlink_version(h, "3.0"); }},
        {"lyn_get_nodlink_type", "lyn_error_e lyn_get_nodlink_type(lyn_service_h, nod_link_type*)", stale,
         [](lyn_service_h h) {
             nod_link_type type = 77;
             const lyn_error_e error = lyn_get_nodlink_type(h, &type);
             EXPECT_EQ(type, error == LYN_ERROR_NONE ? 0 : 77);
             return error;
         }},
        {"lyn_start_advertise", "lyn_error_e lyn_start_advertise(lyn_service_h, lyn_adv_interval_e)", stale,
         [](lyn_service_h h) { return lyn_start_advertise(h, LYN_ADV_INTERVAL_50); }},
        {"lyn_stop_advertise", "lyn_error_e lyn_stop_advertise(lyn_service_h)", stale,
         [](lyn_service_h h) { return lyn_stop_advertise(h); }},
        {"lyn_start_scan", "lyn_error_e lyn_start_scan(lyn_service_h, lyn_device_found_cb, void*)", stale,
         [](lyn_service_h h) { return lyn_start_scan(h, nullptr, nullptr); }},
        {"lyn_stop_scan", "lyn_error_e lyn_stop_scan(lyn_service_h)", stale,
         [](lyn_service_h h) { return lyn_stop_scan(h); }},
        {"lyn_start_scan_with_serialization",
         "lyn_error_e lyn_start_scan_with_serialization(lyn_service_h, lyn_device_found_with_serialization_cb, "
         "void*)",
         stale, [](lyn_service_h h) { return lyn_start_scan_with_serialization(h, nullptr, nullptr); }},
        {"lyn_request_initiating",
         "lyn_error_e lyn_request_initiating(lyn_service_h, const char*, lyn_request_initiating_result_cb, void*)",
         stale,
         [](lyn_service_h h) {
             const lyn_error_e error = lyn_request_initiating(h, kPhone, nullptr, nullptr);
             simulator::Settle();  // There is no such phone: the request ends, and another one may begin.
             return error;
         }},
        {"lyn_request_initiating_with_extra_data",
         "lyn_error_e lyn_request_initiating_with_extra_data(lyn_service_h, const char*, const char*, "
         "lyn_request_initiating_result_cb, void*)",
         stale,
         [](lyn_service_h h) { return lyn_request_initiating_with_extra_data(h, kPhone, "", nullptr, nullptr); }},
        {"lyn_destroy_service", "lyn_error_e lyn_destroy_service(lyn_service_h)", LYN_ERROR_INVALID_HANDLE,
         [](lyn_service_h h) { return lyn_destroy_service(h); }},
    };
    return functions;
}

Texts TraceOfTheInterface()
{
    static const std::regex pattern("(IN >>|OUT <<) \\[(.*)\\((\\d+)\\)\\]");
    Texts trace;
    for (const Line& line : LogLines()) {
        std::smatch match;
        if (!std::regex_match(line.message, match, pattern)) {
            continue;
        }
        const bool in = match[1] == "IN >>";
        EXPECT_EQ(line.priority, DEBUG);
        EXPECT_EQ(line.file, "lyn_service_log.h");
        EXPECT_EQ(line.function, in ? "ApiTracker" : "~ApiTracker");
        EXPECT_GT(std::stoi(match[3]), 0);
        // Compilers differ in the blanks around an asterisk.
        std::string declaration = std::regex_replace(match[2].str(), std::regex(" +\\*"), "*");
        declaration = std::regex_replace(declaration, std::regex("\\*lyn_"), "* lyn_");
        if (declaration.find("lyn::") == std::string::npos) {
            trace.push_back((in ? "IN " : "OUT ") + declaration);
        }
    }
    return trace;
}

bool AskedTheManager()
{
    return HasLogWith(DEBUG, "CServiceManager::");
}

}  // namespace lyn::test
