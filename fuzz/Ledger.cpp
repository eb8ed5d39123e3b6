// SPDX-License-Identifier: Apache-2.0
#include "Ledger.h"

#include "Room.h"

namespace lyn::fuzz {
namespace {

using States = std::vector<lyn_state_e>;

bool IsAllowed(Ledger::Call call, lyn_state_e state)
{
    switch (call) {
    case Ledger::Call::startScan:
        return state == LYN_STATE_READY;
    case Ledger::Call::request:
    case Ledger::Call::startAdvertise:
    case Ledger::Call::stopAdvertise:
        return state == LYN_STATE_READY || state == LYN_STATE_SCANNING;
    case Ledger::Call::stopScan:
    case Ledger::Call::other:
        return true;
    }
    return true;
}

}  // namespace

Life& Ledger::Announce(const std::string& service, bool mayLackParts)
{
    Life& life = m_lives.emplace_back();
    life.ledger = this;
    life.player = &m_player;
    life.service = service;
    life.mayLackParts = mayLackParts;
    life.isAlive = false;
    return life;
}

void Ledger::Begin(Life& life, lyn_service_h handle)
{
    Require(m_living == nullptr, "one service lives at a time");
    Require(handle != nullptr, "a created service has a handle");
    life.handle = handle;
    life.isAlive = true;
    m_living = &life;
    ++m_serial;
}

void Ledger::End(Life& life)
{
    life.isAlive = false;
    life.isOpen = false;
    life.isResultDue = false;
    m_living = nullptr;
    ++m_serial;
}

Asked& Ledger::Ask(Life* life)
{
    return m_asked.emplace_back(Asked{life});
}

void Ledger::OnState(Life& life, lyn_state_e state) const
{
    Require(life.isAlive, "no state is reported before the creation or after the end");
    Require(state >= LYN_STATE_READY && state <= LYN_STATE_NOT_READY, "a state is one of the enumeration");
    Require(!life.isResultDue, "a result follows its READY at once");
    const bool isNodLink = life.service == "nodlink";
    Require(state != LYN_STATE_NOT_READY || isNodLink, "NOT_READY comes with nodlink only");
    if (m_calls == 0) {
        Require(state == LYN_STATE_READY || state == LYN_STATE_NOT_READY, "work begins inside a call only");
        Require(isNodLink || life.state == LYN_STATE_REQUESTING, "READY from the main loop ends a request");
        life.isResultDue = life.state == LYN_STATE_REQUESTING && !life.hasWavered && state == LYN_STATE_READY;
    }
    if (state == LYN_STATE_NOT_READY) {
        life.hasWavered = true;
        life.isOpen = false;
    }
    life.state = state;
    life.reports.push_back(state);
}

void Ledger::OnPhone(const Asked& asked) const
{
    Require(asked.life != nullptr && asked.life->isAlive, "no phone is reported after the end");
    Require(asked.life->phonesTo == &asked, "the last given device callback is called");
    RequireNothingDue();
}

void Ledger::OnResult(const Asked& asked, lyn_request_initiating_result_e result) const
{
    Require(result >= LYN_REQUEST_INITIATING_RESULT_SUCCESS &&
                result <= LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED &&
                result != LYN_REQUEST_INITIATING_RESULT_RESERVED,
            "a result is one of the enumeration, and not the reserved one");
    Require(asked.life != nullptr && asked.life->isAlive, "no result is reported after the end");
    Require(m_calls == 0, "a result comes from the main loop");
    Life& life = *asked.life;
    Require(life.resultTo == &asked, "the last given result callback is called");
    Require(life.isOpen, "a request has one result at most");
    Require(life.isResultDue || life.hasWavered, "a result follows READY");
    Require(life.state == LYN_STATE_READY, "a service is ready when the result comes");
    life.isOpen = false;
    life.isResultDue = false;
}

void Ledger::RequireNothingDue() const
{
    Require(m_living == nullptr || !m_living->isResultDue, "a result follows its READY at once");
}

Ledger::CallScope::CallScope(Ledger& ledger, Life& life)
    : m_ledger(ledger),
      m_life(life),
      m_before(life.state),
      m_serial(++ledger.m_serial)
{
    ++m_ledger.m_calls;
    m_life.reports.clear();
}

Ledger::CallScope::~CallScope()
{
    --m_ledger.m_calls;
}

void Ledger::CallScope::Check(Call call, lyn_error_e error, bool mayFail) const
{
    if (m_ledger.m_serial != m_serial) {
        return;  // A callback inside the call has called on.
    }
    if (m_life.mayLackParts && error == LYN_ERROR_INTERNAL) {
        return;
    }
    Require(IsAllowed(call, m_before) == (error != LYN_ERROR_INVALID_STATE),
            "a call is refused where it is documented, and only there");
    Require(error == LYN_ERROR_NONE || error == LYN_ERROR_INVALID_STATE ||
                (error == LYN_ERROR_OPERATION_FAILED && (mayFail || call == Call::request)),
            "a call fails for a documented reason");
    CheckReports(call, error, mayFail);
}

void Ledger::CallScope::CheckReports(Call call, lyn_error_e error, bool mayFail) const
{
    const States& reports = m_life.reports;
    const bool isDone = error == LYN_ERROR_NONE;
    const bool isDummyScan = m_life.service == "dummy" && m_before == LYN_STATE_SCANNING;
    States stopped(isDummyScan ? 2 : 1, LYN_STATE_READY);
    if (call == Call::startScan) {
        Require(reports == (isDone ? States{LYN_STATE_SCANNING} : States()), "a started scan reports SCANNING");
    } else if (call == Call::stopScan) {
        const bool isReported = isDone && m_before != LYN_STATE_REQUESTING;
        Require(reports == (isReported ? stopped : States()), "a stopped scan reports READY, but for a request");
    } else if (call == Call::request && error != LYN_ERROR_INVALID_STATE) {
        States unstopped;
        if (isDone) {
            stopped.push_back(LYN_STATE_REQUESTING);
            unstopped.push_back(LYN_STATE_REQUESTING);
        }
        Require(reports == stopped || (mayFail && reports == unstopped), "a request reports READY and REQUESTING");
    } else {
        Require(reports.empty(), "another call reports no state");
    }
}

}  // namespace lyn::fuzz
