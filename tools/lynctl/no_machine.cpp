// SPDX-License-Identifier: Apache-2.0
//
// lynctl on a TV with a platform of its own: the commands about a Linux machine have nothing to ask there.
#include "commands.h"
#include "failure.h"

namespace lynctl {

int Settings(const Arguments&)
{
    throw Failure(kExitFailure, "this lynctl was built for a TV's own platform, whose settings are elsewhere");
}

int Doctor(const Arguments&)
{
    throw Failure(kExitFailure, "this lynctl was built for a TV's own platform, which it cannot examine");
}

}  // namespace lynctl
