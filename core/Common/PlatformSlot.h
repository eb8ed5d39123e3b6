// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

namespace lyn {

/// Something that the platform has once for the process: its scan, its registration for reports about links. The
/// newest user wins: a call of an older one, which a destruction has overtaken, is left out. One call at a time,
/// made without a lock.
class PlatformSlot {
public:
    /// The number of a service, and one within it; later ones are greater.
    using User = std::pair<std::uintptr_t, std::uintptr_t>;

    /// Makes `call()`, which returns the platform's result, when a call of another thread has returned.
    /// @return none when a newer user has been here
    template <typename Call>
    std::optional<int> Use(const User& user, const Call& call)
    {
        std::unique_lock lock(m_Mutex);
        m_Returned.wait(lock, [&] { return m_Calls == 0; });
        return Make(lock, user, call);
    }

    /// The same, without waiting: none also while a call of another user is made.
    template <typename Call>
    std::optional<int> UseAtOnce(const User& user, const Call& call)
    {
        std::unique_lock lock(m_Mutex);
        return m_Calls > 0 && user != m_Newest ? std::nullopt : Make(lock, user, call);
    }

private:
    template <typename Call>
    std::optional<int> Make(std::unique_lock<std::mutex>& lock, const User& user, const Call& call)
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
    User m_Newest;
    int m_Calls = 0;  ///< More than one only of the newest user.
};

}  // namespace lyn
