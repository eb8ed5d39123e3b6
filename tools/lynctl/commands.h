// SPDX-License-Identifier: Apache-2.0
//
// The commands. Each runs to its end and returns lynctl's exit status; failures leave as Failure.
#pragma once

#include "arguments.h"
#include "library.h"

namespace lynctl {

int Scan(const Arguments& arguments, const Library& library);
int Request(const Arguments& arguments, const Library& library);
int Advertise(const Arguments& arguments, const Library& library);
int FollowEvents(const Arguments& arguments, const Library& library);
int Settings(const Arguments& arguments);
int Doctor(const Arguments& arguments);

}  // namespace lynctl
