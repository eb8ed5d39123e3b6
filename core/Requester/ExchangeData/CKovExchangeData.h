// SPDX-License-Identifier: Apache-2.0
//
// The control message of Kov: the common members and nothing else.
#pragma once

#include <string>

#include "Requester/ExchangeData/CExchangeData.h"

namespace lyn {

class CKovExchangeData : public CExchangeData {
public:
    std::string GetExchangeData(const std::string& dataType) override;
    std::string BuildControlData() override;
    std::string GetServiceType() override;
};

}  // namespace lyn
