// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>

namespace lyn {

/// Something that the platform has once for the process and that several threads may set. The platform is told one
/// thing after the other, without a lock, and last what was wished last. A thread that comes while another one is
/// telling leaves its wish to that one: nobody waits.
template <typename Value>
class PlatformSwitch {
public:
    /// `tell(Value)` says whether the platform has accepted. False when nothing has to be told.
    template <typename Tell>
    bool Wish(Value value, const Tell& tell)
    {
        std::unique_lock lock(m_Mutex);
        m_Wished = value;
        return Settle(lock, tell);
    }

    /// The same, unless something else than `value` is wished by now.
    template <typename Tell>
    bool Replace(Value value, Value by, const Tell& tell)
    {
        std::unique_lock lock(m_Mutex);
        if (m_Wished != value) {
            return false;
        }
        m_Wished = by;
        return Settle(lock, tell);
    }

private:
    template <typename Tell>
    bool Settle(std::unique_lock<std::mutex>& lock, const Tell& tell)
    {
        if (m_Telling) {
            return true;
        }
        if (m_Wished == m_Told) {
            return false;
        }
        const Telling telling{lock, m_Telling};
        while (m_Wished != m_Told) {
            const Value value = m_Wished;
            lock.unlock();
            const bool accepted = tell(value);
            lock.lock();
            if (accepted) {
                m_Told = value;
            } else if (m_Wished == value) {
                m_Wished = m_Told;
            }
        }
        return true;
    }

    /// Ends also when the thread is cancelled in the platform.
    struct Telling {
        Telling(std::unique_lock<std::mutex>& theLock, bool& theFlag) : lock(theLock), flag(theFlag)
        {
            flag = true;
        }
        ~Telling()
        {
            if (!lock.owns_lock()) {
                lock.lock();
            }
            flag = false;
        }
        Telling(const Telling&) = delete;
        Telling& operator=(const Telling&) = delete;

        std::unique_lock<std::mutex>& lock;
        bool& flag;
    };

    std::mutex m_Mutex;
    Value m_Wished{};
    Value m_Told{};
    bool m_Telling = false;
};

}  // namespace lyn
