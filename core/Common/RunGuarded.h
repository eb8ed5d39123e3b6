// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cxxabi.h>

#include <exception>

#include "lyn_service_log.h"

namespace lyn {

/// The outermost frame of everything that the platform or the main loop calls: whatever is thrown is
/// logged and dropped, because there is nobody to throw it to. The end of a thread that is cancelled passes.
template <typename Work>
void RunGuarded(const Work& work)
{
    try {
        work();
    } catch (const abi::__forced_unwind&) {
        throw;  // Nobody may stop it.
    } catch (const std::exception& e) {
        LYN_LOGE("exception dropped : %s", e.what());
    } catch (...) {
        LYN_LOGE("exception dropped : %s", "not a standard exception");
    }
}

}  // namespace lyn
