// SPDX-License-Identifier: Apache-2.0
//
// Who may wait for whom. A thread that is inside a platform call, a sleep or a callback of the application holds
// nothing that another needs, but for the few reasons in Outcome.h.
#pragma once

#include "schedules/Actor.h"

namespace lyn::schedules {

/// The thread has begun to wait. Fails when it must not.
void CheckWaitOf(Actor& waiting);
/// The thread has stopped. Fails when another waits for it that must not.
void CheckWaitsFor(const Actor& stopped);
/// A wait has ended.
void CountWait(Actor& waited);

}  // namespace lyn::schedules
