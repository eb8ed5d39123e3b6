// SPDX-License-Identifier: Apache-2.0
//
// The run of a played sequence: from the first phone to what must hold at the end.
#include <string_view>

#include "Player.h"
#include "support/Clock.h"

namespace lyn::fuzz {
namespace {

constexpr std::size_t MOST_STEPS = 100;
constexpr std::string_view STEPS = "cdsjxrRaAvteh!bBqpmPzgGyw.,fFn0CMNWkl";

}  // namespace

void Player::Play()
{
    // Written once: the folder is the same in all inputs.
    static const bool isWritten = [] {
        simulator::WriteFile("/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json",
                             R"({"screenmirroring_fullview":["video"]})");
        return true;
    }();
    Require(isWritten, "there is a metadata file");
    simulator::SetConnectDeadline(0);
    for (std::size_t i = 0; i + 1 < PHONES.size(); ++i) {  // The last one is not there yet.
        AddPhone(PHONES[i], i);
    }
    for (std::size_t steps = 0; !m_input.IsEmpty() && steps < MOST_STEPS; ++steps) {
        Step();
        m_ledger.RequireNothingDue();
        RequireNothingLeft();
    }
    Finish();
}

void Player::Step()
{
    const auto byte = static_cast<char>(m_input.TakeByte());
    const char step =
        STEPS.find(byte) != std::string_view::npos ? byte : STEPS[static_cast<unsigned char>(byte) % STEPS.size()];
    const bool isPlayed = PlayCall(step) || PlayEvent(step) || PlayFault(step) || PlayReport(step);
    Require(isPlayed, "every letter is a step");
}

void Player::RequireNothingLeft() const
{
    if (m_ledger.Living() != nullptr || m_mayLeave) {
        return;
    }
    const Registrations left = Register();
    Require(left.adapter.callback == nullptr && left.powerOff.callback == nullptr &&
                left.ambient.callback == nullptr && left.connection.callback == nullptr,
            "nothing but a scan that was not stopped is registered after the end");
    const simulator::Counts alive = simulator::Alive();
    Require(alive.clients == 0, "no client is left behind");
    Require(alive.productInits == 0, "Bluetooth is given back");
    Require(alive.wifiDirectInits == 0, "Wi-Fi Direct is given back");
}

void Player::Finish()
{
    m_reaction = 0;
    simulator::ClearFaults();
    simulator::Settle();
    while (test::ElapseTimeout()) {
        simulator::Settle();
    }
    if (Life* life = m_ledger.Living(); life != nullptr) {
        Require(!life->isOpen, "an accepted request has a result when its time is over");
        Destroy();
    }
    simulator::Settle();
    RequireNothingLeft();
}

}  // namespace lyn::fuzz
