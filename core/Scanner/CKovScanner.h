// SPDX-License-Identifier: Apache-2.0
//
// Phones that ask for Kov. Any bytes are a name; a newline at the very end of the data is shown as three dots.
#pragma once

#include <string>

#include "Scanner/CPhoneScanner.h"

namespace lyn {

class CKovScanner : public CPhoneScanner {
public:
    CKovScanner();
    CKovScanner(DeviceFoundCb deviceFoundCb, ScanStateChangedCb scanStateChangedCb);

    std::string ConvertManufacturerDataToDeviceName(const char* data, unsigned int length) override;
};

}  // namespace lyn
