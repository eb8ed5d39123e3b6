// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "Adapter.h"
#include "Air.h"
#include "CallJournal.h"
#include "Clients.h"
#include "Codes.h"
#include "Exchange.h"
#include "Faults.h"
#include "Files.h"
#include "KernelLogBook.h"
#include "Links.h"
#include "Loop.h"
#include "Power.h"
#include "Radio.h"
#include "Room.h"
#include "Settings.h"
#include "Wifi.h"

namespace lyn::simulator {

struct Scenario;

/// The one simulated TV of the process, with all its parts. It is never destroyed, for others may still
/// call the platform while the process ends.
///
/// One lock guards all of it. It is never held while a callback runs: what calls back copies the
/// registration under the lock, lets go, and calls.
class Simulator {
public:
    /// The simulator, running the scenario that the process starts with unless another was chosen before.
    static Simulator& Started();
    /// The simulator as it is.
    static Simulator& Instance();

    /// With the lock: a default TV in an empty room.
    void Reset();
    /// With the lock: a reset, and then the TV and the room of a scenario.
    void Apply(const Scenario& scenario);

    /// With the lock: a number that was never given before. Never 0.
    std::uint64_t NewId();

    /// Why the process has no scenario, or empty. With the lock.
    std::string startError;

    std::mutex mutex;
    Loop loop{mutex};
    CallJournal journal;
    Faults faults;
    Room room{*this};
    Radio radio{*this};
    Links links{*this};
    Clients clients{*this};
    Exchange exchange{*this};
    Adapter adapter{*this};
    Power power{*this};
    Wifi wifi;
    Files files;
    KernelLogBook kernelLog;
    Air air{*this};
    std::map<std::string, SettingValue> settings;
    std::map<std::string, int> systemInfo;

private:
    Simulator();

    void ResetParts();
    void Populate(const Scenario& scenario);
    void StartWithProcessScenario();

    std::atomic<bool> m_started = false;
    std::uint64_t m_ids = 0;
};

}  // namespace lyn::simulator
