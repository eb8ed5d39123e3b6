// SPDX-License-Identifier: Apache-2.0
//
// The services under test and a phone for each of them that answers without delay.
#pragma once

#include <string>
#include <vector>

#include "lyn_simulator/simulator.h"

namespace lyn::test {

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";

/// "dummy", "mirroring", "nodlink", "kov".
const std::vector<std::string>& AllServices();
/// The three that talk to phones.
const std::vector<std::string>& RadioServices();

/// The phone kPhone of a service; it advertises all the time and answers "Success". "dummy" needs none, and
/// gets one of "mirroring".
simulator::Phone PhoneFor(const std::string& service);
/// The one characteristic of such a phone.
simulator::Characteristic& CharacteristicOf(simulator::Phone& phone);

}  // namespace lyn::test
