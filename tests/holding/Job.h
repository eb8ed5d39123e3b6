// SPDX-License-Identifier: Apache-2.0
//
// One call, or one report of the platform, on a thread of its own.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace lyn::test {

class Job {
public:
    /// @param work returns what came of it
    Job(std::string name, std::function<std::string()> work);
    /// Waits for the end.
    ~Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    const std::string& Name() const { return m_name; }
    bool IsDone() const;
    /// Waits until it is done or sleeps. It sleeps, as far as anybody can see, when it waits for a lock.
    void AwaitRest() const;
    /// What came of the work. Of a job that is done.
    const std::string& Said() const { return m_said; }

    /// Waits until all of them are done, and returns those that are not when the limit has passed.
    static std::vector<const Job*> AwaitDone(const std::vector<const Job*>& jobs, std::chrono::milliseconds limit);

private:
    friend class Trap;

    std::string m_name;
    std::string m_said;
    bool m_isDone = false;
    std::atomic<long> m_id{0};  ///< the kernel's, of the thread
    std::thread m_thread;
};

using Jobs = std::vector<std::unique_ptr<Job>>;

/// Holds the one thread that comes to it first.
class Trap {
public:
    /// Blocks the calling thread, unless another is or was here.
    void Spring();
    /// Waits until a thread is held. False when the job, which was to get here, has ended without, or does not
    /// move any more.
    bool AwaitHeld(const Job& job, std::chrono::milliseconds limit) const;
    void LetGo();

private:
    bool m_isSprung = false;
    bool m_isOpen = false;
};

}  // namespace lyn::test
