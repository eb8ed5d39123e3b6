// SPDX-License-Identifier: Apache-2.0
#include "schedules/Ledger.h"

#include <algorithm>

#include "schedules/Codes.h"
#include "schedules/Conductor.h"
#include "schedules/Outcome.h"

namespace lyn::schedules {
namespace {

Time Now()
{
    return Conductor::Instance().Now();
}

void BeginDestruction(Life& life)
{
    ++life.destructions;
    life.destroyBegun = std::min(life.destroyBegun, Now());
}

bool IsBetweenFineStops(const Actor& actor)
{
    return actor.state == Actor::State::ready && (actor.at == StopKind::lock || actor.at == StopKind::log);
}

// The state may have been written, and its report be still to come.
bool IsUncertain(const Actor& me)
{
    const Conductor& conductor = Conductor::Instance();
    const auto& actors = conductor.Actors();
    return conductor.HasFineStops() && std::any_of(actors.begin(), actors.end(), [&](const auto& actor) {
               return actor.get() != &me && IsBetweenFineStops(*actor);
           });
}

/// Other threads may be about to call a callback. Without the stops that are none in every schedule, none of them
/// stands between having looked whether the service lives and the callback.
void NoteWhatIsUnderWay(Life& life, const Actor& me)
{
    const Conductor& conductor = Conductor::Instance();
    for (const auto& actor : conductor.Actors()) {
        if (actor.get() != &me && conductor.HasFineStops() && actor->IsInLibrary()) {
            life.mayStillReport.push_back(actor.get());
        }
    }
}

}  // namespace

void Ledger::Begin()
{
    m_lives.clear();
    m_asked.clear();
    m_latest = nullptr;
    m_beforeLatest = nullptr;
}

Life& Ledger::BeginLife(const std::string& service)
{
    Life& life = m_lives.emplace_back();
    life.service = service;
    life.begun = Now();
    life.mayLackParts = m_room.HasFaults();
    if (m_isProcessEnding) {
        BeginDestruction(life);
    }
    return life;
}

void Ledger::EndCreation(Life& life, lyn_error_e code, lyn_service_h handle)
{
    life.mayLackParts = life.mayLackParts || m_room.HasFaults();
    CheckCreation(life, code);
    Require((code == LYN_ERROR_NONE) == (handle != nullptr), "code", "a handle is given with 0, and only then");
    if (code != LYN_ERROR_NONE) {
        Require(life.history.empty(), "late", "a service that was not created reports a state");
        life.failed = Now();
        return;
    }
    life.handle = handle;
    life.created = Now();
    m_beforeLatest = m_latest;
    m_latest = &life;
}

void Ledger::CheckCreation(const Life& life, lyn_error_e code) const
{
    bool mayBeSecond = false;
    for (const Life& other : m_lives) {
        if (&other == &life) {
            continue;
        }
        const bool isFree = other.destroyBegun != kNever || other.created == kNever;
        Require(code != LYN_ERROR_NONE || isFree, "code", "a second service has been created");
        mayBeSecond = mayBeSecond || std::min(other.destroyed, other.failed) >= life.begun;
    }
    const bool isUnknown = life.service == ServiceNames().back();
    const bool mayBeRefused = life.IsNodLink() && (m_room.HasBluetoothBeenOff() || m_room.HasFaults());
    const bool isGood = (code == LYN_ERROR_NONE && !isUnknown) ||
                        (code == LYN_ERROR_INVALID_PARAMETER && isUnknown) ||
                        (code == LYN_ERROR_ALREADY_DONE && (mayBeSecond || m_isProcessEnding)) ||
                        (code == LYN_ERROR_INTERNAL && mayBeRefused);
    Require(isGood, "code", "lyn_create_service returns " + std::to_string(code));
}

void Ledger::Ask(Call& call)
{
    Asked& asked = m_asked.emplace_back();
    asked.life = call.life;
    asked.actor = &call.actor;
    asked.isRequest = call.move.what >= What::request;
    asked.phone = asked.isRequest ? call.move.number : 0;
    asked.isInsideState = call.life != nullptr && call.actor.IsInside(Frame::Kind::state, call.life);
    asked.begun = Now();
    call.asked = &asked;
    if (call.life != nullptr) {
        (asked.isRequest ? call.life->requests : call.life->scans).push_back(&asked);
    }
}

Life* Ledger::Find(lyn_service_h handle)
{
    Life* found = nullptr;
    for (Life& life : m_lives) {
        if (handle != nullptr && life.handle == handle && (found == nullptr || !found->IsAlive())) {
            found = &life;
        }
    }
    return found;
}

bool Ledger::HasService() const
{
    return std::any_of(m_lives.begin(), m_lives.end(),
                       [](const Life& life) { return life.failed == kNever && life.destroyBegun == kNever; });
}

void Ledger::BeginCall(Call& call)
{
    call.begun = Now();
    call.isUncertain = IsUncertain(call.actor);
    if (call.move.what != What::stop && IsWork(call.move.what)) {
        Ask(call);
    }
    Life* life = call.life;
    if (life == nullptr) {
        return;
    }
    call.stateBefore = life->state;
    call.historyBefore = life->history.size();
    call.isInsideState = call.actor.IsInside(Frame::Kind::state, life);
    call.isDisturbed = !life->calls.empty() || life->reporting != nullptr;
    for (Call* other : life->calls) {
        other->isDisturbed = true;
    }
    life->calls.push_back(&call);
    if (call.move.what == What::destroy) {
        BeginDestruction(*life);
    }
}

void Ledger::EndCall(Call& call, int code)
{
    call.isUncertain = call.isUncertain || IsUncertain(call.actor);
    Life* life = call.life;
    if (call.asked != nullptr) {
        call.asked->ended = Now();
        call.asked->code = code;
    }
    if (life != nullptr) {
        life->calls.erase(std::find(life->calls.begin(), life->calls.end(), &call));
        if (Find(life->handle) != life) {
            return;  // A new service has got the address meanwhile, and the call may have been for it.
        }
    }
    CheckCode(call, code, m_room);
    if (call.move.what == What::destroy && code == LYN_ERROR_NONE) {
        life->destroyed = Now();
        NoteWhatIsUnderWay(*life, call.actor);
    }
}

void Ledger::BeginProcessEnd()
{
    m_isProcessEnding = true;
    for (Life& life : m_lives) {
        if (life.failed == kNever && !life.IsDestroyed()) {
            BeginDestruction(life);
        }
    }
}

void Ledger::CheckEnd() const
{
    for (const Life& life : m_lives) {
        for (const Asked* asked : life.requests) {
            const bool isAccepted = asked->code == LYN_ERROR_NONE && asked->ended != kNever;
            const bool isEnded = asked->hasResult || asked->isOvertaken || asked->hasMissed || life.IsDestroyed();
            Require(!isAccepted || isEnded, "result", "an accepted request has had no result");
            TheOutcome().counts.overtaken += isAccepted && !asked->hasResult ? 1U : 0U;
        }
    }
}

}  // namespace lyn::schedules
