// SPDX-License-Identifier: Apache-2.0
//
// Lets one thread run at a time. Each thread stops at every platform call of the library, in every callback and
// between its calls; the conductor then has a chooser say who goes on.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "schedules/Actor.h"
#include "schedules/Script.h"

namespace lyn::schedules {

class Conductor;

/// Says what comes next, given where all threads are.
class Chooser {
public:
    virtual ~Chooser() = default;
    /// A move that fits; some thread is ready.
    virtual Move Next(const Conductor& conductor) = 0;
    /// No further call is to come: the threads go on to their ends.
    virtual bool IsOver() const = 0;
};

class Conductor {
public:
    using Program = std::function<void(Move first)>;

    /// Never destroyed: the process may end while threads wait.
    static Conductor& Instance();

    /// Starts the threads beside the main loop.
    void Start(int workers, const Program& program);
    /// Ends them.
    void Quit();

    /// A schedule begins: the calling thread is the main loop.
    void Begin(Chooser& chooser, const Script& header);
    /// ... and ends: the calling thread goes on alone, and stops nowhere.
    void End();

    /// The running thread, or null for one that is not of a schedule.
    static Actor* Me();

    Move Stop(StopKind at, const char* place);
    /// The running thread has come to its end.
    void Leave();

    /// The running thread cannot go on before a mutex is released.
    void Wait(const void* mutex);
    void Released(const void* mutex);
    /// Stops there, in a schedule that asks for it.
    void StopAtLock();
    void StopAtLog();

    bool Fits(const Move& move) const;
    bool HasReady() const;
    bool HaveWorkersEnded() const;
    /// All workers that have not ended wait.
    bool AreWorkersStuck() const;
    bool IsOver() const { return m_chooser->IsOver(); }

    const std::vector<std::unique_ptr<Actor>>& Actors() const { return m_actors; }
    const Actor* Running() const { return m_running; }
    Actor* Find(char name) const;
    /// Counts moves.
    std::uint64_t Now() const { return m_now; }
    /// Some thread may be between two stops that are none in every schedule.
    bool HasFineStops() const { return m_stopsAtLocks || m_stopsAtLogs; }
    std::string Describe() const;

    /// What happens at a move of the TV.
    std::function<void(const Move&)> onTv;
    bool isTraced = false;

private:
    Conductor();
    Actor& Pick();
    void HandOver(Actor& from);
    void TraceEndOfMove(const Actor& actor) const;
    void RunWorker(Actor& actor, const Program& program);

    std::vector<std::unique_ptr<Actor>> m_actors;  ///< the main loop's first
    std::vector<std::thread> m_threads;
    Actor* m_running = nullptr;
    Chooser* m_chooser = nullptr;
    std::uint64_t m_now = 0;
    bool m_stopsAtLocks = false;
    bool m_stopsAtLogs = false;
    bool m_isQuitting = false;
};

}  // namespace lyn::schedules
