// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

namespace lyn::test {

/// Runs once, on the calling thread, when the platform has done its part of the next call of this function and
/// before the call ends.
void InsideCall(const std::string& function, std::function<void()> work);

}  // namespace lyn::test
