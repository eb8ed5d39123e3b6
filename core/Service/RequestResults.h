// SPDX-License-Identifier: Apache-2.0
//
// The names of request results: what a phone answers, and what the application is told.
#pragma once

#include <map>
#include <string>

#include "lyn_service.h"

namespace lyn {

using RequestResultMap = std::map<std::string, lyn_request_initiating_result_e>;

RequestResultMap BuildRequestResultMap();

/// LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR for a text that is no name.
lyn_request_initiating_result_e ToRequestResult(const RequestResultMap& map, const std::string& text);

/// Throws LynExceptionInvalidParam for a result without a name.
std::string ToResultText(const RequestResultMap& map, lyn_request_initiating_result_e result);

}  // namespace lyn
