// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <linux/filter.h>

#include <vector>

namespace lyn::linux_platform {

/// A program for the kernel (classic BPF, for SO_ATTACH_FILTER) that drops packets of a raw HCI socket which can
/// never lead to a scan result, before they wake the process. It keeps
///  - scan responses, as their company is not looked at,
///  - legacy advertising whose first manufacturer data are those of a phone,
///  - events with several reports, and extended advertising proper, whose data may begin anywhere.
/// It may keep what ParseReports() and MayBeAPhone() refuse, but never drops what they let through.
std::vector<sock_filter> AdvertFilter();

}  // namespace lyn::linux_platform
