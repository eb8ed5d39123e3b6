// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

namespace lyn::simulator {

/// Things still to happen, done one after the other on the GLib default main context, in the order of
/// their time and then of their posting.
///
/// The caller holds the simulator's lock for every function; a task runs without it.
class Loop {
public:
    using Task = std::function<void()>;

    /// Awaited tasks are what Settle() waits for; the background is what goes on for ever or comes by a
    /// script: repeated advertisements, and the scenario's timeline.
    enum class Kind { awaited, background };

    /// A task's place in the queue.
    using Ticket = std::pair<gint64, std::uint64_t>;

    explicit Loop(std::mutex& mutex);

    Ticket Post(Kind kind, int delayMs, Task task);
    Ticket PostAt(Kind kind, gint64 dueUs, Task task);
    /// Takes a task back. One that was begun meanwhile goes on: it has to find out that it came too late.
    void Cancel(const Ticket& ticket);
    void Clear();
    bool HasAwaited() const;

    /// Keeps background tasks back, until released as often as held.
    void HoldBackground();
    void ReleaseBackground();

    /// The loop's clock, in microseconds.
    static gint64 Now();

private:
    using Queue = std::map<Ticket, Task>;

    static gboolean Dispatch(GSource* source, GSourceFunc, gpointer);
    void RunOne();
    Queue* Earliest();
    void Rearm();

    std::mutex& m_mutex;
    GSource* m_source;
    Queue m_awaited;
    Queue m_background;
    std::uint64_t m_posted = 0;
    int m_holds = 0;
};

}  // namespace lyn::simulator
