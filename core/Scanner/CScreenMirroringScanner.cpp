// SPDX-License-Identifier: Apache-2.0
#include "Scanner/CScreenMirroringScanner.h"

#include <glib.h>

#include <utility>

#include "Common/Failure.h"
#include "lyn_service_log.h"

namespace lyn {

CScreenMirroringScanner::CScreenMirroringScanner() : CScreenMirroringScanner(nullptr, nullptr) {}

CScreenMirroringScanner::CScreenMirroringScanner(DeviceFoundCb deviceFoundCb,
                                                 ScanStateChangedCb scanStateChangedCb)
    : CPhoneScanner(std::move(deviceFoundCb), std::move(scanStateChangedCb),
                    {.marker = 25,
                     .advTriggerKey = "memory/org.nuvex.bleapp/mirroring_trigger",
                     .rejection = "Not mirroring device"})
{
}

std::string CScreenMirroringScanner::ConvertManufacturerDataToDeviceName(const char* data, unsigned int length)
{
    if (length < 2) {
        LogAndThrow<LynExceptionNotValidDevice>("manufacturere data length is less than 2");
    }
    std::string name = ReadName(data, length);
    if (g_utf8_validate(name.c_str(), static_cast<gssize>(name.size()), nullptr) == FALSE) {
        LogAndThrow<LynExceptionNotValidDevice>("Invalid device name");
    }
    return name;
}

}  // namespace lyn
