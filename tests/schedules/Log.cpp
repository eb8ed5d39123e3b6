// SPDX-License-Identifier: Apache-2.0
//
// The log of the whole process: this definition takes the place of the platform's. Lines are written by the
// hundred, and nobody reads them here; they are places at which a thread may stop.
#include "lyn_platform/log.h"
#include "schedules/Conductor.h"
#include "schedules/Sight.h"

int platform_log_print(int /*log_id*/, int /*priority*/, const char* /*tag*/, const char* /*format*/, ...)
{
    if (lyn::schedules::Conductor::Me() != nullptr) {
        const lyn::schedules::OutOfSight schedule;
        lyn::schedules::Conductor::Instance().StopAtLog();
    }
    return 0;
}
