// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "Common/GattClient/CGattClient.h"
#include "Common/LiveObject.h"

namespace lyn {

class CRequester;

/// One request, from its call to its result: all that is its own, and dies with it. The requester has the latest
/// one. What comes for an earlier one, or for one whose service is destroyed, finds nothing to do.
///
/// Set up by the thread that requests. As soon as the platform has begun to connect, it belongs to the main loop,
/// but for what the requester's lock guards.
class Exchange : public std::enable_shared_from_this<Exchange> {
public:
    Exchange(std::weak_ptr<CRequester> requester, std::string extraData);
    ~Exchange();
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    std::shared_ptr<void> Keep() { return weak_from_this().lock(); }
    std::uintptr_t Number() const { return m_Live.Number(); }
    void* UserData() const { return m_Live.UserData(); }

    /// Runs `work(CRequester&, Exchange&)` if the exchange of this number is still the latest of a living service.
    /// A callable that holds the number needs no memory to be copied.
    template <typename Work>
    static void Step(std::uintptr_t number, const Work& work);

    /// On the main loop only.
    void ArmTimeout(unsigned int seconds);
    void DisarmTimeout();

    const std::weak_ptr<CRequester> m_Requester;
    const std::string m_ExtraData;
    std::shared_ptr<CGattClient> m_GattClient;
    bool m_bRequestDone = false;  ///< Ended on this side, so that the disconnection that follows is no failure.
    std::atomic<int> m_NodlinkType{0};
    std::string m_Result;

    // Guarded by the requester's lock.
    bool m_bCallEnded = false;
    bool m_bResultWaits = false;  ///< For the end of the call.

private:
    static gboolean OnTimeout(gpointer userData);

    GSource* TakeTimeout() { return m_pTimeout.exchange(nullptr); }

    std::atomic<GSource*> m_pTimeout{nullptr};  ///< Whoever takes it gives its reference back.
    LiveObject<Exchange> m_Live{*this};
};

}  // namespace lyn
