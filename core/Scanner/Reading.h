// SPDX-License-Identifier: Apache-2.0
//
// What was read from an advertisement, or why nothing was. Nearly all that a scan hears is foreign: the reason is
// a value, and becomes an exception for those only who ask for one.
#pragma once

#include <utility>
#include <variant>

#include "Common/LynException.h"

namespace lyn {

struct Rejection {
    const char* reason;
    bool isDefect = false;  ///< The data cannot be used, whoever sent them.
};

template <typename T>
using Reading = std::variant<T, Rejection>;

/// Null when something was read.
template <typename T>
const Rejection* RejectionOf(const Reading<T>& reading)
{
    return std::get_if<Rejection>(&reading);
}

/// Throws LynExceptionInvalidParam for a defect, else LynExceptionNotValidDevice, with the reason.
template <typename T>
T OrThrow(Reading<T> reading)
{
    if (const Rejection* const rejection = RejectionOf(reading)) {
        if (rejection->isDefect) {
            throw LynExceptionInvalidParam(rejection->reason);
        }
        throw LynExceptionNotValidDevice(rejection->reason);
    }
    return std::get<T>(std::move(reading));
}

}  // namespace lyn
