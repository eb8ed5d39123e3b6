// SPDX-License-Identifier: Apache-2.0
//
// How arguments of platform calls are written in the journal.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <tuple>

namespace lyn::simulator {

void AppendArgument(std::string& out, const char* text);  ///< in double quotes, or null
void AppendArgument(std::string& out, std::string_view text);
void AppendArgument(std::string& out, bool value);
void AppendArgument(std::string& out, float value);

template <std::integral Number>
void AppendArgument(std::string& out, Number value)
{
    out += std::to_string(value);
}

/// Appends values, comma and blank between.
template <typename First, typename... Rest>
void AppendArguments(std::string& out, const First& first, const Rest&... rest)
{
    AppendArgument(out, first);
    ((out += ", ", AppendArgument(out, rest)), ...);
}

inline void AppendArguments(std::string&) {}

/// The arguments of one call, not yet written.
template <typename... Values>
std::tuple<Values...> In(Values... values)
{
    return {values...};
}

}  // namespace lyn::simulator
