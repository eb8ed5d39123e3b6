// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace lyn::schedules {

/// @param service not the dummy: it has no radio, so that its scans end none that was left.
/// What must work after every schedule, on the same TV: a service is created, finds its phone, asks it, hears its
/// answer, and is destroyed.
void TellPlainStory(int service);

}  // namespace lyn::schedules
