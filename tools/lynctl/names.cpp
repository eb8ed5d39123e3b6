// SPDX-License-Identifier: Apache-2.0
#include "names.h"

namespace lynctl {

std::string StateName(lyn_state_e state)
{
    switch (state) {
    case LYN_STATE_READY:
        return "READY";
    case LYN_STATE_SCANNING:
        return "SCANNING";
    case LYN_STATE_REQUESTING:
        return "REQUESTING";
    case LYN_STATE_NOT_READY:
        return "NOT_READY";
    }
    return std::to_string(static_cast<int>(state));
}

std::string ErrorName(lyn_error_e error)
{
    switch (error) {
    case LYN_ERROR_NONE:
        return "no error";
    case LYN_ERROR_INTERNAL:
        return "internal failure";
    case LYN_ERROR_INVALID_STATE:
        return "not allowed in this state";
    case LYN_ERROR_INVALID_HANDLE:
        return "invalid handle";
    case LYN_ERROR_INVALID_PARAMETER:
        return "invalid parameter";
    case LYN_ERROR_OPERATION_FAILED:
        return "operation failed";
    case LYN_ERROR_ALREADY_DONE:
        return "already done";
    case LYN_ERROR_NOT_SUPPORTED:
        return "not supported";
    }
    return "unknown error";
}

std::string ResultMeaning(lyn_request_initiating_result_e result)
{
    switch (result) {
    case LYN_REQUEST_INITIATING_RESULT_SUCCESS:
        return "the phone starts the session";
    case LYN_REQUEST_INITIATING_RESULT_GATT_FAIL:
        return "no connection, no answer, or no message";
    case LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE:
        return "the phone does not know this TV";
    case LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR:
        return "an answer that the library does not know";
    case LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR:
        return "the phone did not understand";
    case LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED:
        return "the phone cannot do this";
    case LYN_REQUEST_INITIATING_RESULT_CONNECTED:
        return "the phone is in a session already";
    case LYN_REQUEST_INITIATING_RESULT_RESERVED:
        break;
    case LYN_REQUEST_INITIATING_RESULT_NOT_TAP:
        return "the phone was not tapped";
    case LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_KOV:
        return "Kov is not started on the phone";
    case LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING:
        return "mirroring is not started on the phone";
    case LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED:
        return "the phone ended the connection";
    }
    return "";
}

std::string NodlinkTypeName(nod_link_type type)
{
    switch (type) {
    case LYN_NOD_LINK_TYPE_MULTI_VIEW:
        return "multi view";
    case LYN_NOD_LINK_TYPE_FULL_VIEW:
        return "full view";
    case LYN_NOD_LINK_TYPE_SOUND:
        return "sound";
    default:
        return std::to_string(type);
    }
}

int IntervalNumber(lyn_adv_interval_e interval)
{
    switch (interval) {
    case LYN_ADV_INTERVAL_50:
        return 50;
    case LYN_ADV_INTERVAL_100:
        return 100;
    case LYN_ADV_INTERVAL_150:
        return 150;
    case LYN_ADV_INTERVAL_200:
        return 200;
    case LYN_ADV_INTERVAL_300:
        return 300;
    }
    return 0;
}

}  // namespace lynctl
