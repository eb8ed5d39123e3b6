// SPDX-License-Identifier: Apache-2.0
//
// What a service asks of its scanner. Scan results arrive on the platform's callback context; all else
// runs on the caller's thread. A scanner is held by a shared pointer, so that a scan result in progress
// keeps it while another thread destroys the service.
#pragma once

#include <memory>
#include <string>

#include "Scanner/ScanState.h"

namespace lyn {

class IScanner : public std::enable_shared_from_this<IScanner> {
public:
    IScanner() = default;
    virtual ~IScanner() = default;
    IScanner(const IScanner&) = delete;
    IScanner& operator=(const IScanner&) = delete;

    /// False when the platform refuses.
    virtual bool StartScan() = 0;
    virtual bool StopScan() = 0;
    /// Lets the TV advertise itself; interval as the platform's advertising application takes it.
    virtual void StartAdvertisement(int interval) = 0;
    virtual void StopAdvertisement() = 0;
    /// Reports a phone. An empty name is reported as absent.
    virtual void NotifyDeviceFound(const std::string& name, const std::string& address,
                                   const std::string& uniqueId, int rssi, const std::string& extraData) = 0;
    virtual void NotifyScanStateChanged(ScanState state) = 0;
};

}  // namespace lyn
