// SPDX-License-Identifier: Apache-2.0
//
// Platform callbacks and main-loop sources may come after their object is gone, and on another thread
// than the one that destroys it. They therefore carry a token, never an address: a number that is used
// once in the life of the process and finds its object, or nothing.
//
// One recursive lock guards the table and, for the objects of a request (requester, GATT client, service
// and characteristic), everything they do: callbacks run under it, and so do the calls that start a
// request or destroy one. No code of the application ever runs under it. Scanner and device state
// checker, whose callbacks end in the application's, are only found under the lock and kept alive by a
// shared pointer meanwhile.
#pragma once

#include <memory>
#include <mutex>

#include "Common/RunGuarded.h"

namespace lyn {

/// Locks the table; the same thread may lock it again.
std::unique_lock<std::recursive_mutex> LockLiveObjects();

/// Untyped side of LiveObject.
class LiveToken {
public:
    explicit LiveToken(void* object);
    ~LiveToken();
    LiveToken(const LiveToken&) = delete;
    LiveToken& operator=(const LiveToken&) = delete;

    /// What a callback is registered with; never null.
    void* UserData() const { return m_UserData; }

    /// The living object, or null. The caller holds the lock and keeps it while it uses the object.
    static void* Find(void* userData);

private:
    void* m_UserData;
};

/// Member of an object that is called back: `LiveObject<CThing> m_Live{this};`.
template <typename T>
class LiveObject {
public:
    explicit LiveObject(T* object) : m_Token(object) {}

    void* UserData() const { return m_Token.UserData(); }
    static T* Find(void* userData) { return static_cast<T*>(LiveToken::Find(userData)); }

private:
    LiveToken m_Token;
};

/// Runs `work(T&)` under the lock if the object lives, else does nothing.
template <typename T, typename Work>
void CallLocked(void* userData, const Work& work) noexcept
{
    RunGuarded([&] {
        const auto lock = LockLiveObjects();
        if (T* object = LiveObject<T>::Find(userData)) {
            work(*object);
        }
    });
}

/// Runs `work(T&)` without the lock if the object lives and is shared, else does nothing. T derives
/// publicly from a base with weak_from_this().
template <typename T, typename Work>
void CallShared(void* userData, const Work& work) noexcept
{
    RunGuarded([&] {
        T* object = nullptr;
        std::shared_ptr<void> keepAlive;
        {
            const auto lock = LockLiveObjects();
            object = LiveObject<T>::Find(userData);
            if (object != nullptr) {
                keepAlive = object->weak_from_this().lock();
            }
        }
        if (keepAlive) {
            work(*object);
        }
    });
}

}  // namespace lyn
