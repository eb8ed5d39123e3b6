// SPDX-License-Identifier: Apache-2.0
//
// What may wait for a held thread, and where that thread is then. Nothing else may.
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "holding/Place.h"

namespace lyn::test {

/// What is done while a thread is held.
enum class Work {
    startOrStop,  ///< start scan, stop scan
    request,
    otherCall,
    movingReport,  ///< of the platform or the main loop: may move the state
    otherReport
};

struct Exception {
    const char* held;
    const char* waits;
    bool (*isHeldThere)(const Place& place);
    bool (*concerns)(Work work, bool isOfSuccessor);
};

inline constexpr std::size_t kExceptions = 5;
extern const std::array<Exception, kExceptions> s_exceptions;

/// Where a request may wait for one call of another thread, so that each finds the registration it has made.
bool IsAtLinkRegistration(const Place& place);
/// Where starts and stops wait for one call of another thread, so that a late one does not undo theirs.
bool IsAtScan(const Place& place);
/// In the last lines of the log before a callback: it begins, whoever destroys the service meanwhile.
bool IsCallbackBeginning(const Place& place);

/// The exception by which this may wait.
std::optional<std::size_t> MayWait(const Place& held, Work work, bool isOfSuccessor);

}  // namespace lyn::test
