// SPDX-License-Identifier: Apache-2.0
//
// The values and types that applications are compiled against.
#include <cstddef>
#include <type_traits>

#include <gtest/gtest.h>

#include "lyn_service.h"

namespace lyn::test {
namespace {

TEST(PublicHeader, HasTheErrorCodes)
{
    EXPECT_EQ(LYN_ERROR_NONE, 0);
    EXPECT_EQ(LYN_ERROR_INTERNAL, 2);
    EXPECT_EQ(LYN_ERROR_INVALID_STATE, 3);
    EXPECT_EQ(LYN_ERROR_INVALID_HANDLE, 4);
    EXPECT_EQ(LYN_ERROR_INVALID_PARAMETER, 5);
    EXPECT_EQ(LYN_ERROR_OPERATION_FAILED, 6);
    EXPECT_EQ(LYN_ERROR_ALREADY_DONE, 7);
    EXPECT_EQ(LYN_ERROR_NOT_SUPPORTED, 8);
}

TEST(PublicHeader, HasTheStates)
{
    EXPECT_EQ(LYN_STATE_READY, 0);
    EXPECT_EQ(LYN_STATE_SCANNING, 1);
    EXPECT_EQ(LYN_STATE_REQUESTING, 2);
    EXPECT_EQ(LYN_STATE_NOT_READY, 3);
}

TEST(PublicHeader, HasTheResults)
{
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_SUCCESS, 0);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_GATT_FAIL, 1);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE, 2);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR, 3);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR, 4);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED, 5);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_CONNECTED, 6);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_RESERVED, 7);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_NOT_TAP, 8);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_KOV, 9);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING, 10);
    EXPECT_EQ(LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED, 11);
}

TEST(PublicHeader, HasTheIntervals)
{
    EXPECT_EQ(LYN_ADV_INTERVAL_50, 0);
    EXPECT_EQ(LYN_ADV_INTERVAL_100, 1);
    EXPECT_EQ(LYN_ADV_INTERVAL_150, 2);
    EXPECT_EQ(LYN_ADV_INTERVAL_200, 3);
    EXPECT_EQ(LYN_ADV_INTERVAL_300, 4);
}

TEST(PublicHeader, HasTheNodLinkTypes)
{
    EXPECT_EQ(LYN_NOD_LINK_TYPE_MULTI_VIEW, 0);
    EXPECT_EQ(LYN_NOD_LINK_TYPE_FULL_VIEW, 1);
    EXPECT_EQ(LYN_NOD_LINK_TYPE_SOUND, 2);
}

TEST(PublicHeader, HasEnumerationsAsWideAsAnIntThatHoldAnyInt)
{
    static_assert(std::is_same_v<std::underlying_type_t<lyn_error_e>, int>);
    static_assert(std::is_same_v<std::underlying_type_t<lyn_state_e>, int>);
    static_assert(std::is_same_v<std::underlying_type_t<lyn_request_initiating_result_e>, int>);
    static_assert(std::is_same_v<std::underlying_type_t<lyn_adv_interval_e>, int>);
    static_assert(sizeof(nod_link_type) >= sizeof(int));
    static_assert(std::is_same_v<lyn_service_h, void*>);
}

TEST(PublicHeader, HasTheFieldsOfAPhoneInOrder)
{
    EXPECT_EQ(offsetof(lyn_device_info_t, name), 0U);
    EXPECT_EQ(offsetof(lyn_device_info_t, address), sizeof(void*));
    EXPECT_EQ(offsetof(lyn_device_info_t, unique_id), 2 * sizeof(void*));
    EXPECT_EQ(offsetof(lyn_device_info_t, extra_data), 3 * sizeof(void*));
    EXPECT_EQ(offsetof(lyn_device_info_t, rssi), 4 * sizeof(void*));
    static_assert(std::is_same_v<decltype(lyn_device_info_t::name), const char*>);
    static_assert(std::is_same_v<decltype(lyn_device_info_t::address), const char*>);
    static_assert(std::is_same_v<decltype(lyn_device_info_t::unique_id), const char*>);
    static_assert(std::is_same_v<decltype(lyn_device_info_t::extra_data), const char*>);
    static_assert(std::is_same_v<decltype(lyn_device_info_t::rssi), int>);
}

template <typename Expected, typename Actual>
constexpr bool IsSame(Actual*)
{
    return std::is_same_v<Expected, Actual>;
}

TEST(PublicHeader, HasTheFunctionsAsDeclared)
{
    using State = lyn_state_changed_cb;
    using Device = lyn_device_found_cb;
    using Json = lyn_device_found_with_serialization_cb;
    using Result = lyn_request_initiating_result_cb;
    using Handle = lyn_service_h;
    static_assert(IsSame<lyn_error_e(void**, const char*, State, void*)>(lyn_create_service));
    static_assert(IsSame<lyn_error_e(Handle)>(lyn_destroy_service));
    static_assert(IsSame<lyn_error_e(Handle, Device, void*)>(lyn_start_scan));
    static_assert(IsSame<lyn_error_e(Handle, Json, void*)>(lyn_start_scan_with_serialization));
    static_assert(IsSame<lyn_error_e(Handle)>(lyn_stop_scan));
    static_assert(IsSame<lyn_error_e(Handle, const char*, Result, void*)>(lyn_request_initiating));
    static_assert(IsSame<lyn_error_e(Handle, const char*, const char*, Result, void*)>(
        lyn_request_initiating_with_extra_data));
    static_assert(IsSame<lyn_error_e(Handle, lyn_adv_interval_e)>(lyn_start_advertise));
    static_assert(IsSame<lyn_error_e(Handle)>(lyn_stop_advertise));
    static_assert(IsSame<lyn_error_e(Handle, const char*)>(lyn_set_nodlink_version));
    static_assert(IsSame<lyn_error_e(Handle, nod_link_type*)>(lyn_get_nodlink_type));
    static_assert(
        IsSame<const char*(Handle, lyn_request_initiating_result_e)>(lyn_get_request_initiating_error_string));
    static_assert(std::is_same_v<State, void (*)(lyn_state_e, void*)>);
    static_assert(std::is_same_v<Device, void (*)(const lyn_device_info_t*, void*)>);
    static_assert(std::is_same_v<Json, void (*)(const char*, void*)>);
    static_assert(std::is_same_v<Result, void (*)(lyn_request_initiating_result_e, void*)>);
}

}  // namespace
}  // namespace lyn::test
