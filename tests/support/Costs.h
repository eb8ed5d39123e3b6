// SPDX-License-Identifier: Apache-2.0
//
// What a piece of work costs. Linked into a program, this takes the place of malloc, free and their like for
// the whole process (operator new ends there, too), and of the throwing of exceptions in everything that is
// linked into the program itself: to count the library's, link its core, not the shared library.
#pragma once

namespace lyn::test {

struct Costs {
    int allocations = 0;
    int exceptions = 0;
};

/// Allocations and exceptions since the process began.
Costs CostsSoFar();

/// Blocks of memory that are allocated and not yet freed.
long LiveBlocks();

template <typename Work>
Costs CostsOf(const Work& work)
{
    const Costs before = CostsSoFar();
    work();
    const Costs after = CostsSoFar();
    return {after.allocations - before.allocations, after.exceptions - before.exceptions};
}

}  // namespace lyn::test
