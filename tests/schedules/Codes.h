// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "schedules/Ledger.h"

namespace lyn::schedules {

/// The value that a C++ exception of a bad version counts as.
inline constexpr int kThrown = 9;

/// Fails when a call may not end with this code, or has reported what it may not.
void CheckCode(const Call& call, int code, const Room& room);

}  // namespace lyn::schedules
