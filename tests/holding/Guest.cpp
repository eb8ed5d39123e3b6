// SPDX-License-Identifier: Apache-2.0
#include "holding/Guest.h"

#include <array>
#include <utility>

#include "holding/Place.h"

namespace lyn::test {
namespace {

int s_nobody = 0;

const char* NameOf(lyn_state_e state)
{
    constexpr std::array<const char*, 4> names = {"state READY", "state SCANNING", "state REQUESTING",
                                                  "state NOT_READY"};
    return names.at(static_cast<std::size_t>(state));
}

}  // namespace

// Not the handle of a service that is gone: the next one may have got its address.
lyn_service_h Guest::Target() const
{
    lyn_service_h const handle = m_handle;
    return handle != nullptr && !m_isDestroyed ? handle : &s_nobody;
}

void Guest::Inside(const std::string& report, std::function<void(Guest&)> work)
{
    m_workPlace = report;
    m_work = std::move(work);
}

lyn_error_e Guest::Create()
{
    const InsideCall inside(CallKind::other);
    lyn_service_h handle = nullptr;
    const lyn_error_e error = lyn_create_service(&handle, m_service.c_str(), StateCb, this);
    if (error == LYN_ERROR_NONE) {
        m_handle = handle;
    }
    return error;
}

lyn_error_e Guest::Destroy()
{
    const InsideCall inside(CallKind::other);
    const lyn_error_e error = lyn_destroy_service(Target());
    if (error == LYN_ERROR_NONE) {
        m_isDestroyed = true;
    }
    return error;
}

lyn_error_e Guest::StartScan()
{
    const InsideCall inside(CallKind::startOrStopOrRequest);
    return lyn_start_scan(Target(), PhoneCb, this);
}

lyn_error_e Guest::StartScanForJson()
{
    const InsideCall inside(CallKind::startOrStopOrRequest);
    return lyn_start_scan_with_serialization(Target(), JsonCb, this);
}

lyn_error_e Guest::StopScan()
{
    const InsideCall inside(CallKind::startOrStopOrRequest);
    return lyn_stop_scan(Target());
}

lyn_error_e Guest::Request(const char* address)
{
    const InsideCall inside(CallKind::startOrStopOrRequest);
    return lyn_request_initiating(Target(), address, ResultCb, this);
}

lyn_error_e Guest::RequestWith(const char* address, const char* extraData)
{
    const InsideCall inside(CallKind::startOrStopOrRequest);
    return lyn_request_initiating_with_extra_data(Target(), address, extraData, ResultCb, this);
}

lyn_error_e Guest::Advertise()
{
    const InsideCall inside(CallKind::other);
    return lyn_start_advertise(Target(), LYN_ADV_INTERVAL_100);
}

lyn_error_e Guest::EndAdvertise()
{
    const InsideCall inside(CallKind::other);
    return lyn_stop_advertise(Target());
}

lyn_error_e Guest::SetVersion()
{
    const InsideCall inside(CallKind::other);
    return lyn_set_nodlink_version(Target(), "2.0");
}

lyn_error_e Guest::AskType()
{
    const InsideCall inside(CallKind::other);
    nod_link_type type = 0;
    return lyn_get_nodlink_type(Target(), &type);
}

std::string Guest::AskName()
{
    const InsideCall inside(CallKind::other);
    return lyn_get_request_initiating_error_string(Target(), LYN_REQUEST_INITIATING_RESULT_NOT_TAP);
}

void Guest::Hear(const std::string& report)
{
    m_lateReports += m_isDestroyed ? 1 : 0;
    const InsideCallback inside(report);
    if (report == m_workPlace && !m_isWorkDone.test_and_set()) {
        m_work(*this);
    }
}

void Guest::StateCb(lyn_state_e state, void* userData)
{
    auto& guest = *static_cast<Guest*>(userData);
    guest.m_lastState = state;
    guest.Hear(NameOf(state));
}

void Guest::PhoneCb(const lyn_device_info_t* /*info*/, void* userData)
{
    auto& guest = *static_cast<Guest*>(userData);
    ++guest.m_phones;
    guest.Hear("phone");
}

void Guest::JsonCb(const char* /*json*/, void* userData)
{
    auto& guest = *static_cast<Guest*>(userData);
    ++guest.m_phones;
    guest.Hear("json");
}

void Guest::ResultCb(lyn_request_initiating_result_e result, void* userData)
{
    auto& guest = *static_cast<Guest*>(userData);
    ++guest.m_results;
    guest.m_lastResult = result;
    guest.Hear("result");
}

}  // namespace lyn::test
