// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "schedules/Outcome.h"

namespace lyn::schedules {

/// Prints what has been played.
void PrintSummary(const Counts& counts, double seconds);

}  // namespace lyn::schedules
