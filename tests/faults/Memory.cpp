// SPDX-License-Identifier: Apache-2.0
#include "faults/Memory.h"

#include <link.h>
#include <unwind.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace lyn::test {
namespace {

/// A loaded library.
struct Module {
    std::uintptr_t base = 0;
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;

    bool Holds(std::uintptr_t address) const { return address >= begin && address < end; }
};

struct Modules {
    Module service;
    Module platform;
};

int FindModules(dl_phdr_info* info, std::size_t /*size*/, void* out)
{
    auto& modules = *static_cast<Modules*>(out);
    Module* module = nullptr;
    if (std::strstr(info->dlpi_name, "liblyn_service.so") != nullptr) {
        module = &modules.service;
    } else if (std::strstr(info->dlpi_name, "liblyn_platform.so") != nullptr) {
        module = &modules.platform;
    } else {
        return 0;
    }
    module->base = info->dlpi_addr;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type == PT_LOAD && (header.p_flags & PF_X) != 0) {
            module->begin = info->dlpi_addr + header.p_vaddr;
            module->end = module->begin + header.p_memsz;
        }
    }
    return 0;
}

Modules g_modules;

/// Both libraries are loaded when the program begins to run.
void LoadModules()
{
    if (g_modules.service.base != 0) {
        return;
    }
    dl_iterate_phdr(FindModules, &g_modules);
    if (g_modules.service.begin == 0 || g_modules.platform.begin == 0) {
        std::abort();  // Built in another way than this program believes.
    }
}

/// What the stack says about an allocation.
struct Walk {
    bool isWhole = false;  ///< to the outermost frame, for the way
    bool isLibrarys = false;
    std::uintptr_t place = 0;
    Way way = 0;
};

_Unwind_Reason_Code LookAtFrame(_Unwind_Context* context, void* data)
{
    constexpr Way prime = 1099511628211ULL;
    auto& walk = *static_cast<Walk*>(data);
    const std::uintptr_t address = _Unwind_GetIP(context);
    if (g_modules.service.Holds(address)) {
        if (!walk.isLibrarys) {
            walk.isLibrarys = true;
            walk.place = address - 1 - g_modules.service.base;
        }
        walk.way = (walk.way ^ (address - g_modules.service.base)) * prime;
        return walk.isWhole ? _URC_NO_REASON : _URC_END_OF_STACK;
    }
    const bool isSimulators = !walk.isLibrarys && g_modules.platform.Holds(address);
    return isSimulators ? _URC_END_OF_STACK : _URC_NO_REASON;
}

struct State {
    bool isCounting = false;
    bool isShort = false;
    bool hasFailed = false;
    Shortage kind = Shortage::once;
    int nth = 0;
    int counted = 0;
    int applications = 0;
    std::uintptr_t place = 0;
};

constinit thread_local State t_state;
std::vector<Way> g_ways;

bool MustFail()
{
    State& state = t_state;
    const bool isOver = state.hasFailed && !(state.isShort && state.kind == Shortage::lasting);
    if (!state.isCounting || isOver || state.applications > 0) {
        return false;
    }
    Walk walk;
    walk.isWhole = state.nth == 0;
    _Unwind_Backtrace(LookAtFrame, &walk);
    if (!walk.isLibrarys) {
        return false;
    }
    if (state.nth == 0) {
        const ApplicationsOwn own;
        g_ways.push_back(walk.way);
        return false;
    }
    if (++state.counted < state.nth) {
        return false;
    }
    if (!state.hasFailed) {
        state.place = walk.place;
    }
    state.hasFailed = true;
    state.isShort = true;
    return true;
}

void* Allocate(std::size_t size)
{
    return MustFail() ? nullptr : std::malloc(size > 0 ? size : 1);
}

void* Allocate(std::size_t size, std::align_val_t alignment)
{
    const auto step = static_cast<std::size_t>(alignment);
    return MustFail() ? nullptr : std::aligned_alloc(step, (size + step - 1) / step * step);
}

void* OrThrow(void* memory)
{
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void BeginShortage(int nth, Shortage kind)
{
    LoadModules();
    g_ways.clear();
    t_state = {};
    t_state.nth = nth;
    t_state.kind = kind;
    t_state.isCounting = true;
}

void EndShortage()
{
    t_state.isCounting = false;
}

bool IsShort()
{
    return t_state.isShort;
}

void RelieveShortage()
{
    t_state.isShort = false;
}

const std::vector<Way>& WaysOfAllocations()
{
    return g_ways;
}

bool HasFailed()
{
    return t_state.hasFailed;
}

std::uintptr_t PlaceOfFailure()
{
    return t_state.place;
}

ApplicationsOwn::ApplicationsOwn()
{
    ++t_state.applications;
}

ApplicationsOwn::~ApplicationsOwn()
{
    --t_state.applications;
}

}  // namespace lyn::test

using lyn::test::Allocate;
using lyn::test::OrThrow;

void* operator new(std::size_t size)
{
    return OrThrow(Allocate(size));
}

void* operator new[](std::size_t size)
{
    return OrThrow(Allocate(size));
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size);
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    return OrThrow(Allocate(size, alignment));
}

void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return OrThrow(Allocate(size, alignment));
}

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size, alignment);
}

void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size, alignment);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::align_val_t /*alignment*/) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    std::free(memory);
}
