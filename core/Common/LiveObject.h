// SPDX-License-Identifier: Apache-2.0
//
// Platform callbacks and main-loop sources may come after their object is gone, and on another thread than the
// one that destroys it. They therefore carry a token, never an address: a number that is used once in the life
// of the process and finds its object, or nothing. Each type has tokens of its own.
//
// Whoever has found an object keeps it alive while it uses it. The lock of the table is held to look up only.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "Common/RunGuarded.h"

namespace lyn {

/// Member of an object that is called back: `LiveObject<CThing> m_Live{*this};`. CThing has a Keep(), which gives
/// the shared pointer that keeps it alive, or null when it cannot be kept any more.
template <typename T>
class LiveObject {
public:
    explicit LiveObject(T& object) : m_Number(++s_Last)
    {
        Table& table = TheTable();
        const std::lock_guard lock(table.mutex);
        table.objects.emplace(m_Number, &object);
    }
    ~LiveObject()
    {
        Table& table = TheTable();
        const std::lock_guard lock(table.mutex);
        table.objects.erase(m_Number);
    }
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;

    /// What a callback is registered with; never null. Later objects have greater numbers.
    void* UserData() const { return UserData(m_Number); }
    std::uintptr_t Number() const { return m_Number; }
    static void* UserData(std::uintptr_t number)
    {
        return reinterpret_cast<void*>(number);  // NOLINT(performance-no-int-to-ptr): a number on purpose
    }

    /// The living object, or null.
    static std::shared_ptr<T> Find(void* userData) { return Find(reinterpret_cast<std::uintptr_t>(userData)); }
    static std::shared_ptr<T> Find(std::uintptr_t number)
    {
        Table& table = TheTable();
        const std::lock_guard lock(table.mutex);
        const auto found = table.objects.find(number);
        if (found == table.objects.end()) {
            return nullptr;
        }
        auto keeper = found->second->Keep();
        return keeper ? std::shared_ptr<T>(std::move(keeper), found->second) : nullptr;
    }

private:
    struct Table {
        std::mutex mutex;
        std::unordered_map<std::uintptr_t, T*> objects;
    };

    // Never destroyed: the service that lives at process exit still needs it.
    static Table& TheTable()
    {
        static auto* const table = new Table;
        return *table;
    }

    static inline std::atomic<std::uintptr_t> s_Last{0};

    const std::uintptr_t m_Number;
};

/// Runs `work(T&)` if the object lives, else does nothing. Nothing is thrown to the caller.
template <typename T, typename Work>
void CallLive(void* userData, const Work& work)
{
    RunGuarded([&] {
        if (const auto object = LiveObject<T>::Find(userData)) {
            work(*object);
        }
    });
}

}  // namespace lyn
