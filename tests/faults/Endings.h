// SPDX-License-Identifier: Apache-2.0
//
// What a story may come to.
#pragma once

#include <string>

#include "faults/Application.h"

namespace lyn::test {

bool IsSame(const Lines& expected, const Lines& told);
/// Both stories, side by side, with the differences marked.
std::string Compare(const Lines& expected, const Lines& told);

/// Empty, or what is wrong with a story in which memory was short: every call must have thrown
/// std::bad_alloc or been refused, and have gone well when it was repeated; every accepted request must have
/// its one result.
std::string CheckShortStory(const Lines& clean, const Lines& told);
/// Empty, or what is wrong with what the application and the phone were told: whatever they get must be what
/// they get in the good story, and whole.
std::string CheckContents(const Application& clean, const Application& told);

/// What the simulated TV still holds and should not; empty for nothing.
std::string WhatIsLeft(unsigned mayLeave);

/// How the plain scenario goes.
Lines PlainLines(const std::string& service);

}  // namespace lyn::test
