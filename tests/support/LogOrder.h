// SPDX-License-Identifier: Apache-2.0
//
// What the library has said, in the order of its saying.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/LogLines.h"

namespace lyn::test {

struct Said {
    Priority priority;
    std::string message;
};

/// True when these lines stand in the log in this order, whatever stands between them.
inline ::testing::AssertionResult LogsInOrder(const std::vector<Said>& wanted)
{
    auto next = wanted.begin();
    for (const Line& line : LogLines()) {
        if (next != wanted.end() && line.priority == next->priority && line.message == next->message) {
            ++next;
        }
    }
    if (next == wanted.end()) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "not said, or not in this place, at priority " << next->priority << ": " << next->message;
}

}  // namespace lyn::test
