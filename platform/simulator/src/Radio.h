// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>

#include "Loop.h"
#include "Room.h"
#include "Slot.h"

namespace lyn::simulator {

class Simulator;

/// The LE scan: while it runs, each phone of the room is heard at its interval. The caller holds the
/// simulator's lock, but for Deliver().
class Radio {
public:
    explicit Radio(Simulator& simulator);

    void Reset();
    void StartScan(bt_adapter_le_scan_result_cb callback, void* userData);
    bool StopScan();  ///< false when no scan was running
    bool IsScanning() const;

    /// To be called when a phone came that may have to be heard earlier than all others.
    void Reschedule();

    /// One advertisement. Null for a packet that is missing.
    struct Advertisement {
        const std::string& address;
        int rssi;
        const Bytes* advertising;
        const Bytes* scanResponse;
    };
    /// Puts it on the air now, if the scan is still this one. Without the lock, on the main loop.
    void Deliver(const Advertisement& advertisement, std::uint64_t scan);

    Slot<bt_adapter_le_scan_result_cb> registration;

private:
    void Tick(std::uint64_t tick);
    std::vector<std::shared_ptr<RoomPhone>> TakeDue() const;

    Simulator& m_simulator;
    std::uint64_t m_tick = 0;  ///< the one tick that is to come; earlier ones are void
    Loop::Ticket m_coming;     ///< its place
};

}  // namespace lyn::simulator
