// SPDX-License-Identifier: Apache-2.0
#include "Requester/ExchangeData/CKovExchangeData.h"

#include "Common/Util.h"
#include "lyn_service_log.h"

namespace lyn {

std::string CKovExchangeData::GetExchangeData(const std::string& /*dataType*/)
{
    return BuildControlData();
}

std::string CKovExchangeData::BuildControlData()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    std::string text = LynUtil::JsonToString(BuildCommonData());
    LYN_LOGI("data : %s", text.c_str());
    return text;
}

std::string CKovExchangeData::GetServiceType()
{
    return "kov";
}

}  // namespace lyn
