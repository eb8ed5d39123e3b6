// SPDX-License-Identifier: Apache-2.0
//
// What the platform and the main loop may have to deliver at any moment, to whomever is registered then.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace lyn::test {

struct Delivery {
    const char* name;
    bool movesState;  ///< may do so, when it comes at the right moment
    /// Does it, on the main loop's thread, for whomever is registered when this is asked for; empty for nobody.
    std::function<void()> (*due)();
};

/// All of them, the phone's answer before the time-out.
const std::vector<Delivery>& AnswerFirst();
/// All of them, the time-out first.
const std::vector<Delivery>& TimeoutFirst();

/// Lets every time-out elapse and everything come. Main loop thread.
void LetAllCome();

}  // namespace lyn::test
