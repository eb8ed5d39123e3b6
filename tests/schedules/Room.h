// SPDX-License-Identifier: Apache-2.0
//
// The simulated TV of a schedule and its phones. Each phone has an answer of its own, so that a result tells whose
// it is.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "lyn_service.h"
#include "schedules/Move.h"

namespace lyn::schedules {

inline constexpr int kPhones = 4;
inline constexpr int kBehaviours = 12;
/// Number of a phone that is not there, and of one whose address is none.
inline constexpr int kAbsentPhone = kPhones;
inline constexpr int kNoPhone = kPhones + 1;

const char* AddressOf(int phone);
/// The phone that asks for this service.
int PhoneOf(const std::string& service);
/// The phone's own answer.
lyn_request_initiating_result_e AnswerOf(int phone);

class Room {
public:
    /// A fresh TV with these phones.
    void Begin(const std::vector<int>& behaviours);
    /// What happens on the TV by a move.
    void Happen(const Move& move);
    /// Everything in order again, as far as it lies with the TV.
    void Calm();
    /// A phone that asks for this service advertises once.
    static void Advertise(const std::string& service);
    /// Phones that answer at once, whatever they did before. Links are lost: a service that is destroyed in
    /// mid-request leaves its link to the phone.
    void Mend();

    bool MayAnswer(int phone, const std::string& service, lyn_request_initiating_result_e result) const;

    bool HasFaults() const { return m_hasFaults; }
    /// Something has come between that may end an exchange before its time.
    bool IsDisturbed() const { return m_isDisturbed; }
    bool IsBluetoothOn() const { return m_isBluetoothOn; }
    bool HasBluetoothBeenOff() const { return m_hasBluetoothBeenOff; }
    /// Bluetooth has gone on at some time, which may take a service from any state to READY.
    bool HasBluetoothGoneOn() const { return m_hasBluetoothGoneOn; }

private:
    std::vector<int> m_behaviours;
    bool m_hasFaults = false;
    bool m_isDisturbed = false;
    bool m_isBluetoothOn = true;
    bool m_hasBluetoothBeenOff = false;
    bool m_hasBluetoothGoneOn = false;
};

}  // namespace lyn::schedules
