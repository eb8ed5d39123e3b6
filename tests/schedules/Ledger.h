// SPDX-License-Identifier: Apache-2.0
//
// What the application has been promised: its services, what it has asked of each, and what it may hear next. Only
// the running thread writes in it.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "lyn_service.h"
#include "schedules/Actor.h"
#include "schedules/Room.h"

namespace lyn::schedules {

using Time = std::uint64_t;
inline constexpr Time kNever = ~Time{0};

struct Call;

/// A call with a callback: a scan or a request. The callback's user data.
struct Asked {
    Life* life = nullptr;
    const Actor* actor = nullptr;
    int phone = 0;
    bool isRequest = false;
    bool isInsideState = false;  ///< refused at once, its callback unread
    Time begun = 0;
    Time ended = kNever;
    int code = 0;
    Time requestingAt = kNever;  ///< when it reported REQUESTING, if it has
    bool hasMissed = false;      ///< the state was moved before it could; it makes no transition then
    bool isOvertaken = false;    ///< the service has left REQUESTING without its result
    bool hasResult = false;

    bool IsRequesting() const { return requestingAt != kNever; }
};

/// A service, from its creation on. The state callback's user data.
struct Life {
    std::string service;
    lyn_service_h handle = nullptr;
    Time begun = 0;
    Time created = kNever;
    Time destroyBegun = kNever;
    Time destroyed = kNever;
    Time failed = kNever;                 ///< was not created
    int destructions = 0;                 ///< begun
    int phones = 0;                       ///< reported
    bool mayLackParts = false;            ///< Bluetooth may have refused to be made ready
    lyn_state_e state = LYN_STATE_READY;  ///< reported last
    const Actor* reporting = nullptr;     ///< is inside the state callback
    std::size_t resultDue =
        0;                 ///< READY came from the main loop: in its how many-th turn inside another; 0: not due
    Time readyAt = 0;      ///< when that READY was reported
    Time resultDueAt = 0;  ///< when the thread went on that brought READY
    std::vector<lyn_state_e> history;  ///< all that have been reported
    std::vector<Asked*> requests;
    std::vector<Asked*> scans;
    std::vector<Call*> calls;  ///< under way
    /// Threads that were in the library when the service was destroyed, and may deliver what they had in their
    /// hands.
    std::vector<const Actor*> mayStillReport;

    bool IsNodLink() const { return service == "nodlink"; }
    bool IsDestroyed() const { return destroyed != kNever; }
    bool IsAlive() const { return created != kNever && !IsDestroyed(); }
};

/// A call under way.
struct Call {
    Call(const Move& theMove, Actor& theActor, Life* theLife) : move(theMove), actor(theActor), life(theLife) {}

    const Move move;
    Actor& actor;
    Life* const life;
    Asked* asked = nullptr;
    Time begun = 0;
    lyn_state_e stateBefore = LYN_STATE_READY;
    std::size_t historyBefore = 0;
    bool isInsideState = false;         ///< in the state callback of its own service
    bool isUncertain = false;           ///< some thread is between two stops that are none in every schedule
    bool isDisturbed = false;           ///< other threads have done something with the service meanwhile
    std::vector<lyn_state_e> reported;  ///< inside of it
};

class Ledger {
public:
    explicit Ledger(Room& room) : m_room(room) {}

    void Begin();

    Life& BeginLife(const std::string& service);
    void EndCreation(Life& life, lyn_error_e code, lyn_service_h handle);

    void BeginCall(Call& call);
    /// Checks the call's code.
    void EndCall(Call& call, int code);

    /// Gives what LeaveState() takes.
    const Actor* EnterState(Life& life, lyn_state_e state, Actor& actor);
    static void LeaveState(Life& life, const Actor* reporting);
    void OnFound(const Asked& asked, const Actor& actor);
    void OnResult(const Asked& asked, lyn_request_initiating_result_e result, const Actor& actor);
    /// A turn of the main loop has ended.
    void EndTurn(const Actor& actor);

    /// The process is about to end, and releases the service.
    void BeginProcessEnd();
    /// All threads have ended and all time-outs elapsed.
    void CheckEnd() const;

    /// The service of a handle: the living one, or the last that had it.
    Life* Find(lyn_service_h handle);
    Life* Latest() { return m_latest; }
    Life* BeforeLatest() { return m_beforeLatest; }
    /// One lives, or is being created, and nobody has begun to destroy it.
    bool HasService() const;

private:
    /// False for what a thread had in its hand already when the service was destroyed.
    bool CheckMayReport(Life& life, const Actor& actor) const;
    void CheckStep(const Life& life, lyn_state_e state) const;
    Asked& MatchResult(const Life& life, lyn_request_initiating_result_e result) const;
    bool WasAbandoned(int phone) const;
    void CheckCreation(const Life& life, lyn_error_e code) const;
    void EndDue(Life& life) const;
    static void NoteInCalls(Life& life, lyn_state_e state, const Actor& actor);
    void Ask(Call& call);
    Life& LifeOf(const Asked& asked);

    Room& m_room;
    std::deque<Life> m_lives;
    std::deque<Asked> m_asked;
    Life* m_latest = nullptr;
    Life* m_beforeLatest = nullptr;
    bool m_isProcessEnding = false;
};

}  // namespace lyn::schedules
