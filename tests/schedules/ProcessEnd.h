// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace lyn::schedules {

/// Looks at the process's end once the library's own part of it is over; for a process that ends in mid-schedule.
/// Before the library's first call.
void WatchProcessEnd();

}  // namespace lyn::schedules
