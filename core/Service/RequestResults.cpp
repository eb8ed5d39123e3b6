// SPDX-License-Identifier: Apache-2.0
#include "Service/RequestResults.h"

#include <algorithm>

#include "Common/Failure.h"

namespace lyn {

RequestResultMap BuildRequestResultMap()
{
    return {
        {"Success", LYN_REQUEST_INITIATING_RESULT_SUCCESS},
        {"GattFail", LYN_REQUEST_INITIATING_RESULT_GATT_FAIL},
        {"NotRegisteredDevice", LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE},
        {"UnknownErr", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"CommandErr", LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR},
        {"NotSupported", LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED},
        {"Connected", LYN_REQUEST_INITIATING_RESULT_CONNECTED},
        {"NotTap", LYN_REQUEST_INITIATING_RESULT_NOT_TAP},
        {"NotStartedKov", LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_KOV},
        {"NotStartedMirroring", LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING},
        {"GattDisconnected", LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED},
    };
}

lyn_request_initiating_result_e ToRequestResult(const RequestResultMap& map, const std::string& text)
{
    const auto found = map.find(text);
    if (found == map.end()) {
        LYN_LOGE("%s", "Not defined error code. Return Unknown.");
        return LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR;
    }
    LYN_LOGI("result : %s", text.c_str());
    return found->second;
}

std::string ToResultText(const RequestResultMap& map, lyn_request_initiating_result_e result)
{
    const auto found =
        std::find_if(map.begin(), map.end(), [&](const auto& entry) { return entry.second == result; });
    if (found == map.end()) {
        LogAndThrow<LynExceptionInvalidParam>("Not mached errorCode");
    }
    return found->first;
}

}  // namespace lyn
