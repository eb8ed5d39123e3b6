// SPDX-License-Identifier: Apache-2.0
//
// What the sequence fuzzer has asked for and was told, checked against docs/behaviour.md as it happens:
// which call is allowed in which state, which states it reports, whose callback gets a phone or a result.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "lyn_service.h"

namespace lyn::fuzz {

class Ledger;
class Player;

/// One service, from its creation to its end. Handed to the library as the state callback's user data.
struct Life {
    Ledger* ledger = nullptr;
    Player* player = nullptr;
    std::string service;
    lyn_service_h handle = nullptr;
    bool isAlive = true;
    bool mayLackParts = false;  ///< platform calls were made to fail while it was created
    bool hasWavered = false;    ///< has been NOT_READY: results may be missing from then on
    bool isOpen = false;        ///< a request waits for its result
    bool isResultDue = false;   ///< READY was reported, and the result must be next
    lyn_state_e state = LYN_STATE_READY;
    std::vector<lyn_state_e> reports;  ///< during the call in progress
    const void* phonesTo = nullptr;    ///< user data of the last scan's callback
    const void* resultTo = nullptr;    ///< user data of the last request's callback
};

/// One call with a callback. Handed to the library as the callback's user data.
struct Asked {
    Life* life = nullptr;
};

class Ledger {
public:
    enum class Call { startScan, stopScan, request, startAdvertise, stopAdvertise, other };

    explicit Ledger(Player& player) : m_player(player) {}

    /// The living service, or null.
    Life* Living() const { return m_living; }
    /// Before lyn_create_service(): the user data. Begin() follows when it has succeeded.
    Life& Announce(const std::string& service, bool mayLackParts);
    void Begin(Life& life, lyn_service_h handle);
    void End(Life& life);
    Asked& Ask(Life* life);

    /// Wraps a call of the library with the living service.
    class CallScope {
    public:
        CallScope(Ledger& ledger, Life& life);
        ~CallScope();
        CallScope(const CallScope&) = delete;
        CallScope& operator=(const CallScope&) = delete;
        /// Requires return value and reports to be as documented. `mayFail`: the platform may refuse.
        void Check(Call call, lyn_error_e error, bool mayFail) const;

    private:
        void CheckReports(Call call, lyn_error_e error, bool mayFail) const;

        Ledger& m_ledger;
        Life& m_life;
        const lyn_state_e m_before;
        const int m_serial;
    };

    /// What a callback of the library has said.
    void OnState(Life& life, lyn_state_e state) const;
    void OnPhone(const Asked& asked) const;
    void OnResult(const Asked& asked, lyn_request_initiating_result_e result) const;
    /// Between two steps, outside of callbacks.
    void RequireNothingDue() const;

private:
    Player& m_player;
    std::deque<Life> m_lives;
    std::deque<Asked> m_asked;
    Life* m_living = nullptr;
    int m_serial = 0;
    int m_calls = 0;
};

}  // namespace lyn::fuzz
