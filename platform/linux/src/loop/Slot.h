// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <mutex>

namespace lyn::linux_platform {

/// One registered callback of the seam. Each registration has an id of its own; what is to be delivered to an
/// earlier one is dropped. Any thread.
template <typename Callback>
class Slot {
public:
    /// @return the id of the new registration, never 0
    std::uint64_t Set(Callback callback, void* userData)
    {
        const std::lock_guard lock(m_mutex);
        m_callback = callback;
        m_userData = userData;
        m_id = ++m_registrations;
        return m_id;
    }

    void Unset()
    {
        const std::lock_guard lock(m_mutex);
        m_id = 0;
    }

    /// The registration in force; 0 when there is none.
    std::uint64_t Id() const
    {
        const std::lock_guard lock(m_mutex);
        return m_id;
    }

    /// Calls the callback with the values and its user data, if that registration is still in force. On the
    /// main context, without any lock.
    template <typename... Values>
    bool Deliver(std::uint64_t registration, Values... values) const
    {
        Callback callback = nullptr;
        void* userData = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            if (registration == 0 || registration != m_id) {
                return false;
            }
            callback = m_callback;
            userData = m_userData;
        }
        callback(values..., userData);
        return true;
    }

private:
    mutable std::mutex m_mutex;
    Callback m_callback = nullptr;
    void* m_userData = nullptr;
    std::uint64_t m_id = 0;
    std::uint64_t m_registrations = 0;
};

}  // namespace lyn::linux_platform
