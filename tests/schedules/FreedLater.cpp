// SPDX-License-Identifier: Apache-2.0
#include "schedules/Freed.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "schedules/Conductor.h"

namespace lyn::schedules {
namespace {

constexpr int kPattern = 0xDD;

/// Written into the freed block itself.
struct Block {
    Block* next;
};

constinit std::atomic<Block*> s_freed{nullptr};
constinit std::atomic<bool> s_isKeeping{true};

void Keep(void* memory)
{
    std::memset(memory, kPattern, ::malloc_usable_size(memory));
    auto* const block = static_cast<Block*>(memory);
    block->next = s_freed.load();
    while (!s_freed.compare_exchange_weak(block->next, block)) {}
}

}  // namespace

void GiveBackFreed()
{
    for (Block* block = s_freed.exchange(nullptr); block != nullptr;) {
        Block* const next = block->next;
        std::free(block);
        block = next;
    }
}

void KeepNoMore()
{
    s_isKeeping = false;
}

bool KeepsAddresses()
{
    return true;
}

}  // namespace lyn::schedules

void* operator new(std::size_t size)
{
    if (void* const memory = std::malloc(std::max(size, sizeof(lyn::schedules::Block))); memory != nullptr) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    if (memory != nullptr && lyn::schedules::s_isKeeping && lyn::schedules::Conductor::Me() != nullptr) {
        lyn::schedules::Keep(memory);
    } else {
        std::free(memory);
    }
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    operator delete(memory);
}
