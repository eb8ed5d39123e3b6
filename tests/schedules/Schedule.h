// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "schedules/Conductor.h"

namespace lyn::schedules {

/// Makes the process one that plays schedules: threads that wait for their moves, a library that stops.
void BeginPlaying();
void EndPlaying();

/// Plays one schedule to its end, and looks at what is left. Fails, or returns.
void Play(Chooser& chooser, const Script& header);

}  // namespace lyn::schedules
