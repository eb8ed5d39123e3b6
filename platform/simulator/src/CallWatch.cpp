// SPDX-License-Identifier: Apache-2.0
#include "CallWatch.h"

#include <memory>
#include <mutex>
#include <utility>

namespace lyn::simulator {

namespace {

using Listener = std::function<void(const CallMoment&)>;

/// Never destroyed: others may still call the platform while the process ends.
struct Place {
    std::mutex mutex;
    std::shared_ptr<const Listener> listener;
};

Place& ThePlace()
{
    static auto* const place = new Place;
    return *place;
}

}  // namespace

constinit std::atomic<bool> CallWatch::s_isOn{false};

void CallWatch::Listen(Listener listener)
{
    auto next = listener ? std::make_shared<const Listener>(std::move(listener)) : nullptr;
    Place& place = ThePlace();
    const std::lock_guard lock(place.mutex);
    s_isOn.store(next != nullptr, std::memory_order_release);
    place.listener.swap(next);
}

void CallWatch::Tell(CallMoment::Phase phase) const
{
    std::shared_ptr<const Listener> listener;
    {
        Place& place = ThePlace();
        const std::lock_guard lock(place.mutex);
        listener = place.listener;
    }
    if (listener != nullptr) {
        (*listener)({m_function, phase, m_text});
    }
}

}  // namespace lyn::simulator
