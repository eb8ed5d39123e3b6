// SPDX-License-Identifier: Apache-2.0
#include "schedules/Choosers.h"

#include <algorithm>

#include "schedules/Application.h"

namespace lyn::schedules {
namespace {

constexpr std::size_t kDeepest = 9;
constexpr int kShortestSleep = 20;
constexpr int kLongestSleep = 200;

bool HasService()
{
    return TheLedger().HasService();
}

}  // namespace

// Splitmix64.
std::uint64_t Random::Next()
{
    m_state += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = m_state;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
}

RandomChooser::RandomChooser(std::uint64_t seed, bool endsProcess, int workers)
    : m_random(seed),
      m_calls(8 + m_random.Below(20)),
      m_mood(m_random.Percent(25) ? Unrest() : Everything()),
      m_events(m_random.Percent(50) ? m_mood.leastEvents + m_random.Below(m_mood.mostEvents) : m_mood.leastEvents),
      m_eventPercent(m_random.Of<int>({2, 5, 15})),
      m_switchPercent(m_random.Of<int>({8, 25, 50, 100})),
      m_loopPercent(m_random.Of<int>({0, 30, 60, 85})),
      m_sleepPercent(m_random.Of<int>({0, 0, 1, 3})),
      m_callbackPercent(m_random.Of<int>({5, 25, 50})),
      m_hasFaults(m_random.Percent(20))
{
    for (int phone = 0; phone < kPhones; ++phone) {
        m_header.room.push_back(m_random.Percent(50) ? 0 : m_random.Below(kBehaviours));
    }
    const int drawn = m_random.Of<int>({1, 2, 2, 2, 3, 3});
    m_header.workers = workers >= 0 ? workers : drawn;
    m_header.stopsAtLocks = m_random.Percent(25);
    m_header.stopsAtLogs = m_random.Percent(5);
    m_header.story = m_random.Below(3);
    if (endsProcess) {
        m_exitAt = m_random.Below(m_calls);
    }
}

Move RandomChooser::Next(const Conductor& conductor)
{
    if (!IsOver() && m_events > 0 && m_random.Percent(m_eventPercent)) {
        --m_events;
        return PickTv();
    }
    return PickMove(PickActor(conductor));
}

// Without the one that sleeps, unless all others wait for it.
std::vector<const Actor*> RandomChooser::PickReady(const Conductor& conductor)
{
    std::vector<const Actor*> ready;
    for (const auto& actor : conductor.Actors()) {
        if (actor->state == Actor::State::ready) {
            ready.push_back(actor.get());
        }
    }
    if (m_sleep == 0 && m_random.Percent(m_sleepPercent)) {
        m_sleeper = m_random.Of(ready);
        m_sleep = kShortestSleep + m_random.Below(kLongestSleep - kShortestSleep);
    }
    if (m_sleep > 0 && ready.size() > 1) {
        --m_sleep;
        std::erase(ready, m_sleeper);
    }
    return ready;
}

const Actor& RandomChooser::PickActor(const Conductor& conductor)
{
    const std::vector<const Actor*> ready = PickReady(conductor);
    const auto isReady = [&](const Actor* actor) {
        return std::find(ready.begin(), ready.end(), actor) != ready.end();
    };
    const Actor* running = conductor.Running();
    const Actor* loop = conductor.Actors().front().get();
    if (isReady(running) && !m_random.Percent(m_switchPercent)) {
        return *running;
    }
    return isReady(loop) && m_random.Percent(m_loopPercent) ? *loop : *m_random.Of(ready);
}

Move RandomChooser::PickMove(const Actor& actor)
{
    if (!actor.IsAtCallPoint() || IsOver()) {
        return {actor.name};
    }
    if (actor.IsMain() && m_calls <= m_exitAt) {
        m_exitAt = -1;
        return {actor.name, What::exit};
    }
    if (actor.at == StopKind::callback) {
        const bool mayCall = actor.frames.size() < kDeepest && m_random.Percent(m_callbackPercent);
        if (mayCall && actor.IsMain() && m_random.Percent(10)) {
            return {actor.name, What::iterate};
        }
        return mayCall ? PickCall(actor) : Move{actor.name};
    }
    return actor.IsMain() && !m_random.Percent(15) ? Move{actor.name} : PickCall(actor);
}

What RandomChooser::PickVerb()
{
    if (!HasService() && m_random.Percent(75)) {
        return What::create;
    }
    int sum = 0;
    for (const Weight& one : m_mood.calls) {
        sum += one.weight;
    }
    int drawn = m_random.Below(sum);
    for (const Weight& one : m_mood.calls) {
        drawn -= one.weight;
        if (drawn < 0) {
            return one.what;
        }
    }
    return What::stop;
}

Move RandomChooser::PickCall(const Actor& actor)
{
    --m_calls;
    Move move{actor.name, PickVerb()};
    switch (move.what) {
    case What::create:
        move.number = m_random.Of(m_mood.services);
        break;
    case What::request:
    case What::requestExtra:
        move.number = m_random.Percent(95) ? m_random.Below(kPhones) : kAbsentPhone + m_random.Below(2);
        break;
    case What::advertise:
        move.number = m_random.Percent(90) ? m_random.Below(5) : m_random.Of<int>({-1, 5});
        break;
    case What::version:
        move.number = m_random.Percent(90) ? m_random.Below(2) : 2;
        break;
    case What::text:
        move.number = m_random.Below(4);
        break;
    default:
        break;
    }
    if (move.what != What::create && m_random.Percent(6)) {
        move.handle = m_random.Percent(70) ? Handle::old : Handle::null;
    }
    return move;
}

Move RandomChooser::PickTv()
{
    const What drawn = m_random.Of(m_mood.events);
    const What what = drawn == What::fail && !m_hasFaults ? What::elapse : drawn;
    Move move{'T', what};
    if (what == What::loseLink) {
        move.number = m_random.Below(kPhones);
    } else if (what == What::channel) {
        move.number = m_random.Of<int>({-1, -1, 0});
    } else if (what == What::fail) {
        move.number = m_random.Below(static_cast<int>(FallibleFunctions().size()));
    }
    return move;
}

Move ScriptChooser::Next(const Conductor& conductor)
{
    while (!IsOver()) {
        const Move& move = m_script.moves[m_next++];
        if (conductor.Fits(move)) {
            return move;
        }
    }
    const Actor* running = conductor.Running();
    if (running != nullptr && !running->IsMain() && running->state == Actor::State::ready) {
        return {running->name};
    }
    for (const auto& actor : conductor.Actors()) {
        if (!actor->IsMain() && actor->state == Actor::State::ready) {
            return {actor->name};
        }
    }
    return {'M'};
}

}  // namespace lyn::schedules
