// SPDX-License-Identifier: Apache-2.0
#include "Loop.h"

namespace lyn::simulator {

namespace {

struct LoopSource {
    GSource base;
    Loop* loop;
};

}  // namespace

Loop::Loop(std::mutex& mutex) : m_mutex(mutex)
{
    static GSourceFuncs functions = {nullptr, nullptr, &Loop::Dispatch, nullptr, nullptr, nullptr};
    m_source = g_source_new(&functions, sizeof(LoopSource));
    reinterpret_cast<LoopSource*>(m_source)->loop = this;
    g_source_set_static_name(m_source, "lyn simulator");
    // A callback may run the main context itself, and the simulation goes on then.
    g_source_set_can_recurse(m_source, TRUE);
    g_source_attach(m_source, nullptr);
}

Loop::Ticket Loop::Post(Kind kind, int delayMs, Task task)
{
    return PostAt(kind, Now() + gint64{delayMs} * 1000, std::move(task));
}

Loop::Ticket Loop::PostAt(Kind kind, gint64 dueUs, Task task)
{
    Queue& queue = kind == Kind::awaited ? m_awaited : m_background;
    const Ticket ticket(dueUs, ++m_posted);
    queue.emplace(ticket, std::move(task));
    Rearm();
    return ticket;
}

void Loop::Cancel(const Ticket& ticket)
{
    m_awaited.erase(ticket);
    m_background.erase(ticket);
    Rearm();
}

void Loop::Clear()
{
    m_awaited.clear();
    m_background.clear();
    Rearm();
}

bool Loop::HasAwaited() const
{
    return !m_awaited.empty();
}

void Loop::HoldBackground()
{
    ++m_holds;
    Rearm();
}

void Loop::ReleaseBackground()
{
    --m_holds;
    Rearm();
}

gint64 Loop::Now()
{
    return g_get_monotonic_time();
}

gboolean Loop::Dispatch(GSource* source, GSourceFunc, gpointer)
{
    reinterpret_cast<LoopSource*>(source)->loop->RunOne();
    return G_SOURCE_CONTINUE;
}

void Loop::RunOne()
{
    Task task;
    {
        std::lock_guard lock(m_mutex);
        Queue* queue = Earliest();
        if (queue != nullptr && queue->begin()->first.first <= Now()) {
            task = std::move(queue->begin()->second);
            queue->erase(queue->begin());
        }
        Rearm();
    }
    if (task) {
        task();
    }
}

Loop::Queue* Loop::Earliest()
{
    Queue* background = m_holds == 0 && !m_background.empty() ? &m_background : nullptr;
    if (m_awaited.empty()) {
        return background;
    }
    if (background == nullptr || m_awaited.begin()->first < background->begin()->first) {
        return &m_awaited;
    }
    return background;
}

void Loop::Rearm()
{
    const Queue* queue = Earliest();
    g_source_set_ready_time(m_source, queue != nullptr ? queue->begin()->first.first : -1);
}

}  // namespace lyn::simulator
