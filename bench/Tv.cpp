// SPDX-License-Identifier: Apache-2.0
#include "Tv.h"

#include <stdexcept>

namespace lyn::bench {
namespace {

constexpr const char* kUniqueId = "0123456789abcdefghijkl";
constexpr const char* kMetaData = "/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
constexpr int kNoLines = 7;

simulator::Phone MakePhone(const std::string& service)
{
    if (service == "nodlink") {
        return simulator::NodLinkPhone(kPhone, true, true);
    }
    if (service == "kov") {
        return simulator::KovPhone(kPhone, "Kitchen phone", kUniqueId);
    }
    return simulator::MirroringPhone(kPhone, "Kitchen phone", kUniqueId);
}

}  // namespace

const std::vector<std::string>& AllServices()
{
    static const std::vector<std::string> names = {"mirroring", "nodlink", "kov", "dummy"};
    return names;
}

void PrepareTv()
{
    simulator::Reset();
    simulator::SetJournal(false);
    simulator::SetLogCapture(kNoLines);
    simulator::SetKernelLogMode(simulator::KernelLogMode::discard);
    simulator::WriteFile(kMetaData, R"({"screenmirroring_fullview":["org.example.video"],"soundmirroring":[]})");
}

simulator::Phone PhoneFor(const std::string& service, int steps)
{
    simulator::Phone phone = MakePhone(service);
    simulator::Characteristic& characteristic = CharacteristicOf(phone);
    characteristic.answersPerLink = true;
    if (steps == 2) {
        characteristic.answers.push_back({.text = R"({"type":"fgApp","packageName":"org.example.video"})"});
    }
    characteristic.answers.push_back({.text = "Success"});
    return phone;
}

simulator::Characteristic& CharacteristicOf(simulator::Phone& phone)
{
    return phone.services.at(0).characteristics.at(0);
}

App::App(const std::string& serviceName)
{
    Require(lyn_create_service(&handle, serviceName.c_str(), CountState, this) == LYN_ERROR_NONE,
            "a service is created");
}

App::~App()
{
    if (handle != nullptr) {
        lyn_destroy_service(handle);
    }
}

void App::Destroy()
{
    Require(lyn_destroy_service(handle) == LYN_ERROR_NONE, "a service is destroyed");
    handle = nullptr;
}

void App::StartScan()
{
    Require(lyn_start_scan(handle, CountPhone, this) == LYN_ERROR_NONE, "a scan starts");
}

void App::StopScan() const
{
    Require(lyn_stop_scan(handle) == LYN_ERROR_NONE, "a scan stops");
}

void App::Request()
{
    Require(lyn_request_initiating(handle, kPhone, CountResult, this) == LYN_ERROR_NONE, "a request is accepted");
}

void App::CountState(lyn_state_e, void* app)
{
    ++static_cast<App*>(app)->states;
}

void App::CountPhone(const lyn_device_info_t*, void* app)
{
    ++static_cast<App*>(app)->phones;
}

void App::CountJson(const char*, void* app)
{
    ++static_cast<App*>(app)->phones;
}

void App::CountResult(lyn_request_initiating_result_e result, void* app)
{
    ++static_cast<App*>(app)->results;
    static_cast<App*>(app)->lastResult = result;
}

void Require(bool holds, const std::string& what)
{
    if (!holds) {
        throw std::runtime_error("not so: " + what);
    }
}

}  // namespace lyn::bench
