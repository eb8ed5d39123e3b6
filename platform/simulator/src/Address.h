// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace lyn::simulator {

/// Upper-case form of six hexadecimal pairs joined by colons; none for any other text.
std::optional<std::string> CanonicalAddress(const std::string& text);

}  // namespace lyn::simulator
