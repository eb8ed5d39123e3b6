// SPDX-License-Identifier: Apache-2.0
//
// Phones that ask for screen mirroring. A name must be valid UTF-8.
#pragma once

#include <string>

#include "Scanner/CPhoneScanner.h"

namespace lyn {

class CScreenMirroringScanner : public CPhoneScanner {
public:
    CScreenMirroringScanner();
    CScreenMirroringScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb);

    std::string ConvertManufacturerDataToDeviceName(const char* data, unsigned int length) override;
};

}  // namespace lyn
