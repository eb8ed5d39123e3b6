// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

namespace lyn {

/// Something that the platform has once for the process: its scan, its registration for reports about links. The
/// newest user wins: a call of an older one, which a destruction has overtaken, is left out. One call at a time,
/// made without a lock.
class PlatformSlot {
public:
    /// Makes `call()`, which returns the platform's result, when a call of another thread has returned.
    /// @param user a number, greater than those of earlier users
    /// @return none when a newer user has been here
    template <typename Call>
    std::optional<int> Use(std::uintptr_t user, const Call& call)
    {
        std::unique_lock lock(m_Mutex);
        m_Returned.wait(lock, [&] { return m_Calls == 0; });
        return Make(lock, user, call);
    }

    /// The same, without waiting: none also while a call of another user is made.
    template <typename Call>
    std::optional<int> UseAtOnce(std::uintptr_t user, const Call& call)
    {
        std::unique_lock lock(m_Mutex);
        return m_Calls > 0 && user != m_Newest ? std::nullopt : Make(lock, user, call);
    }

private:
    template <typename Call>
    std::optional<int> Make(std::unique_lock<std::mutex>& lock, std::uintptr_t user, const Call& call)
    {
        if (user < m_Newest) {
            return std::nullopt;
        }
        m_Newest = user;
        const CallInProgress inProgress(*this, lock);
        return call();
    }

    /// Ends also when the thread is cancelled in the call.
    struct CallInProgress {
        CallInProgress(PlatformSlot& theSlot, std::unique_lock<std::mutex>& theLock) : slot(theSlot), lock(theLock)
        {
            ++slot.m_Calls;
            lock.unlock();
        }
        ~CallInProgress()
        {
            lock.lock();
            --slot.m_Calls;
            slot.m_Returned.notify_all();
        }
        CallInProgress(const CallInProgress&) = delete;
        CallInProgress& operator=(const CallInProgress&) = delete;

        PlatformSlot& slot;
        std::unique_lock<std::mutex>& lock;
    };

    std::mutex m_Mutex;
    std::condition_variable m_Returned;
    std::uintptr_t m_Newest = 0;
    int m_Calls = 0;  ///< More than one only of the newest user.
};

}  // namespace lyn
