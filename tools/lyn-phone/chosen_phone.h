// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "arguments.h"
#include "lyn_simulator/simulator.h"

namespace lynphone {

/// The phone that the arguments ask for. Throws lynctl::Failure (kExitUsage).
lyn::simulator::Phone ChoosePhone(const Arguments& arguments);

/// What of the phone's script an adapter cannot be made to do: one line each, empty when it can do all.
std::vector<std::string> LeftOut(const lyn::simulator::Phone& phone);

}  // namespace lynphone
