// SPDX-License-Identifier: Apache-2.0
//
// Output for programs: one JSON object a line, members in alphabetical order, ASCII only.
#pragma once

#include <json/json.h>

#include <string>
#include <string_view>

namespace lynctl {

/// An object to fill: {"event": event, "seconds": seconds since the start}.
Json::Value Event(const char* event, double seconds);

/// Sets "text" to the bytes; bytes that are no UTF-8 are also given in hexadecimal digits, as "hex".
void SetText(Json::Value& object, std::string_view bytes);

/// Writes the object to standard output at once.
void PrintJson(const Json::Value& object);

}  // namespace lynctl
