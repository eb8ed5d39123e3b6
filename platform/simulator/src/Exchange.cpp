// SPDX-License-Identifier: Apache-2.0
#include "Exchange.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Simulator.h"

namespace lyn::simulator {

namespace {

constexpr unsigned kLeastMtu = 23;
constexpr unsigned kMostMtu = 517;

}  // namespace

Exchange::Exchange(Simulator& simulator) : m_simulator(simulator) {}

int Exchange::RequestMtu(bt_gatt_client_h handle, unsigned mtu)
{
    const Client* client = m_simulator.clients.Find(handle);
    if (client == nullptr || mtu < kLeastMtu || mtu > kMostMtu) {
        return kInvalidArgument;
    }
    const RoomPhone* phone = m_simulator.room.Present(client->address);
    if (phone == nullptr || m_simulator.clients.LinkOf(*client) == nullptr) {
        return kNotConnected;
    }
    m_simulator.loop.Post(Loop::Kind::awaited, phone->phone.mtuDelayMs,
                          [this, handle, mtu] { EndMtuRequest(handle, mtu); });
    return 0;
}

void Exchange::EndMtuRequest(bt_gatt_client_h handle, unsigned mtu)
{
    std::unique_lock lock(m_simulator.mutex);
    const Client* client = m_simulator.clients.Find(handle);
    if (client == nullptr) {
        return;
    }
    Link* link = m_simulator.clients.LinkOf(*client);
    const RoomPhone* phone = m_simulator.room.Present(client->address);
    const std::string address = client->address;
    bt_gatt_client_att_mtu_info_s info{address.c_str(), kLeastMtu, static_cast<unsigned>(kNotConnected)};
    if (link != nullptr && phone != nullptr) {
        if (phone->phone.mtuStatus == 0) {
            link->mtu = std::clamp(phone->phone.maxMtu, kLeastMtu, mtu);
        }
        info.mtu = link->mtu;
        info.status = phone->phone.mtuStatus;
    }
    const auto registration = client->mtu;
    lock.unlock();
    if (registration.callback != nullptr) {
        registration.callback(handle, &info, registration.userData);
    }
}

int Exchange::Write(bt_gatt_h handle, bt_gatt_client_request_completed_cb callback, void* userData)
{
    Attribute* attribute = m_simulator.clients.FindCharacteristic(handle);
    if (attribute == nullptr) {
        return kInvalidArgument;
    }
    const Client& client = *m_simulator.clients.Find(attribute->client);
    if (m_simulator.clients.LinkOf(client) == nullptr) {
        return kNotConnected;
    }
    const Characteristic* offered = m_simulator.clients.Offered(*attribute);
    if (offered == nullptr || !offered->writable) {
        return kRefused;
    }
    attribute->write = {callback, userData, m_simulator.NewId()};
    const Target target{client.address, client.link, attribute->serviceUuid, attribute->uuid};
    m_simulator.loop.Post(Loop::Kind::awaited, 0,
                          [this, target, handle, message = attribute->value, completion = attribute->write] {
                              Arrive(target, message, handle, completion);
                          });
    return 0;
}

void Exchange::Arrive(const Target& target, const std::string& message, bt_gatt_h characteristic,
                      const Completion& completion)
{
    std::unique_lock lock(m_simulator.mutex);
    if (m_simulator.links.Up(target.address, target.link) == nullptr) {
        PostCompletion(characteristic, completion, kNotConnected, 0);
        return;
    }
    m_simulator.room.RecordMessage(target.address, message);
    Act(target, NextAnswer(target), characteristic, completion);
    lock.unlock();
    m_simulator.air.Tell(LYN_SIMULATOR_AIR_WRITE, target.address, message);
}

Answer Exchange::NextAnswer(const Target& target)
{
    RoomPhone* phone = m_simulator.room.Present(target.address);
    const Characteristic* offered =
        phone != nullptr ? FindOffered(phone->phone, target.serviceUuid, target.uuid) : nullptr;
    if (offered == nullptr || offered->answers.empty()) {
        Answer silent;
        silent.kind = Answer::Kind::silent;
        return silent;
    }
    AnswersUsed& used = phone->answersUsed[target.serviceUuid + target.uuid];
    if (offered->answersPerLink && used.link != target.link) {
        used = {target.link, 0};
    }
    return offered->answers[std::min(used.count++, offered->answers.size() - 1)];
}

void Exchange::Act(const Target& target, const Answer& answer, bt_gatt_h characteristic,
                   const Completion& completion)
{
    switch (answer.kind) {
    case Answer::Kind::writeError:
        PostCompletion(characteristic, completion, answer.code, answer.delayMs);
        return;
    case Answer::Kind::silent:
        PostCompletion(characteristic, completion, 0, answer.delayMs);
        return;
    case Answer::Kind::notify:
        if (!answer.beforeCompletion) {
            PostCompletion(characteristic, completion, 0, 0);
        }
        PostNotifications(target, answer);
        if (answer.beforeCompletion) {
            PostCompletion(characteristic, completion, 0, answer.delayMs);
        }
        return;
    case Answer::Kind::disconnect:
        if (!answer.beforeCompletion) {
            PostCompletion(characteristic, completion, 0, 0);
        }
        PostDrop(target, answer, characteristic, completion);
        return;
    }
}

void Exchange::PostCompletion(bt_gatt_h characteristic, const Completion& completion, int result, int delayMs)
{
    m_simulator.loop.Post(Loop::Kind::awaited, delayMs, [this, characteristic, completion, result] {
        Complete(characteristic, completion, result);
    });
}

void Exchange::PostNotifications(const Target& target, const Answer& answer)
{
    for (int i = 0; i < answer.repeat; ++i) {
        m_simulator.loop.Post(Loop::Kind::awaited, answer.delayMs,
                              [this, target, text = answer.text] { Notify(target, text); });
    }
}

void Exchange::PostDrop(const Target& target, const Answer& answer, bt_gatt_h characteristic,
                        const Completion& completion)
{
    m_simulator.loop.Post(
        Loop::Kind::awaited, answer.delayMs,
        [this, target, code = answer.code, before = answer.beforeCompletion, characteristic, completion] {
            const std::lock_guard lock(m_simulator.mutex);
            if (m_simulator.links.Up(target.address, target.link) != nullptr) {
                m_simulator.links.Lose(target.address, code);
            }
            if (before) {
                PostCompletion(characteristic, completion, 0, 0);
            }
        });
}

void Exchange::Complete(bt_gatt_h characteristic, const Completion& completion, int result)
{
    std::unique_lock lock(m_simulator.mutex);
    const Attribute* attribute = m_simulator.clients.FindCharacteristic(characteristic);
    if (attribute == nullptr) {
        return;
    }
    const bool up = m_simulator.clients.LinkOf(*m_simulator.clients.Find(attribute->client)) != nullptr;
    lock.unlock();
    if (completion.callback != nullptr) {
        completion.callback(result == 0 && !up ? kNotConnected : result, characteristic, completion.userData);
    }
}

void Exchange::Notify(const Target& target, const std::string& text)
{
    std::unique_lock lock(m_simulator.mutex);
    if (m_simulator.links.Up(target.address, target.link) == nullptr) {
        return;
    }
    const auto listeners = m_simulator.clients.Listeners(target.link, target.serviceUuid, target.uuid);
    lock.unlock();
    if (listeners.empty()) {
        return;
    }
    m_simulator.air.Tell(LYN_SIMULATOR_AIR_NOTIFY, target.address, text);
    for (const bt_gatt_h listener : listeners) {
        Hand(listener, text);
    }
}

void Exchange::Hand(bt_gatt_h listener, const std::string& text)
{
    // A copy of exactly this size, NUL included, so that a reader who goes too far is caught.
    const std::unique_ptr<char[]> value(new char[text.size() + 1]);
    std::memcpy(value.get(), text.c_str(), text.size() + 1);

    std::unique_lock lock(m_simulator.mutex);
    const Attribute* attribute = m_simulator.clients.FindCharacteristic(listener);
    if (attribute == nullptr) {
        return;
    }
    const auto registration = attribute->notification;
    lock.unlock();
    if (registration.callback != nullptr) {
        registration.callback(listener, value.get(), static_cast<int>(text.size()), registration.userData);
    }
}

}  // namespace lyn::simulator
