// SPDX-License-Identifier: Apache-2.0
#include "support/Costs.h"

#include <atomic>
#include <typeinfo>

#include "support/AllocationCounter.h"

namespace {

std::atomic<int> g_exceptions{0};

}  // namespace

// The linker leads every throw of the program here.
extern "C" [[noreturn]] void __real___cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*));
extern "C" [[noreturn]] void __wrap___cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*))
{
    ++g_exceptions;
    __real___cxa_throw(exception, type, destroy);
}

namespace lyn::test {

long LiveBlocks()
{
    return g_liveBlocks;
}

Costs CostsSoFar()
{
    return {g_allocations, g_exceptions};
}

}  // namespace lyn::test
