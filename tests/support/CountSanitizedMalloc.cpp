// SPDX-License-Identifier: Apache-2.0
//
// Under a sanitizer malloc is the sanitizer's, which calls these for every allocation and release.
#include <cstddef>

#include "support/AllocationCounter.h"

extern "C" void __sanitizer_malloc_hook(const volatile void*, std::size_t)
{
    lyn::test::CountAllocation();
}

extern "C" void __sanitizer_free_hook(const volatile void* memory)
{
    lyn::test::g_liveBlocks -= memory != nullptr ? 1 : 0;
}
