// SPDX-License-Identifier: Apache-2.0
//
// exit_process SERVICE MOMENT: a program that ends with a living service. It exits with 0 when the service has
// been released by then (or, where a call that is still in progress keeps it, was not touched), and with
// another status when not; a sanitizer that has something to say makes it another one, too.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "lifetime/Phones.h"
#include "lyn_service.h"

namespace {

using lyn::test::kPhone;
using lyn::test::PhoneFor;
namespace simulator = lyn::simulator;

lyn_service_h g_service = nullptr;
int g_productInitsExpected = 0;

[[noreturn]] void Fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::fflush(stderr);
    _exit(1);
}

void Check(bool isGood, const char* what)
{
    if (!isGood) {
        Fail(what);
    }
}

// Registered before the library's first call, so it comes after the library's end.
void CheckReleased()
{
    Check(simulator::Alive().productInits == g_productInitsExpected, "the service was not released");
    Check(simulator::Alive().clients == 0 || g_productInitsExpected > 0, "a GATT client was left");
}

void CheckText(lyn_service_h service, lyn_request_initiating_result_e result, const char* expected)
{
    const std::string text = lyn_get_request_initiating_error_string(service, result);
    Check(text == expected, text.c_str());
}

// What the library lends and throws, where the thread's own objects are gone already.
void UseTexts()
{
    CheckText(g_service, LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING, "NotStartedMirroring");
    const std::string version = "a version that no phone speaks";
    try {
        // Other services than "nodlink" know no version at all.
        Check(lyn_set_nodlink_version(g_service, version.c_str()) == LYN_ERROR_NOT_SUPPORTED, "accepted");
    } catch (const char* text) {
        Check(text == version, "another version was thrown");
    }
}

// An object of the application that is destroyed after the library's own, and knows nothing of that.
struct LateOwner {
    ~LateOwner()
    {
        if (m_service != nullptr) {
            CheckText(m_service, LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING, "UnknownErr");
            Check(lyn_destroy_service(m_service) == LYN_ERROR_INVALID_HANDLE, "destroyed again");
            Check(lyn_stop_scan(m_service) == LYN_ERROR_INVALID_PARAMETER, "found again");
        }
    }
    lyn_service_h m_service = nullptr;
};
LateOwner g_lateOwner;

[[noreturn]] void ExitNow()
{
    std::exit(0);
}

void ExitAtState(lyn_state_e /*state*/, void* /*userData*/)
{
    ExitNow();
}

void ExitAtPhone(const lyn_device_info_t* /*info*/, void* /*userData*/)
{
    ExitNow();
}

void ExitAtResult(lyn_request_initiating_result_e /*result*/, void* /*userData*/)
{
    ExitNow();
}

void Create(const char* name, lyn_state_changed_cb cb)
{
    Check(lyn_create_service(&g_service, name, cb, nullptr) == LYN_ERROR_NONE, "not created");
}

void Request(lyn_request_initiating_result_cb cb)
{
    Check(lyn_request_initiating(g_service, kPhone, cb, nullptr) == LYN_ERROR_NONE, "not accepted");
}

void Scan(lyn_device_found_cb cb)
{
    Check(lyn_start_scan(g_service, cb, nullptr) == LYN_ERROR_NONE, "no scan");
}

[[noreturn]] void NeverCame()
{
    simulator::RunUntil([] { return false; });
    Fail("what was waited for did not come");
}

using Moment = void (*)(const char* service);

const std::map<std::string, Moment>& Moments()
{
    static const std::map<std::string, Moment> moments = {
        {"idle", [](const char* service) { Create(service, nullptr); }},
        {"scanning",
         [](const char* service) {
             Create(service, nullptr);
             Scan(nullptr);
         }},
        {"requesting",
         [](const char* service) {
             Create(service, nullptr);
             Request(nullptr);
         }},
        {"connected",
         [](const char* service) {
             Create(service, nullptr);
             Request(nullptr);
             simulator::RunUntil([] { return simulator::ClientHandle() != nullptr; });
             Check(simulator::ClientHandle() != nullptr, "not connected");
         }},
        {"inside_phone",
         [](const char* service) {
             Create(service, nullptr);
             Scan(ExitAtPhone);
             NeverCame();
         }},
        {"inside_result",
         [](const char* service) {
             Create(service, nullptr);
             Request(ExitAtResult);
             NeverCame();
         }},
        {"inside_call",
         [](const char* service) {
             g_productInitsExpected = 1;
             Create(service, ExitAtState);
             Request(nullptr);
             NeverCame();
         }},
        {"inside_device_report",
         [](const char* service) {
             Create(service, ExitAtState);
             simulator::AmbientPowerOff();
             NeverCame();
         }},
        {"late_owner",
         [](const char* service) {
             Create(service, nullptr);
             g_lateOwner.m_service = g_service;
             UseTexts();
         }},
        {"text_at_exit",
         [](const char* service) {
             Create(service, nullptr);
             UseTexts();
             std::atexit(UseTexts);
         }},
    };
    return moments;
}

}  // namespace

int main(int argc, char** argv)
{
    Check(argc == 3 && Moments().count(argv[2]) == 1, "usage: exit_process SERVICE MOMENT");
    simulator::Reset();
    simulator::AddPhone(PhoneFor(argv[1]));
    std::atexit(CheckReleased);
    Moments().at(argv[2])(argv[1]);
    return 0;
}
