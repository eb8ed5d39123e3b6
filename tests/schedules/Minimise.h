// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include "schedules/Process.h"

namespace lyn::schedules {

/// Leaves out moves for as long as the rest fails in the same way. Gives a script that fails so, or the given one
/// when it does not fail again.
Script Minimise(const Script& script, const Ending& ending, Task task, const std::function<void()>& onTick);

}  // namespace lyn::schedules
