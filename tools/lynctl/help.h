// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "arguments.h"

namespace lynctl {

/// The text of --help, as a whole or for one command.
std::string HelpText(std::optional<Command> topic);

}  // namespace lynctl
