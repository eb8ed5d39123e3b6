// SPDX-License-Identifier: Apache-2.0
//
// For programs that do the same thing in very many ways: one that dies says in which.
#pragma once

#include <string>

namespace lyn::test {

/// From now on the process, when it dies of a signal or of a sanitizer, says what it was doing.
void PrepareLastWords();

/// What the process is doing now. One that does the same thing for minutes dies.
void SayWhatIsDone(const std::string& what);
const char* WhatIsDone();

}  // namespace lyn::test
