// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

namespace lyn {

/// One line, members in the order of their keys. Whole, or want of memory is thrown.
std::string ToJsonText(const Json::Value& value);

}  // namespace lyn
