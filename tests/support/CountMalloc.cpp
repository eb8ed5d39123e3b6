// SPDX-License-Identifier: Apache-2.0
//
// Counts by standing in the place of the C library's functions, whose own names are its second names.
#include <cstddef>

#include "support/AllocationCounter.h"

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) noexcept
{
    ++lyn::test::g_allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    ++lyn::test::g_allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) noexcept
{
    ++lyn::test::g_allocations;
    return __libc_realloc(memory, size);
}

}  // extern "C"
