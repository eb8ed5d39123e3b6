// SPDX-License-Identifier: Apache-2.0
//
// Words for the values of lyn_service.h.
#pragma once

#include <string>

#include "lyn_service.h"

namespace lynctl {

/// "READY", "SCANNING", "REQUESTING", "NOT_READY", or the number.
std::string StateName(lyn_state_e state);

/// What a code means, for example "operation failed".
std::string ErrorName(lyn_error_e error);

/// What a result tells a person, for example "the phone starts the session"; empty when unknown.
std::string ResultMeaning(lyn_request_initiating_result_e result);

/// "multi view", "full view", "sound", or the number.
std::string NodlinkTypeName(nod_link_type type);

/// The number that an interval stands for, for example 100.
int IntervalNumber(lyn_adv_interval_e interval);

}  // namespace lynctl
