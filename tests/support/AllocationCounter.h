// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

namespace lyn::test {

/// Allocations of the process. Constant-initialised: the loader allocates before anything runs.
inline constinit std::atomic<int> g_allocations{0};

}  // namespace lyn::test
