// SPDX-License-Identifier: Apache-2.0
#include "schedules/ProcessEnd.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "lyn_simulator/simulator.h"
#include "schedules/Application.h"
#include "schedules/Conductor.h"
#include "schedules/Outcome.h"
#include "schedules/Sight.h"

// The thread sanitizer waits a second at each process's end for races that may still come; here threads stand
// still then.
extern "C" const char* __tsan_default_options()
{
    return "atexit_sleep_ms=0";
}

namespace lyn::schedules {
namespace {

/// Is there a call in which a service lives on?
bool IsAnyCallUnderWay()
{
    const auto& actors = Conductor::Instance().Actors();
    return std::any_of(actors.begin(), actors.end(), [](const auto& actor) {
        return std::any_of(actor->frames.begin(), actor->frames.end(), [](const Frame& frame) {
            return frame.kind == Frame::Kind::call || frame.kind == Frame::Kind::loop;
        });
    });
}

// The application's own last words, when the library has had its.
void CallLate()
{
    const OutOfSight schedule;
    const Life* life = TheLedger().Latest();
    int something = 0;
    const lyn_service_h handle = life != nullptr ? life->handle : &something;
    const std::string text =
        lyn_get_request_initiating_error_string(handle, LYN_REQUEST_INITIATING_RESULT_NOT_TAP);
    Require(text == "UnknownErr", "end", "a result is called " + text + " after the end");
    Require(lyn_stop_scan(handle) == LYN_ERROR_INVALID_PARAMETER, "end", "a service is found after the end");
    Require(lyn_destroy_service(handle) == LYN_ERROR_INVALID_HANDLE, "end",
            "a service is destroyed after the end");
    if (IsAnyCallUnderWay()) {
        return;
    }
    const simulator::Counts alive = simulator::Alive();
    Require(alive.productInits == 0 && alive.clients == 0, "end", "something is left at the end");
    Require(alive.registrations == (alive.scanning ? 1 : 0), "end", "a registration is left at the end");
}

}  // namespace

void WatchProcessEnd()
{
    std::atexit(CallLate);
}

}  // namespace lyn::schedules
