// SPDX-License-Identifier: Apache-2.0
//
// For the sanitizers, which have allocators of their own.
#include "schedules/Freed.h"

namespace lyn::schedules {

void GiveBackFreed() {}

void KeepNoMore() {}

bool KeepsAddresses()
{
#if __has_feature(address_sanitizer)
    return true;
#else
    return false;
#endif
}

}  // namespace lyn::schedules
