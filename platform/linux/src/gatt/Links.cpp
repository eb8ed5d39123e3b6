// SPDX-License-Identifier: Apache-2.0
#include "gatt/Links.h"

#include <utility>
#include <vector>

#include "Codes.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

Links& Links::Instance()
{
    static Links* const instance = new Links;  // never destroyed: reports may be on their way
    return *instance;
}

Links::Links()
{
    Adapter::Instance().AddListener([this](const AdapterStatus& status) { OnAdapter(status); });
}

int Links::Connect(const char* address)
{
    const auto canonical = CanonicalAddress(address);
    if (!canonical) {
        return kInvalidArgument;
    }
    if (!Adapter::Instance().Known().powered) {
        return kAdapterOff;
    }
    Demand demand{reports.Id(), address};
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(*canonical);
    if (found != m_entries.end()) {
        return Join(*canonical, found->second, std::move(demand));
    }
    Open(*canonical, std::move(demand));
    return 0;
}

int Links::Disconnect(const char* address)
{
    const auto canonical = CanonicalAddress(address);
    if (!canonical) {
        return kInvalidArgument;
    }
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(*canonical);
    if (found == m_entries.end() || found->second.phase != Phase::up) {
        return kNotConnected;
    }
    AskDown(*canonical, found->second);
    return 0;
}

void Links::LetGo()
{
    std::vector<std::shared_ptr<Link>> links;
    {
        const std::lock_guard lock(m_mutex);
        for (auto& [address, entry] : m_entries) {
            entry.next.reset();
            AskDown(address, entry);
            if (entry.link != nullptr) {
                links.push_back(entry.link);
            }
        }
    }
    for (const auto& link : links) {
        link->SendDisconnect();
    }
}

std::shared_ptr<const Phone> Links::Up(const char* address) const
{
    const auto canonical = CanonicalAddress(address);
    const std::lock_guard lock(m_mutex);
    const auto found = canonical ? m_entries.find(*canonical) : m_entries.end();
    return found != m_entries.end() && found->second.phase == Phase::up ? found->second.phone : nullptr;
}

void Links::Open(const std::string& address, Demand owner)
{
    Entry& entry = m_entries[address];
    entry = {};
    entry.id = ++m_ids;
    entry.owner = std::move(owner);
    Post([this, address, id = entry.id] { Begin(address, id); });
}

int Links::Join(const std::string& address, Entry& entry, Demand demand)
{
    if (entry.phase == Phase::goingDown) {
        if (entry.next && entry.next->registration == demand.registration) {
            return kAlreadyDone;
        }
        entry.next = std::move(demand);
        return 0;
    }
    if (entry.owner.registration == demand.registration) {
        return kAlreadyDone;
    }
    // Left over from a registration that has ended: its end is now this registration's.
    entry.owner = std::move(demand);
    if (entry.phase == Phase::up) {
        entry.announced = false;
        Post([this, address, id = entry.id] { Announce(address, id); });
    }
    return 0;
}

void Links::AskDown(const std::string& address, Entry& entry)
{
    entry.phase = Phase::goingDown;
    entry.asked = true;
    if (entry.phone != nullptr) {
        entry.phone->up = false;
    }
    Post([this, address, id = entry.id] { TakeDown(address, id); });
}

Links::Entry* Links::Find(const std::string& address, std::uint64_t id)
{
    const auto found = m_entries.find(address);
    return found != m_entries.end() && found->second.id == id ? &found->second : nullptr;
}

void Links::Begin(const std::string& address, std::uint64_t id)
{
    const auto bus = Bus::System();
    const AdapterStatus adapter = Adapter::Instance().Known();
    if (bus == nullptr || !adapter.powered) {
        OnFailed(address, id, bus == nullptr ? kNoBus : kAdapterOff);
        OnGone(address, id);
        return;
    }
    const auto link =
        std::make_shared<Link>(bus, adapter.path, address,
                               Link::Events{
                                   [=, this](Services services) { OnUp(address, id, bus, std::move(services)); },
                                   [=, this](int code) { OnFailed(address, id, code); },
                                   [=, this] { OnGone(address, id); },
                               });
    {
        const std::lock_guard lock(m_mutex);
        Find(address, id)->link = link;
    }
    link->Begin();
}

void Links::TakeDown(const std::string& address, std::uint64_t id)
{
    std::unique_lock lock(m_mutex);
    const Entry* const entry = Find(address, id);
    const auto link = entry != nullptr ? entry->link : nullptr;
    lock.unlock();
    if (link != nullptr) {
        link->TakeDown();
    }
}

void Links::OnUp(const std::string& address, std::uint64_t id, const std::shared_ptr<Bus>& bus, Services services)
{
    {
        const std::lock_guard lock(m_mutex);
        Entry* const entry = Find(address, id);
        if (entry->phase == Phase::goingDown) {
            return;
        }
        entry->phase = Phase::up;
        entry->phone = std::make_shared<Phone>();
        entry->phone->bus = bus;
        entry->phone->services = std::move(services);
    }
    Announce(address, id);
}

void Links::OnFailed(const std::string& address, std::uint64_t id, int code)
{
    std::unique_lock lock(m_mutex);
    Entry* const entry = Find(address, id);
    entry->phase = Phase::goingDown;
    entry->failed = true;
    const Demand owner = entry->owner;
    lock.unlock();
    Report(owner, code, true);
}

void Links::OnGone(const std::string& address, std::uint64_t id)
{
    std::unique_lock lock(m_mutex);
    const Entry entry = std::move(*Find(address, id));
    if (entry.phone != nullptr) {
        entry.phone->up = false;
    }
    m_entries.erase(address);
    if (entry.next) {
        Open(address, *entry.next);
    }
    lock.unlock();
    Post([link = entry.link] {});  // It is in the middle of a step.
    if (entry.failed) {
        return;
    }
    if (!entry.announced) {
        Report(entry.owner, kNotConnected, true);
        return;
    }
    Report(entry.owner, entry.asked ? 0 : kLinkLost, false);
}

void Links::Announce(const std::string& address, std::uint64_t id)
{
    std::unique_lock lock(m_mutex);
    Entry* const entry = Find(address, id);
    if (entry == nullptr || std::exchange(entry->announced, true)) {
        return;
    }
    const Demand owner = entry->owner;
    lock.unlock();
    Report(owner, 0, true);
}

void Links::OnAdapter(const AdapterStatus& status)
{
    std::vector<std::shared_ptr<Link>> lost;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& [address, entry] : m_entries) {
            if (entry.link != nullptr && (!status.powered || entry.link->AdapterPath() != status.path)) {
                lost.push_back(entry.link);
            }
        }
    }
    for (const auto& link : lost) {
        link->Abort(kAdapterOff);
    }
}

void Links::Report(const Demand& owner, int code, bool connected) const
{
    reports.Deliver(owner.registration, code, connected, owner.address.c_str());
}

}  // namespace lyn::linux_platform
