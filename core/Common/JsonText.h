// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

namespace lyn {

/// False, with the reader's text, when it is no JSON. Read as leniently as the reader does by itself; comments
/// are dropped, so that none is written again. Throws a standard exception for a nesting that is too deep.
bool FromJsonText(const std::string& text, Json::Value& value, std::string& error);

/// One line, members in the order of their keys. Whole, or want of memory is thrown.
std::string ToJsonText(const Json::Value& value);

}  // namespace lyn
