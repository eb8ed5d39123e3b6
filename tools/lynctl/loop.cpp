// SPDX-License-Identifier: Apache-2.0
#include "loop.h"

#include <glib-unix.h>

#include <csignal>
#include <optional>
#include <utility>

namespace lynctl {

Timer::Timer(unsigned milliseconds, std::function<bool()> tick) : m_tick(std::move(tick))
{
    const auto run = [](gpointer data) -> gboolean {
        auto* const self = static_cast<Timer*>(data);
        if (self->m_tick()) {
            return G_SOURCE_CONTINUE;
        }
        self->m_source = 0;
        return G_SOURCE_REMOVE;
    };
    m_source = g_timeout_add(milliseconds, run, this);
}

Timer::~Timer()
{
    if (m_source != 0) {
        g_source_remove(m_source);
    }
}

Loop::Loop()
    : m_loop(g_main_loop_new(nullptr, FALSE)),
      m_begin(g_get_monotonic_time()),
      m_interrupt(g_unix_signal_add(SIGINT, OnInterrupt, this)),
      m_terminate(g_unix_signal_add(SIGTERM, OnTerminate, this))
{
}

Loop::~Loop()
{
    if (m_interrupt != 0) {
        g_source_remove(m_interrupt);
    }
    if (m_terminate != 0) {
        g_source_remove(m_terminate);
    }
    g_main_loop_unref(m_loop);
}

LoopEnd Loop::Run(unsigned milliseconds)
{
    if (!m_ended) {
        std::optional<Timer> timer;
        if (milliseconds > 0) {
            timer.emplace(milliseconds, [this] {
                End(LoopEnd::time);
                return false;
            });
        }
        g_main_loop_run(m_loop);
    }
    m_ended = false;
    return m_reason;
}

double Loop::Seconds() const
{
    return static_cast<double>(g_get_monotonic_time() - m_begin) / G_USEC_PER_SEC;
}

void Loop::End(LoopEnd reason)
{
    if (m_ended) {
        return;
    }
    m_ended = true;
    m_reason = reason;
    g_main_loop_quit(m_loop);
}

gboolean Loop::OnInterrupt(gpointer self)
{
    auto* const loop = static_cast<Loop*>(self);
    loop->m_interrupt = 0;
    loop->End(LoopEnd::interrupted);
    return G_SOURCE_REMOVE;
}

gboolean Loop::OnTerminate(gpointer self)
{
    auto* const loop = static_cast<Loop*>(self);
    loop->m_terminate = 0;
    loop->End(LoopEnd::terminated);
    return G_SOURCE_REMOVE;
}

}  // namespace lynctl
