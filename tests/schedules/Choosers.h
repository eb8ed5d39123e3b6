// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "schedules/Conductor.h"
#include "schedules/Mood.h"

namespace lyn::schedules {

/// The same numbers from the same seed, everywhere.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t Next();
    int Below(int limit) { return static_cast<int>(Next() % static_cast<std::uint64_t>(limit)); }
    bool Percent(int percent) { return Below(100) < percent; }
    template <typename Value>
    const Value& Of(const std::vector<Value>& values)
    {
        return values[static_cast<std::size_t>(Below(static_cast<int>(values.size())))];
    }

private:
    std::uint64_t m_state;
};

/// Chooses by a seed.
class RandomChooser : public Chooser {
public:
    /// @param endsProcess the main loop ends the process in the middle
    /// @param workers threads beside the main loop, or -1: as the seed says
    RandomChooser(std::uint64_t seed, bool endsProcess, int workers);

    const Script& Header() const { return m_header; }
    Move Next(const Conductor& conductor) override;
    bool IsOver() const override { return m_calls <= 0; }

private:
    std::vector<const Actor*> PickReady(const Conductor& conductor);
    const Actor& PickActor(const Conductor& conductor);
    Move PickMove(const Actor& actor);
    Move PickCall(const Actor& actor);
    Move PickTv();
    What PickVerb();

    Random m_random;
    Script m_header;
    int m_calls;  ///< still to come
    const Mood& m_mood;
    int m_events;           ///< of the TV, still to come
    int m_eventPercent;     ///< how often one comes
    int m_switchPercent;    ///< how often another thread goes on
    int m_loopPercent;      ///< ... and that this is the main loop
    int m_sleepPercent;     ///< how often a thread is left where it is for long
    int m_callbackPercent;  ///< how often a callback calls
    int m_exitAt = -1;      ///< calls left when the process ends
    const Actor* m_sleeper = nullptr;
    int m_sleep = 0;  ///< moves that it sleeps on
    bool m_hasFaults;
};

/// Plays a script, and lets all threads come to their ends then.
class ScriptChooser : public Chooser {
public:
    explicit ScriptChooser(const Script& script) : m_script(script) {}

    Move Next(const Conductor& conductor) override;
    bool IsOver() const override { return m_next >= m_script.moves.size(); }

private:
    const Script& m_script;
    std::size_t m_next = 0;
};

}  // namespace lyn::schedules
