// SPDX-License-Identifier: Apache-2.0
#include "Links.h"

#include <algorithm>

#include "Simulator.h"

namespace lyn::simulator {

namespace {

constexpr int kUnknownPhoneDelayMs = 20;

bool IsSuccess(int code)
{
    return code == 0 || code == kConnectedAlready;
}

}  // namespace

Links::Links(Simulator& simulator) : m_simulator(simulator) {}

void Links::Reset()
{
    m_links.clear();
    registration = {};
    deadlineMs = kDefaultDeadlineMs;
}

int Links::Connect(const std::string& address, const std::string& given, bool waitForPhone)
{
    if (!m_simulator.adapter.IsOn()) {
        return kAdapterOff;
    }
    const auto found = m_links.find(address);
    if (found == m_links.end()) {
        Open(address, given, registration.id, waitForPhone);
        return 0;
    }
    return JoinRunning(address, given, found->second, waitForPhone);
}

int Links::JoinRunning(const std::string& address, const std::string& given, Link& link, bool waitForPhone)
{
    const std::uint64_t owner = link.state == Link::State::goingDown ? link.next : link.registration;
    const bool owned = link.state != Link::State::goingDown || link.hasNext;
    if (owned && owner == registration.id) {
        return kAlreadyDone;
    }
    if (link.state == Link::State::goingDown) {
        link.hasNext = true;
        link.nextGiven = given;
        link.next = registration.id;
        link.nextWaits = waitForPhone;
        return 0;
    }
    // Left over from a registration that has ended: its end is now this registration's.
    link.given = given;
    link.registration = registration.id;
    if (link.state == Link::State::up) {
        link.announced = false;
        m_simulator.loop.Post(Loop::Kind::awaited, 0,
                              [this, address, id = link.id] { AnnounceAgain(address, id); });
    }
    return 0;
}

int Links::Disconnect(const std::string& address)
{
    Link* link = Up(address);
    if (link == nullptr) {
        return m_simulator.adapter.IsOn() ? kNotConnected : kAdapterOff;
    }
    const RoomPhone* phone = m_simulator.room.Present(address);
    const int code = phone != nullptr ? phone->phone.disconnectCode : 0;
    TakeDown(address, *link, code, phone != nullptr ? phone->phone.disconnectDelayMs : 0);
    return 0;
}

void Links::Lose(const std::string& address, int code)
{
    if (Link* link = Up(address); link != nullptr) {
        TakeDown(address, *link, code, 0);
    }
}

void Links::LoseAll(int code)
{
    for (auto& [address, link] : m_links) {
        if (link.state != Link::State::goingDown) {
            TakeDown(address, link, code, 0);
        }
    }
}

void Links::PhoneCame(const std::string& address)
{
    const auto found = m_links.find(address);
    if (found != m_links.end() && found->second.waitsForPhone) {
        Begin(address, found->second);
    }
}

Link* Links::Up(const std::string& address)
{
    const auto found = m_links.find(address);
    const bool up = found != m_links.end() && found->second.state == Link::State::up;
    return up ? &found->second : nullptr;
}

Link* Links::Up(const std::string& address, std::uint64_t id)
{
    Link* link = Up(address);
    return link != nullptr && link->id == id ? link : nullptr;
}

int Links::Count() const
{
    return static_cast<int>(m_links.size());
}

Link* Links::Find(const std::string& address, std::uint64_t id)
{
    const auto found = m_links.find(address);
    return found != m_links.end() && found->second.id == id ? &found->second : nullptr;
}

void Links::Open(const std::string& address, const std::string& given, std::uint64_t registrationId,
                 bool waitForPhone)
{
    Link& link = m_links[address];
    link = {};
    link.id = m_simulator.NewId();
    link.given = given;
    link.registration = registrationId;
    link.waitsForPhone = waitForPhone;
    Begin(address, link);
}

void Links::Begin(const std::string& address, Link& link)
{
    RoomPhone* phone = m_simulator.room.Present(address);
    ConnectOutcome outcome;
    if (phone == nullptr) {
        outcome = {kConnectTimedOut, link.waitsForPhone ? deadlineMs : kUnknownPhoneDelayMs};
    } else if (!phone->phone.connects.empty()) {
        const std::size_t last = phone->phone.connects.size() - 1;
        outcome = phone->phone.connects[std::min(phone->connectsUsed++, last)];
    }
    if (outcome.delayMs > deadlineMs) {
        outcome = {kConnectTimedOut, deadlineMs};
    }
    link.waitsForPhone = link.waitsForPhone && phone == nullptr;
    link.attempt = m_simulator.NewId();
    m_simulator.loop.Cancel(link.coming);
    link.coming = m_simulator.loop.Post(Loop::Kind::awaited, outcome.delayMs,
                                        [this, address, id = link.id, attempt = link.attempt,
                                         code = outcome.code] { EndConnect(address, id, attempt, code); });
}

void Links::TakeDown(const std::string& address, Link& link, int code, int delayMs)
{
    link.state = Link::State::goingDown;
    m_simulator.loop.Cancel(link.coming);
    m_simulator.loop.Post(Loop::Kind::awaited, delayMs,
                          [this, address, id = link.id, code] { EndLink(address, id, code); });
}

void Links::ScheduleDrop(const std::string& address, Link& link)
{
    const RoomPhone* phone = m_simulator.room.Present(address);
    if (phone == nullptr || !phone->phone.dropAfterConnectMs) {
        return;
    }
    link.coming = m_simulator.loop.Post(Loop::Kind::awaited, *phone->phone.dropAfterConnectMs,
                                        [this, address, id = link.id, code = phone->phone.dropCode] {
                                            const std::lock_guard lock(m_simulator.mutex);
                                            if (Up(address, id) != nullptr) {
                                                Lose(address, code);
                                            }
                                        });
}

void Links::EndConnect(const std::string& address, std::uint64_t id, std::uint64_t attempt, int code)
{
    std::unique_lock lock(m_simulator.mutex);
    Link* link = Find(address, id);
    if (link == nullptr || link->attempt != attempt || link->state != Link::State::connecting) {
        return;
    }
    const std::string given = link->given;
    const std::uint64_t owner = link->registration;
    if (IsSuccess(code) && !m_simulator.adapter.IsOn()) {
        code = kAdapterOff;
    } else if (IsSuccess(code) && m_simulator.room.Present(address) == nullptr) {
        code = kConnectTimedOut;
    }
    if (IsSuccess(code)) {
        link->state = Link::State::up;
        link->announced = true;
        ScheduleDrop(address, *link);
    } else {
        m_links.erase(address);
    }
    lock.unlock();
    m_simulator.air.Tell(IsSuccess(code) ? LYN_SIMULATOR_AIR_CONNECTED : LYN_SIMULATOR_AIR_CONNECT_FAILED,
                         address);
    Report(owner, code, true, given);
}

void Links::AnnounceAgain(const std::string& address, std::uint64_t id)
{
    std::unique_lock lock(m_simulator.mutex);
    Link* link = Find(address, id);
    if (link == nullptr || link->announced) {
        return;
    }
    link->announced = true;
    const std::string given = link->given;
    const std::uint64_t owner = link->registration;
    lock.unlock();
    Report(owner, 0, true, given);
}

void Links::EndLink(const std::string& address, std::uint64_t id, int code)
{
    std::unique_lock lock(m_simulator.mutex);
    const Link* found = Find(address, id);
    if (found == nullptr) {
        return;
    }
    const Link link = *found;
    m_links.erase(address);
    if (link.hasNext) {
        Open(address, link.nextGiven, link.next, link.nextWaits);
    }
    lock.unlock();
    if (!link.announced) {
        m_simulator.air.Tell(LYN_SIMULATOR_AIR_CONNECT_FAILED, address);
        Report(link.registration, IsSuccess(code) ? kLinkLost : code, true, link.given);
        return;
    }
    m_simulator.air.Tell(LYN_SIMULATOR_AIR_DISCONNECTED, address);
    Report(link.registration, code, false, link.given);
}

void Links::Report(std::uint64_t registrationId, int code, bool connected, const std::string& given)
{
    std::unique_lock lock(m_simulator.mutex);
    const auto current = registration;
    lock.unlock();
    if (current.Holds(registrationId)) {
        current.callback(code, connected, given.c_str(), current.userData);
    }
}

}  // namespace lyn::simulator
