// SPDX-License-Identifier: Apache-2.0
#include "schedules/PlainStory.h"

#include <string>
#include <vector>

#include "lyn_service.h"
#include "lyn_simulator/simulator.h"
#include "schedules/Outcome.h"
#include "schedules/Room.h"

namespace lyn::schedules {
namespace {

struct Heard {
    std::vector<lyn_state_e> states;
    std::vector<std::string> phones;
    std::vector<lyn_request_initiating_result_e> results;
};

void OnState(lyn_state_e state, void* userData)
{
    static_cast<Heard*>(userData)->states.push_back(state);
}

void OnFound(const lyn_device_info_t* info, void* userData)
{
    static_cast<Heard*>(userData)->phones.emplace_back(info->address);
}

void OnResult(lyn_request_initiating_result_e result, void* userData)
{
    static_cast<Heard*>(userData)->results.push_back(result);
}

void RequireDone(lyn_error_e code, const char* function)
{
    Require(code == LYN_ERROR_NONE, "plain story", std::string(function) + " returns " + std::to_string(code));
}

}  // namespace

void TellPlainStory(int service)
{
    const std::string name = ServiceNames().at(static_cast<std::size_t>(service));
    const char* phone = AddressOf(PhoneOf(name));
    Heard heard;
    lyn_service_h handle = nullptr;
    RequireDone(lyn_create_service(&handle, name.c_str(), OnState, &heard), "create");
    RequireDone(lyn_start_scan(handle, OnFound, &heard), "scan");
    simulator::Settle();
    Require(!heard.phones.empty() && heard.phones.front() == phone, "plain story", "the phone is not found");
    RequireDone(lyn_stop_scan(handle), "stop");
    heard.states.clear();
    RequireDone(lyn_request_initiating(handle, phone, OnResult, &heard), "request");
    simulator::Settle();
    Require(heard.results == std::vector{AnswerOf(PhoneOf(name))}, "plain story",
            "the phone's answer does not come");
    const std::vector<lyn_state_e> states{LYN_STATE_READY, LYN_STATE_REQUESTING, LYN_STATE_READY};
    Require(heard.states == states, "plain story", "the states of a request are not as they should be");
    RequireDone(lyn_destroy_service(handle), "destroy");
    simulator::Settle();
}

}  // namespace lyn::schedules
