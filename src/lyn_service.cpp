// SPDX-License-Identifier: Apache-2.0
//
// The exported C functions: argument checks, wrapping of the callbacks, one call of the service manager,
// and its exceptions turned into codes.
#include "lyn_service.h"

#include <json/value.h>

#include <array>
#include <stdexcept>
#include <string>

#include "Common/Failure.h"
#include "Common/JsonText.h"
#include "Service/ServiceManager.h"
#include "lyn_service_log.h"

using namespace lyn;

namespace {

constexpr std::array<int, 5> ADV_INTERVALS = {50, 100, 150, 200, 300};

// Logs a failure in the name of the exported function and turns it into what that returns.
lyn_error_e CodeOf(const LynException& e, const char* function = __builtin_FUNCTION(), int line = __builtin_LINE())
{
    platform_log_print(LOG_ID_MAIN, LOG_ERROR, LOG_TAG, "%s: %s(%d) > exception: %s", BaseName(__FILE__), function,
                       line, e.what());
    return e.GetCode();
}

// Runs one call of the manager in the name of the exported function.
template <typename Call>
lyn_error_e Forward(const Call& call, const char* function = __builtin_FUNCTION(), int line = __builtin_LINE())
{
    try {
        call(CServiceManager::GetInstance());
        return LYN_ERROR_NONE;
    } catch (const LynException& e) {
        return CodeOf(e, function, line);
    }
}

std::string TextOf(const char* text, const char* what)
{
    if (text == nullptr) {
        throw std::logic_error(std::string(what) + " is a null pointer");
    }
    return text;
}

std::string SerializeDevice(const lyn_device_info_t& device)
{
    const auto orEmpty = [](const char* text) { return text != nullptr ? text : ""; };
    Json::Value members;
    members["Name"] = orEmpty(device.name);
    members["Address"] = orEmpty(device.address);
    members["UniqueID"] = orEmpty(device.unique_id);
    members["ExtraData"] = orEmpty(device.extra_data);
    members["RSSI"] = device.rssi;
    return ToJsonText(members);
}

// Returned to the caller until this thread's next call: a copy made at once reads the right text. Needs no
// destructor, so it is there in what runs at the end of the process, too.
const char* Lend(const std::string& text)
{
    thread_local std::array<char, 64> lent;
    lent[text.copy(lent.data(), lent.size() - 1)] = '\0';
    return lent.data();
}

}  // namespace

lyn_error_e lyn_create_service(void** service, const char* service_name, lyn_state_changed_cb cb, void* user_data)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (service_name == nullptr) {
        LYN_LOGE("%s", "service_name is NULL");
        return LYN_ERROR_INVALID_PARAMETER;
    }
    if (service == nullptr) {
        LYN_LOGE("%s", "service is NULL");
        return LYN_ERROR_INVALID_PARAMETER;
    }
    if (*service != nullptr) {
        LYN_LOGE("%s", "service handle should be nullptr");
        return LYN_ERROR_INVALID_PARAMETER;
    }
    return Forward([&](CServiceManager& manager) {
        *service = manager.CreateService(service_name, [cb, user_data](lyn_state_e state) {
            LYN_LOGI("state : %d", state);
            if (cb != nullptr) {
                cb(state, user_data);
            }
        });
    });
}

lyn_error_e lyn_destroy_service(lyn_service_h service)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Forward([&](CServiceManager& manager) { manager.DestroyService(service); });
}

lyn_error_e lyn_start_scan(lyn_service_h service, lyn_device_found_cb cb, void* user_data)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Forward([&](CServiceManager& manager) {
        manager.StartScan(service, [cb, user_data](const lyn_device_info_t& info) {
            LYN_LOGI("Device Found : %s, %s, %s", Printable(info.name), Printable(info.address),
                     Printable(info.unique_id));
            if (cb != nullptr) {
                cb(&info, user_data);
            }
        });
    });
}

lyn_error_e lyn_start_scan_with_serialization(lyn_service_h service, lyn_device_found_with_serialization_cb cb,
                                              void* user_data)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Forward([&](CServiceManager& manager) {
        manager.StartScan(service, [cb, user_data](const lyn_device_info_t& info) {
            LYN_LOGI("Device Found : %s, %s, %s", Printable(info.name), Printable(info.address),
                     Printable(info.unique_id));
            const std::string json = SerializeDevice(info);
            if (cb != nullptr) {
                cb(json.c_str(), user_data);
            }
        });
    });
}

lyn_error_e lyn_stop_scan(lyn_service_h service)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Forward([&](CServiceManager& manager) { manager.StopScan(service); });
}

lyn_error_e lyn_request_initiating(lyn_service_h service, const char* device_id,
                                   lyn_request_initiating_result_cb cb, void* user_data)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (device_id == nullptr) {
        LYN_LOGE("%s", "device_id is NULL");
        return LYN_ERROR_INVALID_PARAMETER;
    }
    return Forward([&](CServiceManager& manager) {
        manager.RequestInitiating(service, device_id, "", [cb, user_data](lyn_request_initiating_result_e result) {
            LYN_LOGI("Request result : %d", result);
            if (cb != nullptr) {
                cb(result, user_data);
            }
        });
    });
}

lyn_error_e lyn_request_initiating_with_extra_data(lyn_service_h service, const char* device_id,
                                                   const char* extra_data, lyn_request_initiating_result_cb cb,
                                                   void* user_data)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (device_id == nullptr) {
        LYN_LOGE("%s", "device_id is NULL");
        return LYN_ERROR_INVALID_PARAMETER;
    }
    const std::string extraData = TextOf(extra_data, "extra_data");
    return Forward([&](CServiceManager& manager) {
        manager.RequestInitiating(service, device_id, extraData,
                                  [cb, user_data](lyn_request_initiating_result_e result) {
                                      if (cb != nullptr) {
                                          cb(result, user_data);
                                      }
                                  });
    });
}

lyn_error_e lyn_start_advertise(lyn_service_h service, lyn_adv_interval_e interval)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const auto index = static_cast<unsigned int>(interval);  // Negative values fail too.
    try {
        if (index >= ADV_INTERVALS.size()) {
            LogAndThrow<LynExceptionInvalidParam>("wrong interval value");
        }
    } catch (const LynException& e) {
        return CodeOf(e);
    }
    return Forward([&](CServiceManager& manager) { manager.StartAdvertisement(service, ADV_INTERVALS[index]); });
}

lyn_error_e lyn_stop_advertise(lyn_service_h service)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Forward([&](CServiceManager& manager) { manager.StopAdvertisement(service); });
}

lyn_error_e lyn_set_nodlink_version(lyn_service_h service, const char* version)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const std::string text = TextOf(version, "version");
    try {
        return Forward([&](CServiceManager& manager) { manager.SetNodlinkVersion(service, text); });
    } catch (const char*) {
        throw version;  // What came up may point into the copy.
    }
}

lyn_error_e lyn_get_nodlink_type(lyn_service_h service, nod_link_type* type)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return Forward([&](CServiceManager& manager) {
        const int value = manager.GetNodlinkType(service);
        if (type != nullptr) {
            *type = value;
        }
    });
}

const char* lyn_get_request_initiating_error_string(lyn_service_h service, lyn_request_initiating_result_e result)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    std::string text = "UnknownErr";
    const lyn_error_e error =
        Forward([&](CServiceManager& manager) { text = manager.GetRequestIntiatingErrorString(service, result); });
    if (error == LYN_ERROR_NONE) {
        LYN_LOGI("errorString : %s", text.c_str());
    }
    return Lend(text);
}
