// SPDX-License-Identifier: Apache-2.0
//
// Under a sanitizer malloc is the sanitizer's, which calls this for every allocation.
#include <cstddef>

#include "support/AllocationCounter.h"

extern "C" void __sanitizer_malloc_hook(const volatile void*, std::size_t)
{
    ++lyn::test::g_allocations;
}
