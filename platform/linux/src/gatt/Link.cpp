// SPDX-License-Identifier: Apache-2.0
#include "gatt/Link.h"

#include <utility>

#include "Codes.h"
#include "bluez/Bluez.h"
#include "gatt/Limits.h"
#include "log/Log.h"

namespace lyn::linux_platform {

namespace {

/// Of a call whose end is limited by a timer already: the timer comes first.
int LongerThanTheTimer()
{
    return TimeLimits().connect + TimeLimits().takeDown;
}

/// Whether the answer of GetAll has this property, and it is true.
bool IsTrueIn(const Reply& reply, const char* property)
{
    if (!reply.Ok() || !g_variant_is_of_type(reply.values.get(), G_VARIANT_TYPE("(a{sv})"))) {
        return false;
    }
    const Variant properties(g_variant_get_child_value(reply.values.get(), 0));
    return LookupBool(properties.get(), property) == true;
}

}  // namespace

Link::Link(std::shared_ptr<Bus> bus, std::string adapterPath, const std::string& address, Events events)
    : m_bus(std::move(bus)),
      m_adapterPath(std::move(adapterPath)),
      m_path(DevicePath(m_adapterPath, address)),
      m_events(std::move(events))
{
}

void Link::Begin()
{
    m_limit = Timer(static_cast<unsigned>(TimeLimits().connect), [this] {
        LogWarn("no link to %s within %d ms", m_path.c_str(), TimeLimits().connect);
        Fail(kConnectTimedOut);
    });
    Watch();
    AskProperties([self = weak_from_this()](const Reply& reply) {
        const auto link = self.lock();
        if (link != nullptr && link->m_state == State::beginning) {
            link->OnFirstLook(reply);
        }
    });
}

void Link::OnFirstLook(const Reply& reply)
{
    if (IsTrueIn(reply, "Connected")) {
        m_strangersLink = Timer(static_cast<unsigned>(TimeLimits().strangersLink), [this] { Connect(); });
        return;
    }
    Connect();
}

void Link::TakeDown()
{
    if (m_state == State::up) {
        StartDown();
        return;
    }
    Fail(kCanceled);
}

void Link::SendDisconnect() const
{
    if (m_asked) {
        m_bus->Send(BluezMethod(m_path, kDevice, "Disconnect"));
    }
}

void Link::Abort(int code)
{
    const auto self = shared_from_this();
    const bool comingUp = IsComingUp();
    if (comingUp) {
        m_state = State::goingDown;
        m_events.failed(code);
    }
    End();
}

bool Link::IsComingUp() const
{
    return m_state < State::up;
}

void Link::Watch()
{
    m_subscriptions.push_back(m_bus->OnSignal({kBluez, m_path, kProperties, "PropertiesChanged", kDevice},
                                              [this](const char*, GVariant* values) {
                                                  if (const Variant changed = ChangedProperties(values)) {
                                                      OnDeviceChanged(changed.get());
                                                  }
                                              }));
    m_subscriptions.push_back(m_bus->OnSignal(
        {kBluez, "/", kObjectManager, "InterfacesRemoved", ""}, [this](const char*, GVariant* values) {
            if (m_search == nullptr && ObjectWithRemoved(values, kDevice) == m_path) {
                OnForgotten();
            }
        }));
}

void Link::OnDeviceChanged(GVariant* changed)
{
    const auto connected = LookupBool(changed, "Connected");
    if (connected == false) {
        // While connecting this is the end of the link before: the reply tells how the connect went.
        if (m_state == State::beginning) {
            Connect();
        } else if (m_state == State::resolving || m_state == State::lookingUp) {
            Fail(kNotConnected);
        } else if (m_state == State::up || m_state == State::goingDown) {
            End();
        }
        return;
    }
    if (LookupBool(changed, "ServicesResolved") == true &&
        (m_state == State::connecting || m_state == State::resolving)) {
        LookUp();
    }
}

void Link::OnForgotten()
{
    if (m_state == State::beginning) {
        Connect();
        return;
    }
    if (m_state != State::connecting) {
        Abort(kNotFound);
        return;
    }
    // This may be older than the connect: then the object is there again, or the reply says that it is not.
    const auto onProperties = [self = weak_from_this()](const Reply& reply) {
        const auto link = self.lock();
        const bool forgotten = !reply.Ok() && CodeOf(*reply.error) == kNotFound;
        if (link != nullptr && link->m_state == State::connecting && link->m_search == nullptr && forgotten) {
            link->Abort(kNotFound);
        }
    };
    AskProperties(onProperties);
}

void Link::Connect()
{
    m_state = State::connecting;
    m_strangersLink = {};
    m_asked = true;
    Call(BluezMethod(m_path, kDevice, "Connect"), nullptr, &Link::OnConnectReply);
}

void Link::OnConnectReply(const Reply& reply)
{
    if (m_state != State::connecting) {
        return;
    }
    const int code = reply.Ok() ? 0 : CodeOf(*reply.error);
    const bool searched = m_search != nullptr;
    m_search.reset();
    if (code == kNotFound && !searched) {
        Search();
    } else if (code == 0 || code == kConnectedAlready || code == kBusy) {
        // Another program's link, or its connect, serves as well.
        Resolve();
    } else {
        WarnOfRefusal(m_path, "Connect", *reply.error);
        Fail(code);
    }
}

void Link::Search()
{
    m_search = std::make_unique<DeviceSearch>(m_bus, m_adapterPath, m_path,
                                              [this](int code) { code == 0 ? Connect() : Fail(code); });
}

// The services of a link that was up already are not signalled again.
void Link::Resolve()
{
    m_state = State::resolving;
    const auto onProperties = [self = weak_from_this()](const Reply& reply) {
        const auto link = self.lock();
        if (link == nullptr || link->m_state != State::resolving) {
            return;
        }
        if (!reply.Ok()) {
            if (CodeOf(*reply.error) == kNotFound) {
                link->Fail(kNotFound);
            }
            return;
        }
        if (IsTrueIn(reply, "ServicesResolved")) {
            link->LookUp();
        }
    };
    AskProperties(onProperties);
}

void Link::AskProperties(ReplyHandler done)
{
    m_bus->Call(BluezMethod(m_path, kProperties, "GetAll"), g_variant_new("(s)", kDevice), LongerThanTheTimer(),
                std::move(done));
}

void Link::LookUp()
{
    m_state = State::lookingUp;
    m_search.reset();
    Call(AllObjects(), nullptr, &Link::OnObjects);
}

void Link::OnObjects(const Reply& reply)
{
    if (m_state != State::lookingUp) {
        return;
    }
    if (!reply.Ok()) {
        Fail(CodeOf(*reply.error));
        return;
    }
    Services services = ServicesOf(reply, m_path);
    if (services.empty() && !std::exchange(m_lookedUpOnce, true)) {
        m_secondLook = Timer(static_cast<unsigned>(TimeLimits().secondLook), [this] { LookUp(); });
        return;
    }
    m_state = State::up;
    m_limit = {};
    m_events.up(std::move(services));
}

void Link::Fail(int code)
{
    if (!IsComingUp()) {
        return;
    }
    if (m_state == State::beginning) {
        Abort(code);  // There may be a link, but of another program.
        return;
    }
    const auto self = shared_from_this();
    StartDown();
    m_events.failed(code);
}

void Link::StartDown()
{
    m_state = State::goingDown;
    m_search.reset();
    m_strangersLink = {};
    m_secondLook = {};
    m_limit = Timer(static_cast<unsigned>(TimeLimits().takeDown), [this] { End(); });
    const auto onReply = [self = weak_from_this()](const Reply&) {
        if (const auto link = self.lock()) {
            link->End();
        }
    };
    m_bus->Call(BluezMethod(m_path, kDevice, "Disconnect"), nullptr, LongerThanTheTimer(), onReply);
}

void Link::End()
{
    if (m_state == State::gone) {
        return;
    }
    m_state = State::gone;
    m_search.reset();
    m_strangersLink = {};
    m_secondLook = {};
    m_limit = {};
    m_subscriptions.clear();
    m_events.gone();
}

void Link::Call(const Method& method, GVariant* arguments, void (Link::*done)(const Reply&))
{
    m_bus->Call(method, arguments, LongerThanTheTimer(), [self = weak_from_this(), done](const Reply& reply) {
        if (const auto link = self.lock()) {
            (link.get()->*done)(reply);
        }
    });
}

}  // namespace lyn::linux_platform
