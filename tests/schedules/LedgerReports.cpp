// SPDX-License-Identifier: Apache-2.0
//
// What the application hears, against what it may hear.
#include <algorithm>
#include <utility>

#include "schedules/Conductor.h"
#include "schedules/Ledger.h"
#include "schedules/Outcome.h"

namespace lyn::schedules {
namespace {

/// Who may report a state: a call that is at its work, or a turn of the main loop.
void CheckReporter(const Life& life, lyn_state_e state, const Actor& actor)
{
    const Frame& inner = actor.frames.back();
    if (inner.kind == Frame::Kind::loop) {
        const bool isResult = state == LYN_STATE_READY && life.state == LYN_STATE_REQUESTING;
        const bool isDevice = life.IsNodLink() && (state == LYN_STATE_READY || state == LYN_STATE_NOT_READY);
        Require(isResult || isDevice, "state", "the main loop reports " + std::to_string(state));
        return;
    }
    const bool isOwn = inner.kind == Frame::Kind::call && IsWork(inner.what) && inner.life == &life;
    Require(isOwn, "state", "a state is reported from outside of a call that changes it");
    const bool isScan = inner.what == What::scan || inner.what == What::scanJson;
    const bool isFitting =
        isScan ? state == LYN_STATE_SCANNING
               : state == LYN_STATE_READY || (inner.what != What::stop && state == LYN_STATE_REQUESTING);
    Require(isFitting, "state", std::string(inner.name) + " reports " + std::to_string(state));
}

/// The callback that was given last is called. A call that ended before that time has given its.
void CheckLastGiven(const std::vector<Asked*>& all, const Asked& asked, Time when)
{
    const bool isReplaced = std::any_of(all.begin(), all.end(), [&](const Asked* other) {
        const bool wasRefusedEarly = other->isInsideState || other->code == LYN_ERROR_INVALID_PARAMETER;
        return !wasRefusedEarly && other->begun > asked.ended && other->ended < when;
    });
    Require(!isReplaced, "callback", "a callback is called after another one has been given");
}

/// Open requests end without their results.
void Overtake(Life& life)
{
    for (Asked* asked : life.requests) {
        if (asked->hasResult || (asked->ended != kNever && asked->code != LYN_ERROR_NONE)) {
            continue;
        }
        (asked->IsRequesting() ? asked->isOvertaken : asked->hasMissed) = true;
    }
}

}  // namespace

bool Ledger::CheckMayReport(Life& life, const Actor& actor) const
{
    Require(life.failed == kNever, "late", "a service that was not created reports");
    if (!life.IsDestroyed()) {
        return true;
    }
    const auto found = std::find(life.mayStillReport.begin(), life.mayStillReport.end(), &actor);
    Require(found != life.mayStillReport.end(), "late", "a destroyed service reports");
    life.mayStillReport.erase(found);
    return false;
}

void Ledger::CheckStep(const Life& life, lyn_state_e state) const
{
    bool isGood = true;
    switch (state) {
    case LYN_STATE_READY:
        break;
    case LYN_STATE_SCANNING:
        isGood = life.state == LYN_STATE_READY;
        break;
    case LYN_STATE_REQUESTING:
        isGood = life.state == LYN_STATE_READY || (life.state == LYN_STATE_SCANNING && m_room.HasFaults());
        break;
    case LYN_STATE_NOT_READY:
        isGood = life.IsNodLink() && life.state != LYN_STATE_NOT_READY;
        break;
    default:
        isGood = false;
        break;
    }
    Require(isGood, "state", "the state goes from " + std::to_string(life.state) + " to " + std::to_string(state));
}

const Actor* Ledger::EnterState(Life& life, lyn_state_e state, Actor& actor)
{
    if (!CheckMayReport(life, actor)) {
        return life.reporting;
    }
    // A state callback may run the main loop, which reports inside of it.
    Require(life.reporting == nullptr || life.reporting == &actor, "state",
            "two state callbacks of one service at once");
    CheckReporter(life, state, actor);
    CheckStep(life, state);
    const bool isFromLoop = actor.frames.back().kind == Frame::Kind::loop;
    const std::size_t turns = actor.Count(Frame::Kind::loop);
    if (isFromLoop && life.resultDue == turns) {
        EndDue(life);
    }
    const bool mayBeResult = isFromLoop && state == LYN_STATE_READY && life.state == LYN_STATE_REQUESTING;
    if (mayBeResult) {
        life.resultDue = turns;
        life.resultDueAt = actor.realStopAt;
        life.readyAt = Conductor::Instance().Now();
    } else if (isFromLoop && life.resultDue == 0) {
        Overtake(life);  // By the device.
    }
    NoteInCalls(life, state, actor);
    life.state = state;
    life.history.push_back(state);
    return std::exchange(life.reporting, &actor);
}

void Ledger::NoteInCalls(Life& life, lyn_state_e state, const Actor& actor)
{
    const bool isFromLoop = actor.frames.back().kind == Frame::Kind::loop;
    Call* own = nullptr;
    for (Call* call : life.calls) {
        own = !isFromLoop && &call->actor == &actor ? call : own;  // The innermost at last.
    }
    for (Call* call : life.calls) {
        call->isDisturbed = call->isDisturbed || call != own;
    }
    if (own == nullptr) {
        return;
    }
    own->reported.push_back(state);
    if (state == LYN_STATE_REQUESTING && own->asked != nullptr) {
        own->asked->requestingAt = Conductor::Instance().Now();
        own->asked->hasMissed = false;
    }
}

void Ledger::LeaveState(Life& life, const Actor* reporting)
{
    life.reporting = reporting;
}

// READY came from the main loop, and no result behind it. That is right where Bluetooth has gone on in
// mid-request.
void Ledger::EndDue(Life& life) const
{
    life.resultDue = 0;
    if (life.destroyBegun != kNever) {
        return;
    }
    Require(life.IsNodLink() && m_room.HasBluetoothGoneOn(), "result", "READY came without its result");
    Overtake(life);
}

void Ledger::EndTurn(const Actor& actor)
{
    const std::size_t turns = actor.Count(Frame::Kind::loop);
    for (Life& life : m_lives) {
        if (life.resultDue >= turns) {
            EndDue(life);
        }
    }
}

// A stale handle may have become that of a new service in the middle of a call.
Life& Ledger::LifeOf(const Asked& asked)
{
    Require(asked.life != nullptr, "late", "a callback of a call without a service is called");
    Life* now = Find(asked.life->handle);
    return now != nullptr && asked.life->IsDestroyed() ? *now : *asked.life;
}

void Ledger::OnFound(const Asked& asked, const Actor& actor)
{
    Life& life = LifeOf(asked);
    ++life.phones;
    if (CheckMayReport(life, actor)) {
        CheckLastGiven(life.scans, asked, actor.realStopAt);
    }
}

void Ledger::OnResult(const Asked& asked, lyn_request_initiating_result_e result, const Actor& actor)
{
    Life& life = LifeOf(asked);
    if (!CheckMayReport(life, actor)) {
        return;
    }
    Require(actor.frames.back().kind == Frame::Kind::loop, "result",
            "a result comes from outside of the main loop");
    Require(life.resultDue == actor.Count(Frame::Kind::loop), "result", "a result comes without its READY");
    life.resultDue = 0;
    CheckLastGiven(life.requests, asked, life.resultDueAt);
    Require(asked.begun <= life.readyAt, "callback", "a result comes to a call that was made after READY");
    Asked& request = MatchResult(life, result);
    const bool mayHaveEnded = Conductor::Instance().HasFineStops() && !request.actor->IsAtRealStop();
    Require(request.ended != kNever || mayHaveEnded, "result",
            "a result comes before its request's call has ended");
    request.hasResult = true;
    ++TheOutcome().counts.results.at(static_cast<std::size_t>(result));
}

// An exchange that is left in the middle of its end may still take down the link, which another one uses by now.
bool Ledger::WasAbandoned(int phone) const
{
    return std::any_of(m_asked.begin(), m_asked.end(), [&](const Asked& asked) {
        const bool isLeft = asked.isOvertaken || (asked.life != nullptr && asked.life->destroyBegun != kNever);
        return asked.phone == phone && asked.isRequest && !asked.hasResult && isLeft;
    });
}

/// The request that this is the result of: of the open ones, the one that began to wait first.
Asked& Ledger::MatchResult(const Life& life, lyn_request_initiating_result_e result) const
{
    Asked* first = nullptr;
    for (Asked* asked : life.requests) {
        const bool isOpen = asked->IsRequesting() && !asked->isOvertaken && !asked->hasResult;
        if (isOpen && (first == nullptr || asked->requestingAt < first->requestingAt)) {
            first = asked;
        }
    }
    Require(first != nullptr, "result", "a result comes without a request");
    const bool mayBeCut = result == LYN_REQUEST_INITIATING_RESULT_GATT_FAIL && WasAbandoned(first->phone);
    Require(mayBeCut || m_room.MayAnswer(first->phone, life.service, result), "result",
            "the result " + std::to_string(result) + " is not of phone " + std::to_string(first->phone));
    return *first;
}

}  // namespace lyn::schedules
