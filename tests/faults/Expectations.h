// SPDX-License-Identifier: Apache-2.0
//
// What a failed platform call changes in a story. Every call that a story makes must be found here.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "faults/Application.h"

namespace lyn::test {

/// One platform call of a story, and how it fails.
struct PlatformFault {
    std::string function;
    std::string arguments;
    int nth = 1;              ///< of the function's calls, as the simulator counts
    std::size_t line = 0;     ///< the step in which the call is made
    int nthInStep = 1;        ///< of such calls in this step
    std::optional<int> code;  ///< the result; none: success with a null text
};

/// The codes with which a function's failure is tried: one without a meaning, and those that mean something
/// there or might be taken to.
std::vector<std::optional<int>> FaultsOf(const std::string& function);

struct Expected {
    bool isKnown = false;
    Lines lines;
    unsigned mayLeave = 0;  ///< beside what the scenario leaves
};

/// The story as it has to go with this fault.
Expected Expect(const Lines& clean, const PlatformFault& fault);

}  // namespace lyn::test
