// SPDX-License-Identifier: Apache-2.0
//
// Counts by standing in the place of the C library's functions, whose own names are its second names.
#include <cerrno>
#include <cstddef>

#include "support/AllocationCounter.h"

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's names are reserved ones
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);

void* malloc(std::size_t size) noexcept
{
    lyn::test::CountAllocation();
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    lyn::test::CountAllocation();
    return __libc_calloc(count, size);
}

// A new block takes the place of the old one.
void* realloc(void* memory, std::size_t size) noexcept
{
    lyn::test::CountAllocation();
    lyn::test::g_liveBlocks -= memory != nullptr ? 1 : 0;
    return __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    lyn::test::CountAllocation();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept
{
    lyn::test::CountAllocation();
    *memory = __libc_memalign(alignment, size);
    return *memory != nullptr ? 0 : ENOMEM;
}

void free(void* memory) noexcept
{
    lyn::test::g_liveBlocks -= memory != nullptr ? 1 : 0;
    __libc_free(memory);
}

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
