// SPDX-License-Identifier: Apache-2.0
#include "support/App.h"

#include <gtest/gtest.h>

#include "lyn_simulator/simulator.h"
#include "support/Seen.h"

namespace lyn::test {
namespace {

std::string TextOf(const char* text)
{
    return text != nullptr ? text : "";
}

}  // namespace

App::App(const std::string& serviceName)
{
    EXPECT_EQ(Create(serviceName), LYN_ERROR_NONE);
}

App::~App()
{
    if (handle != nullptr) {
        EXPECT_EQ(Destroy(), LYN_ERROR_NONE);
    }
}

lyn_error_e App::Create(const std::string& serviceName)
{
    return Returned("lyn_create_service", lyn_create_service(&handle, serviceName.c_str(), StateCb, this));
}

lyn_error_e App::Destroy()
{
    lyn_service_h destroyed = handle;
    handle = nullptr;
    return Returned("lyn_destroy_service", lyn_destroy_service(destroyed));
}

lyn_error_e App::StartScan()
{
    return Returned("lyn_start_scan", lyn_start_scan(handle, PhoneCb, this));
}

lyn_error_e App::StartScanWithSerialization()
{
    return Returned("lyn_start_scan_with_serialization", lyn_start_scan_with_serialization(handle, JsonCb, this));
}

lyn_error_e App::StopScan()
{
    return Returned("lyn_stop_scan", lyn_stop_scan(handle));
}

lyn_error_e App::Request(const std::string& address)
{
    return Returned("lyn_request_initiating", lyn_request_initiating(handle, address.c_str(), ResultCb, this));
}

lyn_error_e App::Request(const std::string& address, const std::string& extraData)
{
    return Returned(
        "lyn_request_initiating_with_extra_data",
        lyn_request_initiating_with_extra_data(handle, address.c_str(), extraData.c_str(), ResultCb, this));
}

bool App::WaitForResult()
{
    const std::size_t had = results.size();
    return simulator::RunUntil([&] { return results.size() > had; });
}

void App::NoteLate()
{
    lateReports += handle == nullptr ? 1 : 0;
}

void App::StateCb(lyn_state_e state, void* userData)
{
    auto& app = *static_cast<App*>(userData);
    NoteValue("lyn_state_e", state, "lyn_state_changed_cb");
    app.NoteLate();
    app.states.push_back(state);
    app.events.push_back("state " + std::to_string(state));
    if (app.onState) {
        app.onState(state);
    }
}

void App::PhoneCb(const lyn_device_info_t* info, void* userData)
{
    auto& app = *static_cast<App*>(userData);
    const FoundPhone phone{info->name != nullptr,   TextOf(info->name),       TextOf(info->address),
                           TextOf(info->unique_id), TextOf(info->extra_data), info->rssi};
    app.NoteLate();
    app.phones.push_back(phone);
    app.events.push_back("phone " + phone.address);
    if (app.onPhone) {
        app.onPhone(phone);
    }
}

void App::JsonCb(const char* json, void* userData)
{
    auto& app = *static_cast<App*>(userData);
    app.NoteLate();
    app.jsons.emplace_back(json);
    app.events.emplace_back("json");
}

void App::ResultCb(lyn_request_initiating_result_e result, void* userData)
{
    auto& app = *static_cast<App*>(userData);
    NoteValue("lyn_request_initiating_result_e", result, "lyn_request_initiating_result_cb");
    app.NoteLate();
    app.results.push_back(result);
    app.events.push_back("result " + std::to_string(result));
    if (app.onResult) {
        app.onResult(result);
    }
}

}  // namespace lyn::test
