// SPDX-License-Identifier: Apache-2.0
//
// Found phones as a table for people.
#pragma once

#include <string>

#include "phones.h"
#include "terminal.h"

namespace lynctl {

/// @param service decides which columns there are
/// @param seconds now, for how long ago a phone was seen
/// @param maxRows more rows are only counted; 0 for no limit
std::string PhoneTable(const Phones& phones, const std::string& service, double seconds, const Look& look,
                       int maxRows = 0);

/// Signal strength as a bar of five characters.
std::string SignalBar(int rssi, bool unicode);

}  // namespace lynctl
