// SPDX-License-Identifier: Apache-2.0
//
// What becomes of memory that is freed in a schedule. Where nothing else speaks against it, it is kept to the end
// of the schedule, filled with a pattern: a late reader finds nothing that he could use, and no address is used
// twice, so that the handle of a destroyed service stays one.
#pragma once

namespace lyn::schedules {

/// Gives back what has been kept.
void GiveBackFreed();
/// The process ends: from now on memory goes as it is freed, as it would in any program.
void KeepNoMore();

/// No address is used twice in a schedule.
bool KeepsAddresses();

}  // namespace lyn::schedules
