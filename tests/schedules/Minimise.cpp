// SPDX-License-Identifier: Apache-2.0
#include "schedules/Minimise.h"

#include <algorithm>

namespace lyn::schedules {
namespace {

constexpr int kMostTries = 3000;

/// As many as the moves need.
int WorkersOf(const Script& script)
{
    char last = 'A' - 1;
    for (const Move& move : script.moves) {
        last = move.who >= 'A' && move.who <= 'C' ? std::max(last, move.who) : last;
    }
    return last - ('A' - 1);
}

class Minimiser {
public:
    Minimiser(const Ending& ending, Task task, const std::function<void()>& onTick)
        : m_ending(ending),
          m_task(task),
          m_onTick(onTick)
    {
        m_task.isQuiet = true;
        m_task.isTraced = false;
    }

    bool Fails(const Script& script)
    {
        ++m_tries;
        m_task.script = &script;
        const Ending ending = PlayInProcess(m_task, m_onTick);
        return !ending.isGood && ending.kind == m_ending.kind;
    }

    /// Leaves out pieces of this many moves, each where the rest still fails.
    bool LeaveOut(Script& script, std::size_t size)
    {
        bool isShorter = false;
        for (std::size_t end = script.moves.size(); end > 0 && m_tries < kMostTries;) {
            const std::size_t begin = end > size ? end - size : 0;
            Script shorter = script;
            shorter.moves.erase(shorter.moves.begin() + static_cast<std::ptrdiff_t>(begin),
                                shorter.moves.begin() + static_cast<std::ptrdiff_t>(end));
            if (Fails(shorter)) {
                script = shorter;
                isShorter = true;
            }
            end = std::min(begin, script.moves.size());
        }
        return isShorter;
    }

    void Simplify(Script& script)
    {
        std::vector<Script> simpler(2, script);
        simpler[0].stopsAtLogs = false;
        simpler[1].stopsAtLocks = false;
        for (std::size_t phone = 0; phone < script.room.size(); ++phone) {
            simpler.push_back(script);
            simpler.back().room[phone] = 0;
        }
        simpler.push_back(script);
        simpler.back().workers = WorkersOf(script);
        for (const Script& one : simpler) {
            Script both = script;
            both.stopsAtLogs = both.stopsAtLogs && one.stopsAtLogs;
            both.stopsAtLocks = both.stopsAtLocks && one.stopsAtLocks;
            both.workers = std::min(both.workers, one.workers);
            for (std::size_t phone = 0; phone < script.room.size(); ++phone) {
                both.room[phone] = std::min(both.room[phone], one.room[phone]);
            }
            if (Fails(both)) {
                script = both;
            }
        }
    }

    bool IsTired() const { return m_tries >= kMostTries; }

private:
    const Ending& m_ending;
    Task m_task;
    const std::function<void()>& m_onTick;
    int m_tries = 0;
};

}  // namespace

Script Minimise(const Script& script, const Ending& ending, Task task, const std::function<void()>& onTick)
{
    Minimiser minimiser(ending, task, onTick);
    if (ending.kind == "stands still" || !minimiser.Fails(script)) {
        return script;
    }
    Script shortest = script;
    for (std::size_t size = std::max<std::size_t>(1, script.moves.size() / 2);; size /= 2) {
        minimiser.LeaveOut(shortest, size);
        if (size == 1) {
            break;
        }
    }
    minimiser.Simplify(shortest);
    while (!minimiser.IsTired() && minimiser.LeaveOut(shortest, 1)) {}
    return shortest;
}

}  // namespace lyn::schedules
