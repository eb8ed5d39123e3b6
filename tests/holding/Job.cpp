// SPDX-License-Identifier: Apache-2.0
#include "holding/Job.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <fstream>
#include <iterator>
#include <mutex>
#include <utility>

namespace lyn::test {
namespace {

// Of all jobs and traps: whoever waits looks again when anything has changed.
std::mutex s_mutex;
std::condition_variable s_changed;

/// "123 (name) S ..."
bool IsAsleep(long thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const std::size_t name = stat.rfind(')');
    return name != std::string::npos && stat.compare(name, 3, ") S") == 0;
}

}  // namespace

Job::Job(std::string name, std::function<std::string()> work) : m_name(std::move(name))
{
    m_thread = std::thread([this, work = std::move(work)] {
        m_id = ::syscall(SYS_gettid);
        std::string said = work();
        const std::lock_guard lock(s_mutex);
        m_said = std::move(said);
        m_isDone = true;
        s_changed.notify_all();
    });
}

Job::~Job()
{
    m_thread.join();
}

bool Job::IsDone() const
{
    const std::lock_guard lock(s_mutex);
    return m_isDone;
}

void Job::AwaitRest() const
{
    int looks = 0;  // A short sleep is no wait: it has to be asleep twice.
    while (looks < 2 && !IsDone()) {
        looks = m_id != 0 && IsAsleep(m_id) ? looks + 1 : 0;
        std::this_thread::yield();
    }
}

std::vector<const Job*> Job::AwaitDone(const std::vector<const Job*>& jobs, std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    const auto isDone = [](const Job* job) { return job->m_isDone; };
    std::unique_lock lock(s_mutex);
    s_changed.wait_until(lock, end, [&] { return std::all_of(jobs.begin(), jobs.end(), isDone); });
    std::vector<const Job*> waiting;
    std::copy_if(jobs.begin(), jobs.end(), std::back_inserter(waiting), std::not_fn(isDone));
    return waiting;
}

void Trap::Spring()
{
    std::unique_lock lock(s_mutex);
    if (m_isSprung) {
        return;
    }
    m_isSprung = true;
    s_changed.notify_all();
    s_changed.wait(lock, [this] { return m_isOpen; });
}

bool Trap::AwaitHeld(const Job& job, std::chrono::milliseconds limit) const
{
    std::unique_lock lock(s_mutex);
    s_changed.wait_for(lock, limit, [&] { return m_isSprung || job.m_isDone; });
    return m_isSprung;
}

void Trap::LetGo()
{
    const std::lock_guard lock(s_mutex);
    m_isOpen = true;
    s_changed.notify_all();
}

}  // namespace lyn::test
