// SPDX-License-Identifier: Apache-2.0
//
// The locks of the whole process: these definitions take the place of the C library's. A thread of a schedule that
// would wait for a lock tells the conductor instead, which lets others go on.
#include <dlfcn.h>
#include <link.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "schedules/Conductor.h"
#include "schedules/Sight.h"

// A sanitizer's own, which it must hear of.
extern "C" {
int __interceptor_pthread_mutex_lock(pthread_mutex_t*) __attribute__((weak));
int __interceptor_pthread_mutex_trylock(pthread_mutex_t*) __attribute__((weak));
int __interceptor_pthread_mutex_unlock(pthread_mutex_t*) __attribute__((weak));
int __interceptor_pthread_cond_wait(pthread_cond_t*, pthread_mutex_t*) __attribute__((weak));
int __interceptor_pthread_cond_signal(pthread_cond_t*) __attribute__((weak));
int __interceptor_pthread_cond_broadcast(pthread_cond_t*) __attribute__((weak));
}

namespace {

using lyn::schedules::Actor;
using lyn::schedules::Conductor;
using lyn::schedules::OutOfSight;

template <typename Function>
Function* Real(Function* sanitizers, const char* name)
{
    return sanitizers != nullptr ? sanitizers : reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

int RealLock(pthread_mutex_t* mutex)
{
    static const auto real = Real(__interceptor_pthread_mutex_lock, "pthread_mutex_lock");
    return real(mutex);
}

int RealTryLock(pthread_mutex_t* mutex)
{
    static const auto real = Real(__interceptor_pthread_mutex_trylock, "pthread_mutex_trylock");
    return real(mutex);
}

int RealUnlock(pthread_mutex_t* mutex)
{
    static const auto real = Real(__interceptor_pthread_mutex_unlock, "pthread_mutex_unlock");
    return real(mutex);
}

struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

int FindLibrary(dl_phdr_info* info, std::size_t /*size*/, void* data)
{
    if (std::strstr(info->dlpi_name, "liblyn_service.so") == nullptr) {
        return 0;
    }
    auto& range = *static_cast<Range*>(data);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type == PT_LOAD && (header.p_flags & PF_X) != 0) {
            range = {info->dlpi_addr + header.p_vaddr, info->dlpi_addr + header.p_vaddr + header.p_memsz};
        }
    }
    return 1;
}

bool IsLibrary(const void* caller)
{
    static const Range library = [] {
        Range range;
        ::dl_iterate_phdr(FindLibrary, &range);
        return range;
    }();
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    return address >= library.begin && address < library.end;
}

/// What a thread of a schedule does with a lock, the library's for all that it knows.
int Take(Actor& me, pthread_mutex_t* mutex)
{
    int result = 0;
    while ((result = RealTryLock(mutex)) == EBUSY) {
        Conductor::Instance().Wait(mutex);
    }
    if (result == 0) {
        me.held.push_back(mutex);
    }
    return result;
}

void LetGo(Actor& me, pthread_mutex_t* mutex)
{
    const auto found = std::find(me.held.rbegin(), me.held.rend(), mutex);
    if (found != me.held.rend()) {
        me.held.erase(std::next(found).base());
    }
    if (std::find(me.held.begin(), me.held.end(), mutex) == me.held.end()) {  // A recursive one may be.
        Conductor::Instance().Released(mutex);
    }
}

void Wake(const pthread_cond_t* condition)
{
    if (Conductor::Me() != nullptr) {
        const OutOfSight schedule;
        Conductor::Instance().Released(condition);
    }
}

}  // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    Actor* const me = Conductor::Me();
    if (me == nullptr) {
        return RealLock(mutex);
    }
    const OutOfSight schedule;
    if (IsLibrary(__builtin_return_address(0))) {
        Conductor::Instance().StopAtLock();
    }
    return Take(*me, mutex);
}

extern "C" int pthread_mutex_trylock(pthread_mutex_t* mutex)
{
    const int result = RealTryLock(mutex);
    Actor* const me = Conductor::Me();
    if (me != nullptr && result == 0) {
        const OutOfSight schedule;
        me->held.push_back(mutex);
    }
    return result;
}

extern "C" int pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    const int result = RealUnlock(mutex);
    if (Actor* const me = Conductor::Me(); me != nullptr) {
        const OutOfSight schedule;
        LetGo(*me, mutex);
    }
    return result;
}

extern "C" int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex)
{
    Actor* const me = Conductor::Me();
    if (me == nullptr) {
        static const auto real = Real(__interceptor_pthread_cond_wait, "pthread_cond_wait");
        return real(condition, mutex);
    }
    const OutOfSight schedule;
    RealUnlock(mutex);
    LetGo(*me, mutex);
    Conductor::Instance().Wait(condition);
    return Take(*me, mutex);
}

extern "C" int pthread_cond_signal(pthread_cond_t* condition)
{
    static const auto real = Real(__interceptor_pthread_cond_signal, "pthread_cond_signal");
    Wake(condition);
    return real(condition);
}

extern "C" int pthread_cond_broadcast(pthread_cond_t* condition)
{
    static const auto real = Real(__interceptor_pthread_cond_broadcast, "pthread_cond_broadcast");
    Wake(condition);
    return real(condition);
}
