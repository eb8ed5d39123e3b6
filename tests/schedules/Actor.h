// SPDX-License-Identifier: Apache-2.0
//
// A thread of a schedule: where it is and what it waits for. Read and changed by whichever thread runs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "schedules/Gate.h"
#include "schedules/Move.h"

namespace lyn::schedules {

struct Life;

/// Where a thread stops.
enum class StopKind {
    top,       ///< between its calls; the main loop: between its turns
    callback,  ///< in a callback of the application, between its calls
    before,    ///< a platform call is about to begin ...
    after,     ///< ... or has done its work
    sleep,
    lock,  ///< before a lock of the library; not in every schedule
    log,   ///< at a line of the log; not in every schedule
    wait   ///< for a lock that another thread has
};

/// What a thread is inside of.
struct Frame {
    enum class Kind { call, platform, state, found, result, loop, exit };

    Kind kind = Kind::call;
    What what = What::goOn;      ///< of a call
    const char* name = "";       ///< of a function
    const Life* life = nullptr;  ///< of a call or callback
};

struct Actor {
    enum class State { ready, running, blocked, ended };

    explicit Actor(char theName) : name(theName) {}

    const char name;
    State state = State::ended;
    StopKind at = StopKind::top;
    const char* place = "";
    std::vector<Frame> frames;
    std::vector<const void*> held;  ///< mutexes
    const void* waitsFor = nullptr;
    bool isWaitCounted = false;
    Move move;                     ///< what it goes on for
    std::uint64_t realStopAt = 0;  ///< when it went on from its last stop that is one in every schedule
    Gate gate;

    bool IsMain() const { return name == 'M'; }
    /// May begin a call.
    bool IsAtCallPoint() const { return at == StopKind::top || at == StopKind::callback; }
    /// In a platform call, a sleep, a callback or outside of the library: where it must hold no lock that others
    /// need.
    bool IsAtRealStop() const { return at < StopKind::lock; }
    /// Not outside of it, and not in a callback of the application.
    bool IsInLibrary() const;
    std::size_t Count(Frame::Kind kind) const;
    bool IsInside(Frame::Kind kind, const Life* life) const;
    /// "M in lyn_stop_scan, in the state callback, before bt_adapter_le_stop_scan"
    std::string Describe() const;
};

/// Puts a frame on top of the running thread's.
class FrameScope {
public:
    FrameScope(Actor& actor, const Frame& frame) : m_actor(actor) { m_actor.frames.push_back(frame); }
    ~FrameScope() { m_actor.frames.pop_back(); }
    FrameScope(const FrameScope&) = delete;
    FrameScope& operator=(const FrameScope&) = delete;

private:
    Actor& m_actor;
};

}  // namespace lyn::schedules
