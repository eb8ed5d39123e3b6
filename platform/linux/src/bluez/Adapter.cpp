// SPDX-License-Identifier: Apache-2.0
#include "bluez/Adapter.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "Codes.h"
#include "bluez/Bluez.h"

namespace lyn::linux_platform {

namespace {

constexpr unsigned kRetryMs = 2000;

/// "hci0" of "/org/bluez/hci0".
std::string NameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

bool IsAskedFor(const AdapterStatus& adapter)
{
    const char* const wanted = std::getenv("LYN_BT_ADAPTER");
    return NameOf(adapter.path) == wanted || strcasecmp(adapter.address.c_str(), wanted) == 0;
}

bool SomeAdapterIsAskedFor()
{
    const char* const wanted = std::getenv("LYN_BT_ADAPTER");
    return wanted != nullptr && *wanted != '\0';
}

/// A bluetoothd that is there but does not tell of its adapters has not lost them: what was known stays.
bool TellsNothing(const Reply& reply)
{
    return !reply.Ok() && CodeOf(*reply.error) != kAdapterOff;
}

std::vector<AdapterStatus> AdaptersOf(const Reply& objects)
{
    std::vector<AdapterStatus> adapters;
    ForEachObject(objects, kAdapter, [&](const std::string& path, GVariant* properties) {
        adapters.push_back({path, LookupText(properties, "Address").value_or(""),
                            LookupBool(properties, "Powered").value_or(false)});
    });
    std::sort(adapters.begin(), adapters.end(), [](const AdapterStatus& left, const AdapterStatus& right) {
        return std::pair(left.path.size(), left.path) < std::pair(right.path.size(), right.path);  // hci2 < hci10
    });
    return adapters;
}

}  // namespace

Adapter& Adapter::Instance()
{
    static Adapter* const instance = new Adapter;  // never destroyed: signals may be on their way
    return *instance;
}

int Adapter::Watch()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_watching) {
            return 0;
        }
    }
    if (Bus::System() == nullptr) {
        return kNoBus;
    }
    Read(AutoStart::yes);
    const std::lock_guard lock(m_mutex);
    if (!std::exchange(m_watching, true)) {
        Post([this] { BeginWatching(); });
    }
    return 0;
}

AdapterStatus Adapter::Read(AutoStart autoStart)
{
    const auto bus = Bus::System();
    if (bus == nullptr) {
        Keep({});
        return {};
    }
    const Reply objects = bus->CallNow(AllObjects(), nullptr, kCallLimitMs, autoStart);
    if (TellsNothing(objects)) {
        return Known();
    }
    AdapterStatus status = Choose(objects);
    Keep(status);
    return status;
}

AdapterStatus Adapter::Known() const
{
    const std::lock_guard lock(m_mutex);
    return m_known;
}

void Adapter::AddListener(Listener listener)
{
    const std::lock_guard lock(m_mutex);
    m_listeners.push_back(std::move(listener));
}

void Adapter::TellAgain()
{
    Post([this] {
        m_owesReport = true;
        Refresh();
    });
}

void Adapter::BeginWatching()
{
    m_bus = Bus::System();
    if (m_bus == nullptr) {
        m_retry = Timer(kRetryMs, [this] { BeginWatching(); });
        return;
    }
    // What was read when watching was asked for is no change.
    m_told = Known();
    m_subscriptions.push_back(m_bus->OnClosed([this] { BeginAgain(); }));
    m_subscriptions.push_back(m_bus->OnOwner(kBluez, [this](const std::string& owner) {
        if (!owner.empty()) {
            Refresh();
            return;
        }
        TellLoss({});
    }));
    WatchObjects();
}

void Adapter::BeginAgain()
{
    m_subscriptions.clear();
    TellLoss({});
    m_retry = Timer(kRetryMs, [this] { BeginWatching(); });
}

void Adapter::WatchObjects()
{
    m_subscriptions.push_back(
        m_bus->OnSignal({kBluez, "", kProperties, "PropertiesChanged", kAdapter},
                        [this](const char* path, GVariant* values) { OnPropertiesChanged(path, values); }));
    m_subscriptions.push_back(m_bus->OnSignal({kBluez, "/", kObjectManager, "InterfacesRemoved", ""},
                                              [this](const char*, GVariant* values) { OnRemoved(values); }));
    m_subscriptions.push_back(m_bus->OnSignal({kBluez, "/", kObjectManager, "InterfacesAdded", ""},
                                              [this](const char*, GVariant* values) {
                                                  if (!ObjectWithAdded(values, kAdapter).empty()) {
                                                      Refresh();
                                                  }
                                              }));
}

void Adapter::OnPropertiesChanged(const char* path, GVariant* values)
{
    AdapterStatus status = Known();
    const Variant changed = ChangedProperties(values);
    if (changed && LookupBool(changed.get(), "Powered") == false && status.path == path) {
        status.powered = false;
        TellLoss(status);
    }
    Refresh();
}

void Adapter::OnRemoved(GVariant* values)
{
    const std::string path = ObjectWithRemoved(values, kAdapter);
    if (path.empty()) {
        return;
    }
    if (path == Known().path) {
        TellLoss({});
    }
    Refresh();
}

/// At once: when it is looked at, all may be well again, but what this process asked for is forgotten.
void Adapter::TellLoss(const AdapterStatus& left)
{
    Keep(left);
    Tell();
}

void Adapter::Refresh()
{
    if (m_bus == nullptr) {
        Tell();
        return;
    }
    m_bus->Call(AllObjects(), nullptr, kCallLimitMs, [this](const Reply& objects) {
        if (TellsNothing(objects)) {
            m_refreshAgain = Timer(kRetryMs, [this] { Refresh(); });
            return;
        }
        Keep(Choose(objects));
        Tell();
    });
}

AdapterStatus Adapter::Choose(const Reply& objects) const
{
    const auto adapters = AdaptersOf(objects);
    if (SomeAdapterIsAskedFor()) {
        const auto asked = std::find_if(adapters.begin(), adapters.end(), IsAskedFor);
        return asked != adapters.end() ? *asked : AdapterStatus{};
    }
    const std::string current = Known().path;
    const AdapterStatus* best = nullptr;
    for (const auto& adapter : adapters) {
        if (adapter.powered && adapter.path == current) {
            return adapter;
        }
        if (best == nullptr || (adapter.powered && !best->powered)) {
            best = &adapter;
        }
    }
    return best != nullptr ? *best : AdapterStatus{};
}

void Adapter::Keep(const AdapterStatus& status)
{
    const std::lock_guard lock(m_mutex);
    m_known = status;
}

void Adapter::Tell()
{
    const AdapterStatus status = Known();
    if (!std::exchange(m_owesReport, false) && status == m_told) {
        return;
    }
    m_told = status;
    std::vector<Listener> listeners;
    {
        const std::lock_guard lock(m_mutex);
        listeners = m_listeners;
    }
    for (const auto& listener : listeners) {
        listener(status);
    }
}

}  // namespace lyn::linux_platform
