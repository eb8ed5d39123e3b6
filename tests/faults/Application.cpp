// SPDX-License-Identifier: Apache-2.0
#include "faults/Application.h"

#include <glib.h>

#include <array>
#include <cstdio>
#include <new>

#include "faults/Memory.h"
#include "lifetime/Phones.h"
#include "lyn_simulator/simulator.h"
#include "support/Clock.h"

namespace lyn::test {
namespace {

constexpr const char* kKeyMirroringMode = "memory/lyn/nodlink/mirroring_mode";

const char* NameOf(lyn_state_e state)
{
    constexpr std::array<const char*, 4> names = {"READY", "SCANNING", "REQUESTING", "NOT_READY"};
    return names.at(static_cast<std::size_t>(state));
}

/// The exceptions that the C interface may let out have names here, and so have those that it may not.
std::string Attempt(const std::function<std::string()>& work)
{
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return "bad_alloc";
    } catch (const std::exception& e) {
        return std::string("exception ") + e.what();
    } catch (...) {
        return "exception";
    }
}

bool HasFailed(const std::string& said)
{
    return said == "bad_alloc" || (!said.empty() && said[0] >= '1' && said[0] <= '9');
}

void DeliverOnceMore(const simulator::Phone& phone)
{
    simulator::DeliverAdvertisement(phone.address, phone.rssi, phone.advertising,
                                    phone.scanResponse ? std::optional<simulator::Bytes>(*phone.scanResponse)
                                                       : std::nullopt);
}

}  // namespace

void Application::Do(const char* step, const Work& work)
{
    m_heard.clear();
    std::string said = Attempt(work);
    std::string refused;
    if (IsShort() && HasFailed(said) && !m_isDestroyed) {
        refused = said + m_heard;
        RelieveShortage();
        m_heard.clear();
        said = Attempt(work);
    }
    RelieveShortage();
    said += m_heard;
    m_lines.push_back({step, said.rfind(' ', 0) == 0 ? said.substr(1) : said, refused});
    if (afterStep) {
        afterStep();
    }
}

void Application::Call(const char* step, const std::function<lyn_error_e()>& function)
{
    Do(step, [&] { return std::to_string(function()); });
}

void Application::Create()
{
    Call("create", [&] { return lyn_create_service(&m_handle, m_service.c_str(), StateCb, this); });
}

void Application::Scan()
{
    Call("scan", [&] { return lyn_start_scan(m_handle, PhoneCb, this); });
}

void Application::ScanForJson()
{
    Call("scan", [&] { return lyn_start_scan_with_serialization(m_handle, JsonCb, this); });
}

void Application::StopScan()
{
    Call("stop", [&] { return lyn_stop_scan(m_handle); });
}

void Application::Advertise()
{
    Call("advertise", [&] { return lyn_start_advertise(m_handle, LYN_ADV_INTERVAL_100); });
}

void Application::EndAdvertise()
{
    Call("end advertise", [&] { return lyn_stop_advertise(m_handle); });
}

void Application::Request()
{
    Call("request", [&] { return lyn_request_initiating(m_handle, kPhone, ResultCb, this); });
}

void Application::RequestWith(const std::string& extraData)
{
    Call("request", [&] {
        return lyn_request_initiating_with_extra_data(m_handle, kPhone, extraData.c_str(), ResultCb, this);
    });
}

void Application::SetVersion(const std::string& version)
{
    Call("version", [&] { return lyn_set_nodlink_version(m_handle, version.c_str()); });
}

void Application::AskType()
{
    Do("type", [&] {
        nod_link_type type = -1;
        const lyn_error_e error = lyn_get_nodlink_type(m_handle, &type);
        return std::to_string(error) + (error == LYN_ERROR_NONE ? " type " + std::to_string(type) : "");
    });
}

void Application::AskName()
{
    Do("name", [&] {
        const auto result = LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE;
        return std::string(lyn_get_request_initiating_error_string(m_handle, result));
    });
}

void Application::Phone()
{
    Do("phone", [&] {
        simulator::Settle();
        if (!m_heard.empty() || simulator::ScanRegistration().callback == nullptr) {
            return std::string();
        }
        RelieveShortage();
        for (const simulator::Phone& phone : simulator::Phones()) {
            DeliverOnceMore(phone);
        }
        return std::string(m_heard.empty() ? "" : "second");
    });
}

void Application::Result()
{
    Do("result", [&] {
        simulator::Settle();
        if (m_heard.find("result") != std::string::npos || !ElapseTimeout()) {
            return std::string();
        }
        simulator::Settle();
        return std::string("(10 s)");
    });
}

void Application::TurnBluetooth(const char* step, bool isOn)
{
    Do(step, [&] {
        simulator::SetAdapterState(isOn ? BT_ADAPTER_ENABLED : BT_ADAPTER_DISABLED);
        simulator::Settle();
        return std::string();
    });
}

void Application::PumpUntil(const std::function<bool()>& isThere)
{
    while (!isThere() && g_main_context_pending(nullptr) != FALSE) {
        g_main_context_iteration(nullptr, FALSE);
    }
}

void Application::UntilConnected()
{
    Do("until connected", [&] {
        PumpUntil([] { return simulator::Alive().clients > 0; });
        return std::string();
    });
}

void Application::UntilWritten()
{
    Do("until written", [&] {
        PumpUntil([] { return !simulator::MessagesTo(kPhone).empty(); });
        return std::string();
    });
}

void Application::ReadStoredMode()
{
    const auto mode = simulator::IntSetting(kKeyMirroringMode);
    Do("stored", [&] { return mode ? "mode " + std::to_string(*mode) : std::string("none"); });
}

lyn_error_e Application::Destroy()
{
    const lyn_error_e error = lyn_destroy_service(m_handle);
    if (error == LYN_ERROR_NONE) {
        m_handle = nullptr;
        m_isDestroyed = true;
    }
    return error;
}

void Application::End()
{
    if (m_isDestroyed) {
        m_lines.push_back({"destroy", "0"});
    } else {
        Call("destroy", [&] { return Destroy(); });
    }
    m_handle = nullptr;
    m_messages = simulator::MessagesTo(kPhone);
    // Nothing of this has anybody to go to.
    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    simulator::PowerOff(0x40000000U);
    simulator::AmbientPowerOff();
    simulator::Settle();
    while (ElapseTimeout()) {
        simulator::Settle();
    }
}

void Application::Hear(const char* report)
{
    bool isTheEnd = false;
    {
        const ApplicationsOwn own;
        m_lateReports += m_handle == nullptr ? 1 : 0;
        m_heard += std::string(" ") + report;
        isTheEnd =
            m_handle != nullptr && !m_destroyInside.empty() && std::string(report).rfind(m_destroyInside, 0) == 0;
    }
    if (!isTheEnd) {
        return;
    }
    // As in a step, but no exception may go to the library from here.
    std::string said = Attempt([&] { return std::to_string(Destroy()); });
    if (said == "bad_alloc" && IsShort()) {
        RelieveShortage();
        said = Attempt([&] { return std::to_string(Destroy()); });
    }
    if (said != "0") {
        const ApplicationsOwn own;
        m_heard += " not destroyed: " + said;
    }
}

void Application::HearPhone(std::initializer_list<const char*> texts)
{
    {
        const ApplicationsOwn own;
        std::string phone;
        for (const char* text : texts) {
            phone += text != nullptr ? std::string(text) + "|" : "null|";
        }
        m_phones.push_back(phone);
    }
    Hear("phone");
}

void Application::StateCb(lyn_state_e state, void* userData)
{
    static_cast<Application*>(userData)->Hear(NameOf(state));
}

void Application::PhoneCb(const lyn_device_info_t* info, void* userData)
{
    static_cast<Application*>(userData)->HearPhone({info->name, info->address, info->unique_id, info->extra_data});
}

void Application::JsonCb(const char* json, void* userData)
{
    static_cast<Application*>(userData)->HearPhone({json});
}

void Application::ResultCb(lyn_request_initiating_result_e result, void* userData)
{
    std::array<char, 32> report{};
    std::snprintf(report.data(), report.size(), "result %d", result);
    static_cast<Application*>(userData)->Hear(report.data());
}

}  // namespace lyn::test
