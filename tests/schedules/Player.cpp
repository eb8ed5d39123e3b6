// SPDX-License-Identifier: Apache-2.0
#include "schedules/Player.h"

#include <fcntl.h>
#include <glib.h>
#include <sched.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>

#include "schedules/Choosers.h"
#include "schedules/Outcome.h"
#include "schedules/ProcessEnd.h"
#include "schedules/Schedule.h"

namespace lyn::schedules {
namespace {

void BeQuiet()
{
    const int nowhere = ::open("/dev/null", O_WRONLY);
    if (nowhere >= 0) {
        ::dup2(nowhere, STDERR_FILENO);
        ::close(nowhere);
    }
}

void PlayTask(const Task& task)
{
    if (task.script != nullptr) {
        ScriptChooser chooser(*task.script);
        Play(chooser, *task.script);
        return;
    }
    for (std::uint64_t seed = task.firstSeed; seed < task.firstSeed + task.count; ++seed) {
        TheOutcome().seed = seed;
        RandomChooser chooser(seed, task.endsProcess, task.workers);
        Play(chooser, chooser.Header());
    }
}

// Threads that run one after the other are quicker on one processor. Neighbouring seeds are on different ones.
void StayOnOneProcessor(std::uint64_t number)
{
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (::sched_getaffinity(0, sizeof(allowed), &allowed) != 0) {
        return;
    }
    auto left = number % static_cast<std::uint64_t>(CPU_COUNT(&allowed));
    for (std::size_t processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (CPU_ISSET(processor, &allowed) && left-- == 0) {
            cpu_set_t one;
            CPU_ZERO(&one);
            CPU_SET(processor, &one);
            ::sched_setaffinity(0, sizeof(one), &one);
        }
    }
}

}  // namespace

void PlayAndExit(const Task& task)
{
    if (task.isQuiet) {
        BeQuiet();
    }
    StayOnOneProcessor(task.firstSeed / kSeedsPerProcess);
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
    if (task.endsProcess) {
        WatchProcessEnd();
    }
    BeginPlaying();
    Conductor::Instance().isTraced = task.isTraced;
    try {
        PlayTask(task);
    } catch (const std::exception& e) {
        Fail("exception", e.what());
    }
    EndPlaying();
    std::exit(0);
}

}  // namespace lyn::schedules
