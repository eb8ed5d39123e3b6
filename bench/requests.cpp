// SPDX-License-Identifier: Apache-2.0
//
// Cost of a whole request, from the call to the result and the end of the link, and of a whole session: create,
// scan, find, request, result, destroy. Nothing is waited for: the phones answer at once.
#include "Cases.h"
#include "Tv.h"

namespace lyn::bench {
namespace {

constexpr auto kSuccess = LYN_REQUEST_INITIATING_RESULT_SUCCESS;
constexpr auto kGattFail = LYN_REQUEST_INITIATING_RESULT_GATT_FAIL;

void RequestAndSettle(App& app, lyn_request_initiating_result_e expected)
{
    const long before = app.results;
    app.Request();
    simulator::Settle();
    Require(app.results == before + 1 && app.lastResult == expected, "a request has its result");
}

void AddRequest(const std::string& name, const std::string& service, const simulator::Phone& phone,
                lyn_request_initiating_result_e expected = kSuccess)
{
    AddCase("request/" + name, [=](benchmark::State& state) {
        PrepareTv();
        simulator::AddPhone(phone);
        App app(service);
        while (state.KeepRunning()) {
            RequestAndSettle(app, expected);
        }
    });
}

void AddSession(const std::string& service)
{
    AddCase("session/" + service, [=](benchmark::State& state) {
        PrepareTv();
        simulator::AddPhone(PhoneFor(service));
        while (state.KeepRunning()) {
            App app(service);
            app.StartScan();
            simulator::Settle();
            Require(app.phones > 0, "the phone is found");
            RequestAndSettle(app, kSuccess);
            app.Destroy();
        }
    });
}

}  // namespace

void AddRequests()
{
    for (const std::string& service : AllServices()) {
        AddRequest(service, service, PhoneFor(service));
    }
    AddRequest("nodlink_two_steps", "nodlink", PhoneFor("nodlink", 2));
    simulator::Phone unreachable = PhoneFor("mirroring");
    unreachable.connects = {{133, 0}};
    AddRequest("mirroring_never_connects", "mirroring", unreachable, kGattFail);
    for (const std::string& service : AllServices()) {
        AddSession(service);
    }
    AddCase("platform/settle_with_nothing_to_do", [](benchmark::State& state) {
        PrepareTv();
        while (state.KeepRunning()) {
            simulator::Settle();
        }
    });
}

}  // namespace lyn::bench
