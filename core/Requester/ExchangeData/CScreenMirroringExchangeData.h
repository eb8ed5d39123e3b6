// SPDX-License-Identifier: Apache-2.0
//
// The control message of screen mirroring: the common members, the application to launch on the phone
// when the TV's file names one, and the caller's extra data, whose members replace all others.
#pragma once

#include <string>

#include "Requester/ExchangeData/CExchangeData.h"

namespace lyn {

class CScreenMirroringExchangeData : public CExchangeData {
public:
    std::string GetExchangeData(const std::string& dataType) override;
    std::string BuildControlData() override;
    std::string GetServiceType() override;
};

}  // namespace lyn
