// SPDX-License-Identifier: Apache-2.0
#include "Room.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "support/Clock.h"

namespace lyn::fuzz {
namespace {

constexpr int NOT_CAPTURED = 7;

}  // namespace

void Require(bool holds, const char* promise)
{
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

std::uint8_t Input::TakeByte()
{
    if (m_left == 0) {
        return 0;
    }
    --m_left;
    return *m_data++;
}

std::string Input::TakeText()
{
    const std::size_t length = std::min<std::size_t>(TakeByte(), m_left);
    std::string text(m_data, m_data + length);
    m_data += length;
    m_left -= length;
    return text;
}

simulator::Bytes Input::TakeBytes()
{
    const std::string text = TakeText();
    return {text.begin(), text.end()};
}

std::string Input::TakeRest()
{
    std::string text(m_data, m_data + m_left);
    m_left = 0;
    return text;
}

void PrepareTv()
{
    using namespace simulator;
    Reset();
    SetLogCapture(NOT_CAPTURED);
    SetJournal(false);
    SetSetting("db/menu/network/devicename/tv_name", "TV");
    SetSetting("memory/menu/network/screenmirroring/p2p_listen_channel", 0);
    SetSystemInfo("com.calyxon/featureconf/devicename.icon_index", 1);
    SetSystemInfo("com.calyxon/featureconf/devicename.device_type_index", 12);
    SetWifiDirectAddress("02:00:00:00:00:02");
}

App::App(const char* serviceName)
{
    Require(lyn_create_service(&handle, serviceName, StateCb, this) == LYN_ERROR_NONE, "a service is created");
}

App::~App()
{
    if (handle != nullptr) {
        Require(lyn_destroy_service(handle) == LYN_ERROR_NONE, "a service is destroyed");
    }
    simulator::Settle();
    const simulator::Counts alive = simulator::Alive();
    Require(alive.clients == 0 && alive.productInits == 0, "nothing is left behind");
}

void App::RequestAndRequireOneResult(const std::string& address, const std::string& extraData)
{
    Require(lyn_request_initiating_with_extra_data(handle, address.c_str(), extraData.c_str(), ResultCb, this) ==
                LYN_ERROR_NONE,
            "a request is accepted");
    simulator::Settle();
    while (results == 0 && test::ElapseTimeout()) {
        simulator::Settle();
    }
    Require(results == 1, "a request has one result");
    Require(state == LYN_STATE_READY, "a service is ready after a result");
}

void App::StateCb(lyn_state_e state, void* userData)
{
    static_cast<App*>(userData)->state = state;
}

void App::ResultCb(lyn_request_initiating_result_e result, void* userData)
{
    Require(result >= LYN_REQUEST_INITIATING_RESULT_SUCCESS &&
                result <= LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED,
            "a result is one of the enumeration");
    ++static_cast<App*>(userData)->results;
}

}  // namespace lyn::fuzz
