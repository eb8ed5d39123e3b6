// SPDX-License-Identifier: Apache-2.0
//
// The twelve functions, for tests that go through all of them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "lyn_service.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

using Texts = std::vector<std::string>;

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";

/// A function that takes a handle and returns a code, called with good arguments.
struct Function {
    std::string name;
    /// As a compiler writes it, without blanks before '*'.
    std::string declaration;
    /// Where a handle that is not alive is refused with another code than elsewhere.
    lyn_error_e staleCode = LYN_ERROR_INVALID_PARAMETER;
    std::function<lyn_error_e(lyn_service_h)> call;
};

/// The ten of them: all but lyn_create_service and lyn_get_request_initiating_error_string. A "nodlink"
/// service accepts each in the order given.
const std::vector<Function>& FunctionsWithAHandle();

inline constexpr const char* kCreateDeclaration =
    "lyn_error_e lyn_create_service(void**, const char*, lyn_state_changed_cb, void*)";
inline constexpr const char* kErrorStringDeclaration =
    "const char* lyn_get_request_initiating_error_string(lyn_service_h, lyn_request_initiating_result_e)";

/// IN and OUT lines of exported functions so far, "IN lyn_error_e lyn_stop_scan(lyn_service_h)". Fails the
/// test for a line that is not as trace lines are.
Texts TraceOfTheInterface();

/// True when the trace shows that the service manager was asked.
bool AskedTheManager();

}  // namespace lyn::test
