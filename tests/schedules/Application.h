// SPDX-License-Identifier: Apache-2.0
//
// The TV application of a schedule: what its threads do, and its callbacks, in which they stop.
#pragma once

#include "lyn_service.h"
#include "schedules/Actor.h"
#include "schedules/Ledger.h"

namespace lyn::schedules {

class Application {
public:
    explicit Application(Ledger& ledger) : m_ledger(ledger) {}
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// What a thread beside the main loop does, from its first move to its end.
    void RunWorker(Move move);
    /// What the thread of the main loop does until all is over.
    void RunMainLoop();
    /// One turn of the main loop, if anything is ready.
    void Turn(Actor& actor);
    void Perform(Actor& actor, const Move& move);

private:
    [[noreturn]] void EndProcess(Actor& actor);
    void Create(Actor& actor, const Move& move);
    static lyn_error_e CreateService(lyn_service_h* handle, Life& life);
    void MakeCall(Actor& actor, const Move& move);
    int Invoke(const Call& call, lyn_service_h handle);
    lyn_service_h HandleOf(Handle handle);
    void StayInCallback(Actor& actor);

    static void OnState(lyn_state_e state, void* userData);
    static void OnFound(const lyn_device_info_t* info, void* userData);
    static void OnJson(const char* json, void* userData);
    static void OnResult(lyn_request_initiating_result_e result, void* userData);

    Ledger& m_ledger;
};

/// The one of the process; callbacks find it here.
Application& TheApplication();
Ledger& TheLedger();
Room& TheRoom();

}  // namespace lyn::schedules
