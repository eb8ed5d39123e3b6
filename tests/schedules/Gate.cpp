// SPDX-License-Identifier: Apache-2.0
#include "schedules/Gate.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace lyn::schedules {
namespace {

void Futex(std::atomic<int>& word, int operation, int value)
{
    ::syscall(SYS_futex, &word, operation | FUTEX_PRIVATE_FLAG, value, nullptr, nullptr, 0);
}

}  // namespace

void Gate::Open()
{
    m_isOpen.store(1, std::memory_order_release);
    Futex(m_isOpen, FUTEX_WAKE, 1);
}

void Gate::Pass()
{
    while (m_isOpen.exchange(0, std::memory_order_acquire) == 0) {
        Futex(m_isOpen, FUTEX_WAIT, 0);
    }
}

}  // namespace lyn::schedules
