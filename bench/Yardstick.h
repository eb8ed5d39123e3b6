// SPDX-License-Identifier: Apache-2.0
//
// A fixed amount of plain work. Every case is told in multiples of it, measured right beside the case, because
// times differ from machine to machine and from minute to minute.
#pragma once

namespace lyn::bench {

/// malloc(64), memcpy of 64 bytes, free.
void WorkOnce();
/// Seconds of one WorkOnce(), the best of a few short measurements.
double YardstickSeconds();

}  // namespace lyn::bench
