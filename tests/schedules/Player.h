// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "schedules/Process.h"

namespace lyn::schedules {

/// The whole life of a process that plays.
[[noreturn]] void PlayAndExit(const Task& task);

}  // namespace lyn::schedules
