// SPDX-License-Identifier: Apache-2.0
#include "Radio.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "Simulator.h"

namespace lyn::simulator {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
using Buffer = std::unique_ptr<char, Free>;

/// A copy of exactly the packet's size, so that a reader who goes one byte too far is caught.
Buffer CopyPacket(const Bytes* packet)
{
    if (packet == nullptr) {
        return nullptr;
    }
    Buffer copy(static_cast<char*>(std::malloc(packet->size())));
    if (copy && !packet->empty()) {
        std::memcpy(copy.get(), packet->data(), packet->size());
    }
    return copy;
}

bool IsHeard(const RoomPhone& phone)
{
    return phone.present && (phone.phone.limit == 0 || phone.sent < phone.phone.limit);
}

int JitteredRssi(RoomPhone& phone)
{
    const int spread = phone.phone.rssiJitter;
    if (spread == 0) {
        return phone.phone.rssi;
    }
    return phone.phone.rssi - spread + std::uniform_int_distribution<int>(0, 2 * spread)(phone.jitter);
}

Radio::Advertisement Compose(RoomPhone& heard)
{
    const Phone& phone = heard.phone;
    return {phone.address, JitteredRssi(heard), phone.hasAdvertising ? &phone.advertising : nullptr,
            phone.scanResponse ? &*phone.scanResponse : nullptr};
}

}  // namespace

Radio::Radio(Simulator& simulator) : m_simulator(simulator) {}

void Radio::Reset()
{
    registration = {};
    m_tick = 0;
}

void Radio::StartScan(bt_adapter_le_scan_result_cb callback, void* userData)
{
    registration = {callback, userData, m_simulator.NewId()};
    for (const auto& phone : m_simulator.room.All()) {
        phone->sent = 0;
        phone->nextDueUs = Loop::Now();
    }
    Reschedule();
}

bool Radio::StopScan()
{
    const bool was = IsScanning();
    m_simulator.loop.Cancel(m_coming);
    registration = {};
    m_tick = 0;
    return was;
}

bool Radio::IsScanning() const
{
    return registration.id != 0;
}

void Radio::Reschedule()
{
    if (!IsScanning()) {
        return;
    }
    gint64 earliest = std::numeric_limits<gint64>::max();
    bool first = false;
    for (const auto& phone : m_simulator.room.All()) {
        if (IsHeard(*phone)) {
            earliest = std::min(earliest, phone->nextDueUs);
            first = first || phone->sent == 0;
        }
    }
    m_simulator.loop.Cancel(m_coming);
    m_tick = m_simulator.NewId();
    if (earliest != std::numeric_limits<gint64>::max()) {
        const auto kind = first ? Loop::Kind::awaited : Loop::Kind::background;
        m_coming = m_simulator.loop.PostAt(kind, earliest, [this, tick = m_tick] { Tick(tick); });
    }
}

void Radio::Tick(std::uint64_t tick)
{
    std::unique_lock lock(m_simulator.mutex);
    if (tick != m_tick) {
        return;
    }
    const std::uint64_t scan = registration.id;
    const auto due = TakeDue();
    Reschedule();
    for (const auto& phone : due) {
        if (phone->removed || !phone->present) {
            continue;
        }
        const Advertisement advertisement = Compose(*phone);
        lock.unlock();
        Deliver(advertisement, scan);
        lock.lock();
    }
}

std::vector<std::shared_ptr<RoomPhone>> Radio::TakeDue() const
{
    const gint64 now = Loop::Now();
    std::vector<std::shared_ptr<RoomPhone>> due;
    for (const auto& phone : m_simulator.room.All()) {
        if (!IsHeard(*phone) || phone->nextDueUs > now) {
            continue;
        }
        ++phone->sent;
        const gint64 interval = gint64{phone->phone.intervalMs} * 1000;
        // A loop that was busy for long gets one advertisement, not all those that it has missed.
        phone->nextDueUs = std::max(phone->nextDueUs + interval, now);
        due.push_back(phone);
    }
    return due;
}

void Radio::Deliver(const Advertisement& advertisement, std::uint64_t scan)
{
    const Buffer advertising = CopyPacket(advertisement.advertising);
    const Buffer response = CopyPacket(advertisement.scanResponse);
    std::array<char, 64> address{};
    advertisement.address.copy(address.data(), address.size() - 1);

    bt_adapter_le_device_scan_result_info_s info{};
    info.remote_address = address.data();
    info.rssi = advertisement.rssi;
    info.adv_data = advertising.get();
    info.adv_data_len = advertising ? static_cast<int>(advertisement.advertising->size()) : 0;
    info.scan_data = response.get();
    info.scan_data_len = response ? static_cast<int>(advertisement.scanResponse->size()) : 0;

    std::unique_lock lock(m_simulator.mutex);
    const auto current = registration;
    lock.unlock();
    if (current.Holds(scan)) {
        current.callback(0, &info, current.userData);
    }
}

}  // namespace lyn::simulator
