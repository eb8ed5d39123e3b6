// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace lyn::fuzz {

/// Requests from a nodlink phone that gives these answers, one for each message, on a TV with this metadata
/// file. Requires the result, the messages, the type and the stored mode that are expected.
void TalkNodLink(const std::vector<std::string>& answers, const std::string& metaDataFile);

}  // namespace lyn::fuzz
