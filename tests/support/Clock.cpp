// SPDX-License-Identifier: Apache-2.0
#include "support/Clock.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <utility>

namespace {

struct Timeout {
    GSource* source;
    unsigned seconds;
};

std::mutex s_mutex;
std::vector<Timeout> s_timeouts;
lyn::test::SourceCallback s_lastTimeout;
std::vector<unsigned> s_sleeps;
std::function<void()> s_onSleep;
int s_interruptions = 0;

void ForgetEnded()
{
    const auto ended = std::remove_if(s_timeouts.begin(), s_timeouts.end(), [](const Timeout& timeout) {
        const bool isEnded = g_source_is_destroyed(timeout.source) != FALSE;
        if (isEnded) {
            g_source_unref(timeout.source);
        }
        return isEnded;
    });
    s_timeouts.erase(ended, s_timeouts.end());
}

}  // namespace

extern "C" guint g_timeout_add_seconds(guint interval, GSourceFunc function, gpointer data)
{
    const std::lock_guard lock(s_mutex);
    GSource* source = g_timeout_source_new_seconds(interval);
    g_source_set_callback(source, function, data, nullptr);
    const guint id = g_source_attach(source, nullptr);
    s_timeouts.push_back({source, interval});
    s_lastTimeout = {function, data};
    return id;
}

extern "C" int usleep(useconds_t duration)
{
    std::function<void()> onSleep;
    bool isInterrupted = false;
    {
        const std::lock_guard lock(s_mutex);
        s_sleeps.push_back(duration);
        onSleep = s_onSleep;
        isInterrupted = s_interruptions > 0;
        s_interruptions -= isInterrupted ? 1 : 0;
    }
    if (onSleep) {
        onSleep();
    }
    errno = isInterrupted ? EINTR : errno;
    return isInterrupted ? -1 : 0;
}

namespace lyn::test {

std::vector<unsigned> ArmedTimeouts()
{
    const std::lock_guard lock(s_mutex);
    ForgetEnded();
    std::vector<unsigned> seconds;
    for (const Timeout& timeout : s_timeouts) {
        seconds.push_back(timeout.seconds);
    }
    return seconds;
}

bool ElapseTimeout()
{
    const std::lock_guard lock(s_mutex);
    ForgetEnded();
    if (s_timeouts.empty()) {
        return false;
    }
    g_source_set_ready_time(s_timeouts.front().source, 0);
    return true;
}

SourceCallback LastTimeout()
{
    const std::lock_guard lock(s_mutex);
    return s_lastTimeout;
}

void OnSleep(std::function<void()> work)
{
    const std::lock_guard lock(s_mutex);
    s_onSleep = std::move(work);
}

void InterruptSleeps(int count)
{
    const std::lock_guard lock(s_mutex);
    s_interruptions = count;
}

std::vector<unsigned> Sleeps()
{
    const std::lock_guard lock(s_mutex);
    return s_sleeps;
}

void ForgetSleeps()
{
    const std::lock_guard lock(s_mutex);
    s_sleeps.clear();
}

}  // namespace lyn::test
