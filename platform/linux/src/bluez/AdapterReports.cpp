// SPDX-License-Identifier: Apache-2.0
#include "bluez/AdapterReports.h"

namespace lyn::linux_platform {

AdapterReports& AdapterReports::Instance()
{
    static AdapterReports* const instance = new AdapterReports;  // never destroyed: reports may be on their way
    return *instance;
}

AdapterReports::AdapterReports()
{
    Adapter::Instance().AddListener(
        [this](const AdapterStatus& status) { slot.Deliver(slot.Id(), 0, StateOf(status)); });
}

}  // namespace lyn::linux_platform
