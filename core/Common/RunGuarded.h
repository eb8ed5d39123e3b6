// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>

#include "lyn_service_log.h"

namespace lyn {

/// The outermost frame of everything that the platform or the main loop calls: whatever is thrown is
/// logged and dropped, because there is nobody to throw it to.
template <typename Work>
void RunGuarded(const Work& work) noexcept
{
    try {
        work();
    } catch (const std::exception& e) {
        LYN_LOGE("exception dropped : %s", e.what());
    } catch (...) {
        LYN_LOGE("exception dropped : %s", "not a standard exception");
    }
}

}  // namespace lyn
