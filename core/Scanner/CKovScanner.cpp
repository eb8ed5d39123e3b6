// SPDX-License-Identifier: Apache-2.0
#include "Scanner/CKovScanner.h"

#include <utility>

#include "Common/LynException.h"
#include "lyn_service_log.h"

namespace lyn {

CKovScanner::CKovScanner() : CKovScanner(nullptr, nullptr) {}

CKovScanner::CKovScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb)
    : CPhoneScanner(
          std::move(deviceFoundCb), std::move(scanStateChangedCb),
          {.marker = 23, .advTriggerKey = "memory/org.nuvex.bleapp/kov_trigger", .rejection = "Not kov device"})
{
}

std::string CKovScanner::ConvertManufacturerDataToDeviceName(const char* data, unsigned int length)
{
    if (length < 2) {
        // Kept: the line and the exception say different lengths, and readers match on both.
        LYN_LOGE("%s", "manufacturere data length is less than 3");
        throw LynExceptionNotValidDevice("manufacturere data length is less than 2");
    }
    std::string name = ReadName(data, length);
    // Kept: for a length of 2 the unsigned difference equals npos, the replacement is tried on the empty
    // name, and std::out_of_range drops the phone.
    const std::size_t lastOfData = static_cast<std::size_t>(length) - 3;
    const std::size_t newline = name.rfind('\n');
    if (newline == lastOfData) {
        LYN_LOGD("%s", "replace \\n to ...");
        name.replace(newline, 1, "...");
    }
    return name;
}

}  // namespace lyn
