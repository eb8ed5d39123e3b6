// SPDX-License-Identifier: Apache-2.0
//
// Fixture: one device state checker, held as its owner holds it, and what it reports.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "FSM/CDeviceStateChecker.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

inline constexpr std::uint32_t kSuspend = 0x40000000;

using Texts = std::vector<std::string>;

class CheckerTest : public SimulatedTv {
protected:
    CheckerTest() : checker(MakeChecker()) {}

    static std::shared_ptr<CDeviceStateChecekr> MakeChecker()
    {
        return {new CDeviceStateChecekr, [](CDeviceStateChecekr* doomed) {
                    doomed->Deinit();
                    delete doomed;
                }};
    }

    CDeviceStateChecekr::DeviceStateChangedCallbck KeepReports()
    {
        return [this](bool enabled) { reports.push_back(enabled); };
    }

    /// A checker that has begun on a TV in this state, with nothing in the journal and the log.
    void Begin(bt_adapter_state_e adapter, int power)
    {
        simulator::SetAdapterState(adapter, false);
        simulator::SetPowerState(power);
        checker->Init(KeepReports());
        checker->Start();
        simulator::ClearJournal();
        simulator::ClearLog();
    }

    std::shared_ptr<CDeviceStateChecekr> checker;
    std::vector<bool> reports;
};

}  // namespace lyn::test
