// SPDX-License-Identifier: Apache-2.0
//
// Fixture: a fresh simulated TV before each test, and nothing left alive on it afterwards.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lyn_simulator/simulator.h"
#include "support/LogLines.h"

namespace lyn::test {

class SimulatedTv : public ::testing::Test {
protected:
    SimulatedTv();
    ~SimulatedTv() override;

    /// Calls of the journal whose function starts with the prefix, as "function(arguments)".
    static std::vector<std::string> Calls(const std::string& prefix);
    static int CountCalls(const std::string& function);
};

}  // namespace lyn::test
