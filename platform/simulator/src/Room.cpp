// SPDX-License-Identifier: Apache-2.0
#include "Room.h"

#include <algorithm>

#include "Address.h"
#include "Simulator.h"

namespace lyn::simulator {

namespace {

constexpr std::size_t kMaxMessages = 1000;

void Demand(bool good, const char* what)
{
    if (!good) {
        throw std::invalid_argument(what);
    }
}

std::string LowerCase(std::string text)
{
    for (char& character : text) {
        character = g_ascii_tolower(character);
    }
    return text;
}

void CheckAnswer(const Answer& answer)
{
    Demand(answer.delayMs >= 0, "a delay is not negative");
    Demand(answer.repeat >= 0, "a number of notifications is not negative");
}

/// The phone as the room keeps it: checked, addresses and UUIDs in their one form.
Phone Checked(Phone phone)
{
    const auto address = CanonicalAddress(phone.address);
    Demand(address.has_value(), "a phone's address is six hexadecimal pairs joined by colons");
    phone.address = *address;
    Demand(phone.intervalMs >= 0 && phone.limit >= 0, "an interval or a limit is not negative");
    Demand(phone.rssiJitter >= 0, "a jitter is not negative");
    Demand(phone.mtuDelayMs >= 0 && phone.disconnectDelayMs >= 0, "a delay is not negative");
    Demand(phone.dropAfterConnectMs.value_or(0) >= 0, "a delay is not negative");
    Demand(phone.joinsAtMs >= 0 && phone.leavesAtMs.value_or(0) >= 0, "a time is not negative");
    for (const ConnectOutcome& outcome : phone.connects) {
        Demand(outcome.delayMs >= 0, "a delay is not negative");
    }
    for (Service& service : phone.services) {
        service.uuid = LowerCase(service.uuid);
        for (Characteristic& characteristic : service.characteristics) {
            characteristic.uuid = LowerCase(characteristic.uuid);
            std::for_each(characteristic.answers.begin(), characteristic.answers.end(), CheckAnswer);
        }
    }
    return phone;
}

}  // namespace

const Characteristic* FindOffered(const Phone& phone, const std::string& serviceUuid, const std::string& uuid)
{
    for (const Service& service : phone.services) {
        for (const Characteristic& characteristic : service.characteristics) {
            if (service.uuid == serviceUuid && characteristic.uuid == uuid) {
                return &characteristic;
            }
        }
    }
    return nullptr;
}

Room::Room(Simulator& simulator) : m_simulator(simulator) {}

void Room::Reset()
{
    for (const auto& phone : m_phones) {
        phone->removed = true;
    }
    m_phones.clear();
    m_messages.clear();
    m_added = 0;
}

void Room::Add(const Phone& phone)
{
    auto added = std::make_shared<RoomPhone>();
    added->phone = Checked(phone);
    added->jitter.seed(++m_added);
    const auto old = Find(added->phone.address);
    if (old != m_phones.end()) {
        (*old)->removed = true;
        *old = added;
    } else {
        m_phones.push_back(added);
    }
    added->present = added->phone.joinsAtMs == 0;
    ScheduleComing(added);
    if (added->present) {
        Join(*added);
    }
}

void Room::Remove(const std::string& address)
{
    const auto found = Find(address);
    if (found == m_phones.end()) {
        return;
    }
    const std::shared_ptr<RoomPhone> phone = *found;
    m_phones.erase(found);
    phone->removed = true;
    Leave(*phone);
}

RoomPhone* Room::Present(const std::string& address)
{
    const auto found = Find(address);
    return found != m_phones.end() && (*found)->present ? found->get() : nullptr;
}

const std::vector<std::shared_ptr<RoomPhone>>& Room::All() const
{
    return m_phones;
}

void Room::RecordMessage(const std::string& address, const std::string& message)
{
    auto& messages = m_messages[address];
    if (messages.size() >= kMaxMessages) {
        messages.pop_front();
    }
    messages.push_back(message);
}

std::vector<std::string> Room::MessagesTo(const std::string& address) const
{
    const auto found = m_messages.find(address);
    if (found == m_messages.end()) {
        return {};
    }
    return {found->second.begin(), found->second.end()};
}

Room::Position Room::Find(const std::string& address)
{
    return std::find_if(m_phones.begin(), m_phones.end(),
                        [&](const auto& phone) { return phone->phone.address == address; });
}

void Room::ScheduleComing(const std::shared_ptr<RoomPhone>& phone)
{
    const auto at = [&](int ms, void (Room::*step)(RoomPhone&)) {
        m_simulator.loop.Post(Loop::Kind::background, ms, [this, step, held = std::weak_ptr(phone)] {
            const std::lock_guard lock(m_simulator.mutex);
            const auto live = held.lock();
            if (live && !live->removed) {
                (this->*step)(*live);
            }
        });
    };
    if (phone->phone.joinsAtMs > 0) {
        at(phone->phone.joinsAtMs, &Room::Join);
    }
    if (phone->phone.leavesAtMs) {
        at(*phone->phone.leavesAtMs, &Room::Leave);
    }
}

void Room::Join(RoomPhone& phone)
{
    phone.present = true;
    phone.sent = 0;
    phone.nextDueUs = Loop::Now();
    m_simulator.radio.Reschedule();
    m_simulator.links.PhoneCame(phone.phone.address);
}

void Room::Leave(RoomPhone& phone)
{
    phone.present = false;
    m_simulator.links.Lose(phone.phone.address, phone.phone.dropCode);
}

}  // namespace lyn::simulator
