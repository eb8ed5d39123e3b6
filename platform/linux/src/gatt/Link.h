// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bus/Bus.h"
#include "gatt/DeviceSearch.h"
#include "gatt/Services.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

/// One link to one phone, from the beginning of its connect until nothing is left of it. On the main context.
class Link : public std::enable_shared_from_this<Link> {
public:
    /// What a link tells. Each at most once, `gone` always and last; `up` and `failed` exclude each other.
    struct Events {
        /// Connected, and the services are known.
        std::function<void(Services services)> up;
        /// The connect has failed. What it left behind is taken down before `gone`.
        std::function<void(int code)> failed;
        /// The link is down, whoever took it down: a connect to the same phone may begin.
        std::function<void()> gone;
    };

    Link(std::shared_ptr<Bus> bus, std::string adapterPath, const std::string& address, Events events);

    void Begin();
    /// Takes the link down, or gives its connect up.
    void TakeDown();
    /// Asks for the end of what it has begun at once, and hears nothing of it: for a process that may be about to
    /// end. Any thread.
    void SendDisconnect() const;
    /// The adapter, BlueZ or the phone's object has gone, and the link with it.
    void Abort(int code);

    const std::string& AdapterPath() const { return m_adapterPath; }

private:
    enum class State { beginning, connecting, resolving, lookingUp, up, goingDown, gone };

    bool IsComingUp() const;
    void Watch();
    void OnDeviceChanged(GVariant* changed);
    void OnForgotten();

    void OnFirstLook(const Reply& reply);
    void Connect();
    void OnConnectReply(const Reply& reply);
    void Search();
    void Resolve();
    void AskProperties(ReplyHandler done);
    void LookUp();
    void OnObjects(const Reply& reply);

    void Fail(int code);
    void StartDown();
    void End();

    void Call(const Method& method, GVariant* arguments, void (Link::*done)(const Reply&));

    const std::shared_ptr<Bus> m_bus;
    const std::string m_adapterPath;
    const std::string m_path;
    const Events m_events;
    State m_state = State::beginning;
    std::atomic<bool> m_asked = false;  ///< BlueZ for a link
    bool m_lookedUpOnce = false;
    std::vector<Subscription> m_subscriptions;
    std::unique_ptr<DeviceSearch> m_search;
    Timer m_limit;  ///< of the connect, then of going down
    Timer m_strangersLink;
    Timer m_secondLook;  ///< at a phone that showed no services
};

}  // namespace lyn::linux_platform
