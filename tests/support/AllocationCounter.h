// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

namespace lyn::test {

// Of the whole process. Constant-initialised: the loader allocates before anything runs.
inline constinit std::atomic<int> g_allocations{0};
inline constinit std::atomic<long> g_liveBlocks{0};

inline void CountAllocation()
{
    ++g_allocations;
    ++g_liveBlocks;
}

}  // namespace lyn::test
