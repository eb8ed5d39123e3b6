// SPDX-License-Identifier: Apache-2.0
#include "schedules/Conductor.h"

#include <algorithm>
#include <cstdio>

#include "schedules/Freed.h"
#include "schedules/Outcome.h"
#include "schedules/Sight.h"
#include "schedules/Waits.h"

namespace lyn::schedules {
namespace {

constexpr std::uint64_t kMostMoves = 100000;

thread_local Actor* t_me = nullptr;

}  // namespace

Conductor::Conductor()
{
    m_actors.push_back(std::make_unique<Actor>('M'));
}

Conductor& Conductor::Instance()
{
    static auto* const instance = new Conductor;
    return *instance;
}

Actor* Conductor::Me()
{
    return t_me;
}

void Conductor::Start(int workers, const Program& program)
{
    for (int i = 0; i < workers; ++i) {
        Actor& actor = *m_actors.emplace_back(std::make_unique<Actor>(static_cast<char>('A' + i)));
        m_threads.emplace_back([this, &actor, program] { RunWorker(actor, program); });
    }
}

void Conductor::Quit()
{
    m_isQuitting = true;
    for (const auto& actor : m_actors) {
        actor->gate.Open();
    }
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

void Conductor::RunWorker(Actor& actor, const Program& program)
{
    const OutOfSight schedule;
    for (;;) {
        actor.gate.Pass();
        if (m_isQuitting) {
            return;
        }
        t_me = &actor;
        program(actor.move);
        Leave();
        t_me = nullptr;
    }
}

void Conductor::Begin(Chooser& chooser, const Script& header)
{
    m_chooser = &chooser;
    // A call that stops before it has looked its handle up might find a new service at the old address.
    m_stopsAtLocks = header.stopsAtLocks && KeepsAddresses();
    m_stopsAtLogs = header.stopsAtLogs && KeepsAddresses();
    m_now = 0;
    for (std::size_t i = 0; i < m_actors.size(); ++i) {
        Actor& actor = *m_actors[i];
        actor.at = StopKind::top;
        actor.state = i <= static_cast<std::size_t>(header.workers) ? Actor::State::ready : Actor::State::ended;
        actor.realStopAt = 0;
        actor.frames.clear();
        actor.held.clear();
    }
    OutOfSight::Begin();
    t_me = m_actors.front().get();
    m_running = t_me;
    t_me->state = Actor::State::running;
}

void Conductor::End()
{
    t_me->state = Actor::State::ended;
    t_me = nullptr;
    OutOfSight::End();
}

Move Conductor::Stop(StopKind at, const char* place)
{
    Actor& me = *t_me;
    me.at = at;
    me.place = place;
    me.state = Actor::State::ready;
    TraceEndOfMove(me);
    CheckWaitsFor(me);
    HandOver(me);
    if (me.IsAtRealStop()) {
        me.realStopAt = m_now;
    }
    return me.move;
}

void Conductor::Leave()
{
    Actor& me = *t_me;
    me.state = Actor::State::ended;
    TraceEndOfMove(me);
    Require(HasReady(), "deadlock", "all threads wait");
    Pick().gate.Open();
}

void Conductor::Wait(const void* mutex)
{
    Actor& me = *t_me;
    me.waitsFor = mutex;
    me.isWaitCounted = false;
    me.at = StopKind::wait;
    me.state = Actor::State::blocked;
    TraceEndOfMove(me);
    CheckWaitOf(me);
    Require(HasReady(), "deadlock", "all threads wait");
    HandOver(me);
}

void Conductor::Released(const void* mutex)
{
    for (const auto& actor : m_actors) {
        if (actor->state == Actor::State::blocked && actor->waitsFor == mutex) {
            actor->state = Actor::State::ready;
            CountWait(*actor);
        }
    }
}

void Conductor::StopAtLock()
{
    if (m_stopsAtLocks) {
        Stop(StopKind::lock, "");
    }
}

void Conductor::StopAtLog()
{
    if (m_stopsAtLogs) {
        Stop(StopKind::log, "");
    }
}

void Conductor::HandOver(Actor& from)
{
    Actor& to = Pick();
    if (&to != &from) {
        to.gate.Open();
        from.gate.Pass();
    }
}

Actor& Conductor::Pick()
{
    for (;;) {
        const Move move = m_chooser->Next(*this);
        Require(++m_now < kMostMoves, "endless", "the schedule does not come to its end");
        TheOutcome().heartbeat.fetch_add(1, std::memory_order_relaxed);
        TheOutcome().Record(move);
        if (IsTvMove(move.what)) {
            if (isTraced) {
                std::fprintf(stderr, "%s\n", ToText(move).c_str());
            }
            onTv(move);
            continue;
        }
        Actor& actor = *Find(move.who);
        actor.state = Actor::State::running;
        actor.move = move;
        m_running = &actor;
        return actor;
    }
}

void Conductor::TraceEndOfMove(const Actor& actor) const
{
    if (isTraced) {
        std::fprintf(stderr, "%-24s # %s\n", ToText(actor.move).c_str(), actor.Describe().c_str());
    }
}

bool Conductor::Fits(const Move& move) const
{
    if (IsTvMove(move.what)) {
        return true;
    }
    const Actor* actor = Find(move.who);
    if (actor == nullptr || actor->state != Actor::State::ready) {
        return false;
    }
    if (move.what == What::goOn) {
        // A worker ends when all is over, and not before.
        return actor->IsMain() || actor->at != StopKind::top || IsOver();
    }
    if (move.what == What::iterate) {
        return actor->IsMain() && actor->at == StopKind::callback;
    }
    return actor->IsAtCallPoint() && (actor->IsMain() || move.what != What::exit);
}

bool Conductor::HasReady() const
{
    return std::any_of(m_actors.begin(), m_actors.end(),
                       [](const auto& actor) { return actor->state == Actor::State::ready; });
}

bool Conductor::HaveWorkersEnded() const
{
    return std::all_of(m_actors.begin() + 1, m_actors.end(),
                       [](const auto& actor) { return actor->state == Actor::State::ended; });
}

bool Conductor::AreWorkersStuck() const
{
    return std::all_of(m_actors.begin() + 1, m_actors.end(), [](const auto& actor) {
        return actor->state == Actor::State::ended || actor->state == Actor::State::blocked;
    });
}

Actor* Conductor::Find(char name) const
{
    const auto found =
        std::find_if(m_actors.begin(), m_actors.end(), [&](const auto& actor) { return actor->name == name; });
    return found != m_actors.end() ? found->get() : nullptr;
}

std::string Conductor::Describe() const
{
    std::string text;
    for (const auto& actor : m_actors) {
        text += "        " + actor->Describe() + "\n";
    }
    return text;
}

}  // namespace lyn::schedules
