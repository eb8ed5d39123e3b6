// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "advertisement.h"
#include "application.h"
#include "lyn_simulator/simulator.h"
#include "peers.h"
#include "reports.h"

namespace lynphone {

/// A phone on an adapter: its services first, then its packets. When bluetoothd goes, the phone waits for it and
/// begins again. Lives on the main context.
class PhoneOnAir {
public:
    /// Called once, from the main loop, when the phone cannot go on.
    using Failed = std::function<void(const std::string& why)>;

    PhoneOnAir(std::shared_ptr<lyn::linux_platform::Bus> bus, const std::string& adapter,
               lyn::simulator::Phone phone, const Reports& reports, Failed failed);

private:
    void OnBluetoothd(const std::string& owner);
    void TurnOn(int tries);
    void Serve();
    void Advertise();
    void OnLink(const std::string& address, bool connected);

    std::shared_ptr<lyn::linux_platform::Bus> m_bus;
    std::string m_adapter;
    std::string m_path;
    lyn::simulator::Phone m_phone;
    const Reports& m_reports;
    Failed m_failed;
    Peers m_peers;
    Application m_application;
    std::unique_ptr<Advertisement> m_advertisement;
    unsigned m_begun = 0;  ///< how often; answers to calls of an earlier beginning are dropped
    lyn::linux_platform::Timer m_retry;
    lyn::linux_platform::Timer m_drop;
    lyn::linux_platform::Subscription m_bluetoothd;
};

}  // namespace lynphone
