// SPDX-License-Identifier: Apache-2.0
#include "schedules/Waits.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <optional>

#include "schedules/Conductor.h"
#include "schedules/Outcome.h"

namespace lyn::schedules {
namespace {

const Actor* HolderOf(const void* mutex)
{
    for (const auto& actor : Conductor::Instance().Actors()) {
        if (std::find(actor->held.begin(), actor->held.end(), mutex) != actor->held.end()) {
            return actor.get();
        }
    }
    return nullptr;
}

/// The thread that all wait for in the end, or null: a circle, or a condition that nobody holds.
const Actor* EndOfChain(const Actor& waiting)
{
    const Actor* actor = HolderOf(waiting.waitsFor);
    for (std::size_t i = 0; actor != nullptr && actor->state == Actor::State::blocked; ++i) {
        if (i > Conductor::Instance().Actors().size()) {
            return nullptr;
        }
        actor = HolderOf(actor->waitsFor);
    }
    return actor;
}

bool IsAtWork(const Actor& actor, const Life* life)
{
    return std::any_of(actor.frames.begin(), actor.frames.end(), [&](const Frame& frame) {
        return frame.kind == Frame::Kind::call && IsWork(frame.what) && frame.life == life;
    });
}

bool IsInOneOf(const Actor& actor, std::initializer_list<const char*> functions)
{
    const Frame& inner = actor.frames.back();
    return inner.kind == Frame::Kind::platform &&
           std::any_of(functions.begin(), functions.end(),
                       [&](const char* one) { return std::strcmp(inner.name, one) == 0; });
}

std::optional<Reason> ReasonOf(const Actor& waiting, const Actor& holder)
{
    if (waiting.frames.empty() || holder.frames.empty()) {
        return std::nullopt;
    }
    const Frame& inner = waiting.frames.back();
    const bool isWork = inner.kind == Frame::Kind::call && IsWork(inner.what);
    if (isWork && IsAtWork(holder, inner.life)) {
        return Reason::work;
    }
    const bool isLoop = inner.kind == Frame::Kind::loop;
    if ((isLoop && holder.Count(Frame::Kind::state) > 0) ||
        (isWork && holder.IsInside(Frame::Kind::state, inner.life))) {
        return Reason::state;
    }
    if (isWork &&
        IsInOneOf(holder, {"bt_adapter_le_start_scan", "bt_adapter_le_stop_scan", "bt_adapter_le_set_scan_mode",
                           "bt_adapter_le_set_customized_scan_mode_with_scan_type", "vconf_get_int",
                           "bt_adapter_le_enable_le_scan_performance_boost"})) {
        return Reason::scan;
    }
    const bool isRequest = isWork && inner.what >= What::request;
    if (isRequest &&
        IsInOneOf(holder, {"bt_gatt_set_connection_state_changed_cb", "bt_gatt_unset_connection_state_changed_cb",
                           "bt_gatt_connect", "bt_gatt_disconnect"})) {
        return Reason::registration;
    }
    return std::nullopt;
}

/// Who has the lock; for a condition, any other thread.
std::vector<const Actor*> AwaitedBy(const Actor& waiting)
{
    if (const Actor* holder = HolderOf(waiting.waitsFor); holder != nullptr) {
        return {holder};
    }
    std::vector<const Actor*> others;
    for (const auto& actor : Conductor::Instance().Actors()) {
        if (actor.get() != &waiting && actor->state != Actor::State::ended) {
            others.push_back(actor.get());
        }
    }
    return others;
}

/// Some thread may be about to tell those that wait for a condition.
bool IsAnyBetweenStops(const Actor& waiting)
{
    const auto& actors = Conductor::Instance().Actors();
    return std::any_of(actors.begin(), actors.end(), [&](const auto& actor) {
        return actor.get() != &waiting && actor->state == Actor::State::ready && !actor->IsAtRealStop();
    });
}

void Count(Actor& waiting, Reason reason)
{
    waiting.isWaitCounted = true;
    ++TheOutcome().counts.waits.at(static_cast<std::size_t>(reason));
}

void Judge(Actor& waiting)
{
    if (waiting.isWaitCounted) {
        return;
    }
    std::string others;
    for (const Actor* other : AwaitedBy(waiting)) {
        if (const auto reason = ReasonOf(waiting, *other); reason) {
            Count(waiting, *reason);
            return;
        }
        others += std::string(" ") + other->name;
    }
    if (HolderOf(waiting.waitsFor) != nullptr || !IsAnyBetweenStops(waiting)) {
        Fail("waits", std::string(1, waiting.name) + " must not wait for" + others);
    }
}

}  // namespace

void CheckWaitOf(Actor& waiting)
{
    const Actor* holder = HolderOf(waiting.waitsFor);
    Require(holder != &waiting, "waits", std::string(1, waiting.name) + " waits for itself");
    const Actor* end = EndOfChain(waiting);
    if (holder == nullptr || (end != nullptr && end->IsAtRealStop())) {
        Judge(waiting);
    }
}

void CheckWaitsFor(const Actor& stopped)
{
    if (!stopped.IsAtRealStop()) {
        return;
    }
    for (const auto& actor : Conductor::Instance().Actors()) {
        const bool isBlocked = actor->state == Actor::State::blocked;
        if (isBlocked && (EndOfChain(*actor) == &stopped || HolderOf(actor->waitsFor) == nullptr)) {
            Judge(*actor);
        }
    }
}

void CountWait(Actor& waited)
{
    if (!waited.isWaitCounted) {
        Count(waited, Reason::momentary);
    }
}

}  // namespace lyn::schedules
