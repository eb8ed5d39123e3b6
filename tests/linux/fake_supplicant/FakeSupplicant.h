// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "FakeDaemon.h"

namespace lyn::linux_tests {

/// wpa_supplicant's side of the bus for tests: an interface of Wi-Fi Direct, and one that is connected.
class FakeSupplicant : public FakeDaemon {
public:
    static constexpr const char* kBssid = "02:00:00:ab:00:fe";
    static constexpr int kFrequency = 5180;

    /// On the bus.
    FakeSupplicant();
    ~FakeSupplicant() override;
};

}  // namespace lyn::linux_tests
