// SPDX-License-Identifier: Apache-2.0
//
// A failure is logged where it is found, then thrown with the same text.
#pragma once

#include <string>

#include "Common/LynException.h"
#include "lyn_service_log.h"

namespace lyn {

/// Logs at ERROR in the name of the calling function, then throws E(message).
template <typename E>
[[noreturn]] void LogAndThrow(const std::string& message, const char* file = __builtin_FILE(),
                              const char* function = __builtin_FUNCTION(), int line = __builtin_LINE())
{
    platform_log_print(LOG_ID_MAIN, LOG_ERROR, LOG_TAG, "%s: %s(%d) > %s", BaseName(file), function, line,
                       message.c_str());
    throw E(message);
}

}  // namespace lyn
