// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <deque>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

class Simulator;

/// How many answers of a characteristic are used up.
struct AnswersUsed {
    std::uint64_t link = 0;  ///< on which link, where each link begins anew
    std::size_t count = 0;
};

/// A phone of the room and how far it has come in its script.
struct RoomPhone {
    Phone phone;
    bool present = true;   ///< has joined and not left
    bool removed = false;  ///< no longer of this room, while someone still holds it
    gint64 nextDueUs = 0;  ///< next advertisement
    int sent = 0;          ///< advertisements in this scan
    std::minstd_rand jitter;
    std::size_t connectsUsed = 0;
    std::map<std::string, AnswersUsed> answersUsed;  ///< by characteristic
};

/// The phones around the TV, in the order of their adding. The caller holds the simulator's lock.
class Room {
public:
    explicit Room(Simulator& simulator);

    void Reset();
    void Add(const Phone& phone);
    void Remove(const std::string& address);

    /// The phone of this address if it is present, or null.
    RoomPhone* Present(const std::string& address);
    const std::vector<std::shared_ptr<RoomPhone>>& All() const;

    void RecordMessage(const std::string& address, const std::string& message);
    std::vector<std::string> MessagesTo(const std::string& address) const;

private:
    using Position = std::vector<std::shared_ptr<RoomPhone>>::iterator;

    Position Find(const std::string& address);
    void ScheduleComing(const std::shared_ptr<RoomPhone>& phone);
    void Join(RoomPhone& phone);
    void Leave(RoomPhone& phone);

    Simulator& m_simulator;
    std::vector<std::shared_ptr<RoomPhone>> m_phones;
    std::map<std::string, std::deque<std::string>> m_messages;
    unsigned m_added = 0;
};

/// What a phone offers under the UUIDs of a service and a characteristic, or null.
const Characteristic* FindOffered(const Phone& phone, const std::string& serviceUuid, const std::string& uuid);

}  // namespace lyn::simulator
