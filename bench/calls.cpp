// SPDX-License-Identifier: Apache-2.0
//
// Cost of each of the twelve functions: done, and refused. A function that can be undone only by another one is
// measured together with it.
#include "Cases.h"
#include "Tv.h"

namespace lyn::bench {
namespace {

constexpr const char* kBesideService = "mirroring";

template <typename Call>
void AddCall(const std::string& name, const std::string& service, lyn_error_e expected, const Call& call)
{
    AddCase("call/" + name, [=](benchmark::State& state) {
        PrepareTv();
        App app(service);
        lyn_error_e error = expected;
        while (state.KeepRunning()) {
            error = call(app);
            if (error != expected) {
                break;
            }
        }
        Require(error == expected, "the call returns " + std::to_string(expected));
    });
}

template <typename Call>
void AddDone(const std::string& name, const std::string& service, const Call& call)
{
    AddCall(name, service, LYN_ERROR_NONE, call);
}

template <typename Call>
void AddRefused(const std::string& name, lyn_error_e expected, const Call& call)
{
    AddCall(name, kBesideService, expected, call);
}

void AddLife()
{
    for (const std::string& service : AllServices()) {
        AddCase("call/create_service+destroy_service/" + service, [=](benchmark::State& state) {
            PrepareTv();
            while (state.KeepRunning()) {
                App app(service);
                app.Destroy();
            }
        });
    }
    AddRefused("create_service/null_name", LYN_ERROR_INVALID_PARAMETER, [](App&) {
        void* handle = nullptr;
        return lyn_create_service(&handle, nullptr, nullptr, nullptr);
    });
    AddRefused("create_service/a_service_lives", LYN_ERROR_ALREADY_DONE, [](App&) {
        void* handle = nullptr;
        return lyn_create_service(&handle, "kov", nullptr, nullptr);
    });
    AddRefused("destroy_service/null_handle", LYN_ERROR_INVALID_HANDLE,
               [](App&) { return lyn_destroy_service(nullptr); });
}

void AddScans()
{
    for (const char* service : {"mirroring", "nodlink"}) {
        AddDone(std::string("start_scan+stop_scan/") + service, service, [](App& app) {
            lyn_start_scan(app.handle, App::CountPhone, &app);
            return lyn_stop_scan(app.handle);
        });
    }
    AddDone("start_scan_with_serialization+stop_scan", "mirroring", [](App& app) {
        lyn_start_scan_with_serialization(app.handle, App::CountJson, &app);
        return lyn_stop_scan(app.handle);
    });
    AddDone("stop_scan/ready", "mirroring", [](App& app) { return lyn_stop_scan(app.handle); });
    AddRefused("start_scan/null_handle", LYN_ERROR_INVALID_HANDLE,
               [](App& app) { return lyn_start_scan(nullptr, App::CountPhone, &app); });
    AddRefused("start_scan_with_serialization/null_handle", LYN_ERROR_INVALID_HANDLE,
               [](App& app) { return lyn_start_scan_with_serialization(nullptr, App::CountJson, &app); });
    AddRefused("stop_scan/null_handle", LYN_ERROR_INVALID_HANDLE, [](App&) { return lyn_stop_scan(nullptr); });
    AddCase("call/start_scan/scanning", [](benchmark::State& state) {
        PrepareTv();
        App app(kBesideService);
        app.StartScan();
        lyn_error_e error = LYN_ERROR_INVALID_STATE;
        while (state.KeepRunning()) {
            error = lyn_start_scan(app.handle, App::CountPhone, &app);
        }
        Require(error == LYN_ERROR_INVALID_STATE, "a second scan is refused");
        app.StopScan();
    });
}

void AddRequestCalls()
{
    // With "dummy" there is nothing but the call and the result from the main loop.
    AddDone("request_initiating+result/dummy", "dummy", [](App& app) {
        const lyn_error_e error = lyn_request_initiating(app.handle, kPhone, App::CountResult, &app);
        simulator::Settle();
        return error;
    });
    AddDone("request_initiating_with_extra_data+result/dummy", "dummy", [](App& app) {
        const lyn_error_e error = lyn_request_initiating_with_extra_data(
            app.handle, kPhone, R"({"appid":"music"})", App::CountResult, &app);
        simulator::Settle();
        return error;
    });
    AddRefused("request_initiating/null_device", LYN_ERROR_INVALID_PARAMETER,
               [](App& app) { return lyn_request_initiating(app.handle, nullptr, App::CountResult, &app); });
    AddRefused("request_initiating/null_handle", LYN_ERROR_INVALID_HANDLE,
               [](App& app) { return lyn_request_initiating(nullptr, kPhone, App::CountResult, &app); });
    AddRefused("request_initiating_with_extra_data/null_handle", LYN_ERROR_INVALID_HANDLE, [](App& app) {
        return lyn_request_initiating_with_extra_data(nullptr, kPhone, "", App::CountResult, &app);
    });
    AddDone("get_request_initiating_error_string", kBesideService, [](App& app) {
        benchmark::DoNotOptimize(
            lyn_get_request_initiating_error_string(app.handle, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
        return LYN_ERROR_NONE;
    });
    AddDone("get_request_initiating_error_string/null_handle", kBesideService, [](App&) {
        benchmark::DoNotOptimize(
            lyn_get_request_initiating_error_string(nullptr, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
        return LYN_ERROR_NONE;
    });
}

void AddAdvertising()
{
    AddDone("start_advertise", "mirroring",
            [](App& app) { return lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_100); });
    AddDone("start_advertise+stop_advertise", "mirroring", [](App& app) {
        lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_100);
        return lyn_stop_advertise(app.handle);
    });
    AddDone("stop_advertise/nothing_begun", "mirroring", [](App& app) { return lyn_stop_advertise(app.handle); });
    AddRefused("start_advertise/null_handle", LYN_ERROR_INVALID_HANDLE,
               [](App&) { return lyn_start_advertise(nullptr, LYN_ADV_INTERVAL_100); });
    AddRefused("stop_advertise/null_handle", LYN_ERROR_INVALID_HANDLE,
               [](App&) { return lyn_stop_advertise(nullptr); });
}

void AddNodLink()
{
    AddDone("set_nodlink_version", "nodlink", [](App& app) { return lyn_set_nodlink_version(app.handle, "3.0"); });
    AddDone("get_nodlink_type", "nodlink", [](App& app) {
        nod_link_type type = LYN_NOD_LINK_TYPE_MULTI_VIEW;
        return lyn_get_nodlink_type(app.handle, &type);
    });
    AddRefused("set_nodlink_version/not_supported", LYN_ERROR_NOT_SUPPORTED,
               [](App& app) { return lyn_set_nodlink_version(app.handle, "3.0"); });
    AddRefused("get_nodlink_type/not_supported", LYN_ERROR_NOT_SUPPORTED,
               [](App& app) { return lyn_get_nodlink_type(app.handle, nullptr); });
}

}  // namespace

void AddCalls()
{
    AddLife();
    AddScans();
    AddRequestCalls();
    AddAdvertising();
    AddNodLink();
}

}  // namespace lyn::bench
