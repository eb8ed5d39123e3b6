// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include "Loop.h"
#include "Slot.h"

namespace lyn::simulator {

class Simulator;

/// A link to one phone, from the connect to the report that it is down.
struct Link {
    enum class State { connecting, up, goingDown };

    State state = State::connecting;
    std::uint64_t id = 0;            ///< of this link; a later link to the phone has another
    std::uint64_t attempt = 0;       ///< the one end of a connect that is awaited
    Loop::Ticket coming;             ///< that end, and then the drop by the phone
    std::string given;               ///< the address as the connect has it; reports repeat it
    std::uint64_t registration = 0;  ///< in force when the connect was accepted
    std::string nextGiven;           ///< address and ...
    std::uint64_t next = 0;          ///< ... registration of the connect that waits for the link to be down
    bool hasNext = false;
    bool nextWaits = false;      ///< ... and may wait for its phone
    bool waitsForPhone = false;  ///< connecting to a phone that is not there yet
    bool announced = false;      ///< that it is up has been reported
    unsigned mtu = 23;
};

/// All links. The caller holds the simulator's lock.
class Links {
public:
    explicit Links(Simulator& simulator);

    void Reset();

    /// @param given the address as the caller writes it
    int Connect(const std::string& address, const std::string& given, bool waitForPhone);
    int Disconnect(const std::string& address);

    /// The phone dropped its link, or went away: a link that is up is lost.
    void Lose(const std::string& address, int code);
    /// Every link is lost and every connect fails.
    void LoseAll(int code);
    void PhoneCame(const std::string& address);

    /// The link if it is up, or null.
    Link* Up(const std::string& address);
    Link* Up(const std::string& address, std::uint64_t id);
    int Count() const;

    Slot<bt_gatt_connection_state_changed_cb> registration;
    int deadlineMs = kDefaultDeadlineMs;  ///< a connect that has not ended by then fails

private:
    static constexpr int kDefaultDeadlineMs = 30'000;

    Link* Find(const std::string& address, std::uint64_t id);
    void Open(const std::string& address, const std::string& given, std::uint64_t registrationId,
              bool waitForPhone);
    void Begin(const std::string& address, Link& link);
    int JoinRunning(const std::string& address, const std::string& given, Link& link, bool waitForPhone);
    void TakeDown(const std::string& address, Link& link, int code, int delayMs);
    void ScheduleDrop(const std::string& address, Link& link);

    // Steps on the main loop, without the lock.
    void EndConnect(const std::string& address, std::uint64_t id, std::uint64_t attempt, int code);
    void AnnounceAgain(const std::string& address, std::uint64_t id);
    void EndLink(const std::string& address, std::uint64_t id, int code);
    void Report(std::uint64_t registrationId, int code, bool connected, const std::string& given);

    Simulator& m_simulator;
    std::map<std::string, Link> m_links;
};

}  // namespace lyn::simulator
