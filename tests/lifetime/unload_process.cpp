// SPDX-License-Identifier: Apache-2.0
//
// unload_process LIBRARY MOMENT: a program that opens the library, closes it at a bad moment, and runs the main
// loop on. It exits with 0 when it lives through that, and with another status when a callback came that must
// not, or did not come that must.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "lyn_service.h"
#include "lyn_simulator/simulator.h"
#include "support/Clock.h"

namespace {

using lyn::test::ElapseTimeout;
namespace simulator = lyn::simulator;

constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";

void Check(bool isGood, const char* what)
{
    if (!isGood) {
        std::fprintf(stderr, "%s\n", what);
        std::exit(1);
    }
}

// The library, opened as a plug-in is.
class Library {
public:
    explicit Library(const char* path) : m_library(dlopen(path, RTLD_NOW | RTLD_LOCAL))
    {
        Check(m_library != nullptr, "not opened");
    }

    template <typename Function>
    Function* Find(const char* name) const
    {
        void* const function = dlsym(m_library, name);
        Check(function != nullptr, name);
        return reinterpret_cast<Function*>(function);
    }

    void Close() const { Check(dlclose(m_library) == 0, "not closed"); }

private:
    void* m_library;
};

int g_phones = 0;
int g_results = 0;

void CountPhone(const lyn_device_info_t* /*info*/, void* /*userData*/)
{
    ++g_phones;
}

void CountResult(lyn_request_initiating_result_e /*result*/, void* /*userData*/)
{
    ++g_results;
}

lyn_service_h Create(const Library& library, const char* name)
{
    lyn_service_h service = nullptr;
    Check(library.Find<decltype(lyn_create_service)>("lyn_create_service")(&service, name, nullptr, nullptr) ==
              LYN_ERROR_NONE,
          "not created");
    return service;
}

void Scan(const Library& library, lyn_service_h service)
{
    Check(library.Find<decltype(lyn_start_scan)>("lyn_start_scan")(service, CountPhone, nullptr) == LYN_ERROR_NONE,
          "no scan");
}

void Request(const Library& library, lyn_service_h service)
{
    Check(library.Find<decltype(lyn_request_initiating)>("lyn_request_initiating")(service, kPhone, CountResult,
                                                                                   nullptr) == LYN_ERROR_NONE,
          "not accepted");
}

void Destroy(const Library& library, lyn_service_h service)
{
    Check(library.Find<decltype(lyn_destroy_service)>("lyn_destroy_service")(service) == LYN_ERROR_NONE,
          "not destroyed");
}

// A phone that is there and answers nothing, so that a time-out stays armed.
void AddPhone()
{
    simulator::Phone phone = simulator::MirroringPhone(kPhone, "Kitchen", "0123456789abcdefghijkl");
    simulator::Answer silence;
    silence.kind = simulator::Answer::Kind::silent;
    phone.services.at(0).characteristics.at(0).answers = {silence};
    simulator::AddPhone(phone);
}

void WaitForTheLink()
{
    Check(simulator::RunUntil([] { return simulator::ClientHandle() != nullptr; }), "not connected");
    simulator::Settle();
}

using Moment = void (*)(const Library& library);

const std::map<std::string, Moment>& Moments()
{
    static const std::map<std::string, Moment> moments = {
        {"result_posted",
         [](const Library& library) {
             Request(library, Create(library, "dummy"));
             library.Close();
             simulator::Settle();
             Check(g_results == 1, "the result did not come");
         }},
        {"timeout_armed",
         [](const Library& library) {
             Request(library, Create(library, "mirroring"));
             WaitForTheLink();
             library.Close();
             Check(ElapseTimeout(), "no time-out was armed");
             simulator::Settle();
             Check(g_results == 1, "the time-out did not come");
         }},
        {"scanning",
         [](const Library& library) {
             Scan(library, Create(library, "mirroring"));
             library.Close();
             Check(simulator::RunUntil([] { return g_phones > 0; }), "no phone came");
         }},
        {"destroyed_with_a_result_posted",
         [](const Library& library) {
             lyn_service_h service = Create(library, "dummy");
             Request(library, service);
             Destroy(library, service);
             library.Close();
             simulator::Settle();
             Check(g_results == 0, "a result came");
         }},
        {"destroyed_with_a_timeout_armed",
         [](const Library& library) {
             lyn_service_h service = Create(library, "mirroring");
             Request(library, service);
             WaitForTheLink();
             Destroy(library, service);
             library.Close();
             ElapseTimeout();
             simulator::Settle();
             Check(g_results == 0, "a result came");
         }},
        {"destroyed_in_a_scan",
         [](const Library& library) {
             lyn_service_h service = Create(library, "mirroring");
             Scan(library, service);
             Destroy(library, service);
             library.Close();
             simulator::RunUntil([] { return g_phones > 0; }, 100);
             Check(g_phones == 0, "a phone came");
         }},
    };
    return moments;
}

}  // namespace

int main(int argc, char** argv)
{
    Check(argc == 3 && Moments().count(argv[2]) == 1, "usage: unload_process LIBRARY MOMENT");
    simulator::Reset();
    AddPhone();
    Moments().at(argv[2])(Library(argv[1]));
    return 0;
}
