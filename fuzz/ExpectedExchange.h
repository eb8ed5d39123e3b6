// SPDX-License-Identifier: Apache-2.0
//
// A second opinion about how an exchange ends, written from docs/behaviour.md ("The answer") and sharing no
// code with the requesters but the JSON reader.
#pragma once

#include <string>
#include <vector>

#include "lyn_service.h"

namespace lyn::fuzz {

struct ExpectedExchange {
    lyn_request_initiating_result_e result = LYN_REQUEST_INITIATING_RESULT_GATT_FAIL;
    bool hasSucceeded = false;                 ///< the final answer was "Success"
    nod_link_type type = 0;                    ///< what lyn_get_nodlink_type() gives
    std::vector<std::string> furtherMessages;  ///< what follows the control message
};

/// The result that an answer of a mirroring or kov phone means. Empty: the phone is silent.
lyn_request_initiating_result_e ExpectResult(const std::string& answer);

/// The exchange with a nodlink phone that gives these answers and is silent then.
ExpectedExchange ExpectNodLinkExchange(const std::vector<std::string>& answers, const std::string& metaDataFile);

/// The parts of a text between border bytes, `most` at most; the last one holds the rest.
std::vector<std::string> Split(const std::string& text, char border, std::size_t most);

}  // namespace lyn::fuzz
