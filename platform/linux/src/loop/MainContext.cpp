// SPDX-License-Identifier: Apache-2.0
#include "loop/MainContext.h"

#include <utility>

namespace lyn::linux_platform {

namespace {

gboolean RunTask(gpointer task)
{
    (*static_cast<Task*>(task))();
    return G_SOURCE_REMOVE;
}

void DeleteTask(gpointer task)
{
    delete static_cast<Task*>(task);
}

/// Attaches a source that runs the task once, and gives the caller's reference back.
GSource* Attach(GSource* source, Task task)
{
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(source, &RunTask, new Task(std::move(task)), &DeleteTask);
    g_source_attach(source, nullptr);
    return source;
}

}  // namespace

void Post(Task task)
{
    g_source_unref(Attach(g_idle_source_new(), std::move(task)));
}

Timer::Timer(unsigned milliseconds, Task task)
    : m_source(Attach(g_timeout_source_new(milliseconds), std::move(task)))
{
}

Timer::~Timer()
{
    if (m_source != nullptr) {
        g_source_destroy(m_source);
        g_source_unref(m_source);
    }
}

Timer::Timer(Timer&& other) noexcept : m_source(std::exchange(other.m_source, nullptr)) {}

Timer& Timer::operator=(Timer&& other) noexcept
{
    std::swap(m_source, other.m_source);
    return *this;
}

}  // namespace lyn::linux_platform
