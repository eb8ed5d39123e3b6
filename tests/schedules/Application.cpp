// SPDX-License-Identifier: Apache-2.0
#include "schedules/Application.h"

#include <glib.h>

#include <cstdlib>
#include <cstring>

#include "schedules/Codes.h"
#include "schedules/Conductor.h"
#include "schedules/Freed.h"
#include "schedules/Outcome.h"
#include "schedules/Sight.h"

namespace lyn::schedules {
namespace {

constexpr std::array kVersions = {"2.0", "3.0", "4.0"};
constexpr const char* kExtraData = R"({"appid":"music"})";

struct Name {
    lyn_request_initiating_result_e result;
    const char* text;
};
constexpr std::array<Name, 4> kNames = {{{LYN_REQUEST_INITIATING_RESULT_SUCCESS, "Success"},
                                         {LYN_REQUEST_INITIATING_RESULT_GATT_FAIL, "GattFail"},
                                         {LYN_REQUEST_INITIATING_RESULT_NOT_TAP, "NotTap"},
                                         {LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED, "GattDisconnected"}}};

lyn_error_e SetVersion(lyn_service_h handle, const char* version)
{
    try {
        return lyn_set_nodlink_version(handle, version);
    } catch (const char*) {
        return static_cast<lyn_error_e>(kThrown);
    }
}

// As a code: a text that is not the result's name must be that of a handle that is not alive.
int ReadText(lyn_service_h handle, int number)
{
    const Name& name = kNames.at(static_cast<std::size_t>(number));
    const std::string text = lyn_get_request_initiating_error_string(handle, name.result);
    if (text == name.text) {
        return LYN_ERROR_NONE;
    }
    Require(text == "UnknownErr", "code", "the result " + std::string(name.text) + " is called " + text);
    return handle == nullptr ? LYN_ERROR_INVALID_HANDLE : LYN_ERROR_INVALID_PARAMETER;
}

int ReadType(lyn_service_h handle)
{
    constexpr int unset = -1;
    nod_link_type type = unset;
    const lyn_error_e code = lyn_get_nodlink_type(handle, &type);
    const bool isSet = type >= LYN_NOD_LINK_TYPE_MULTI_VIEW && type <= LYN_NOD_LINK_TYPE_SOUND;
    Require(code == LYN_ERROR_NONE ? isSet : type == unset, "code", "a type is given with 0, and only then");
    return code;
}

void CountCode(What what, int code)
{
    const auto call = static_cast<std::size_t>(what) - static_cast<std::size_t>(What::create);
    ++TheOutcome().counts.codes.at(call).at(static_cast<std::size_t>(code));
}

}  // namespace

Room& TheRoom()
{
    static auto* const room = new Room;
    return *room;
}

Ledger& TheLedger()
{
    static auto* const ledger = new Ledger(TheRoom());
    return *ledger;
}

Application& TheApplication()
{
    static auto* const application = new Application(TheLedger());
    return *application;
}

void Application::RunWorker(Move move)
{
    Actor& me = *Conductor::Me();
    while (move.what != What::goOn) {
        Perform(me, move);
        move = Conductor::Instance().Stop(StopKind::top, "");
    }
}

void Application::RunMainLoop()
{
    Conductor& conductor = Conductor::Instance();
    Actor& me = *Conductor::Me();
    for (;;) {
        const Move move = conductor.Stop(StopKind::top, "");
        if (move.what != What::goOn) {
            Perform(me, move);
            continue;
        }
        const bool isIdle = conductor.IsOver() && g_main_context_pending(nullptr) == FALSE;
        if (isIdle && conductor.HaveWorkersEnded()) {
            return;
        }
        Require(!isIdle || !conductor.AreWorkersStuck(), "deadlock", "the main loop is idle, and all others wait");
        Turn(me);
    }
}

void Application::Turn(Actor& actor)
{
    const FrameScope scope(actor, {Frame::Kind::loop});
    {
        const InSight library;
        g_main_context_iteration(nullptr, FALSE);
    }
    m_ledger.EndTurn(actor);
}

void Application::Perform(Actor& actor, const Move& move)
{
    switch (move.what) {
    case What::create:
        Create(actor, move);
        break;
    case What::iterate:
        Turn(actor);
        break;
    case What::exit:
        EndProcess(actor);
    default:
        MakeCall(actor, move);
        break;
    }
}

void Application::EndProcess(Actor& actor)
{
    actor.frames.push_back({Frame::Kind::exit});
    m_ledger.BeginProcessEnd();
    KeepNoMore();
    ++TheOutcome().counts.schedules;
    TheOutcome().counts.moves += Conductor::Instance().Now();
    const InSight library;
    std::exit(0);
}

void Application::Create(Actor& actor, const Move& move)
{
    Life& life = m_ledger.BeginLife(ServiceNames().at(static_cast<std::size_t>(move.number)));
    const FrameScope scope(actor, {Frame::Kind::call, move.what, FunctionOf(move.what), &life});
    lyn_service_h handle = nullptr;
    const lyn_error_e code = CreateService(&handle, life);
    CountCode(move.what, code);
    m_ledger.EndCreation(life, code, handle);
}

lyn_error_e Application::CreateService(lyn_service_h* handle, Life& life)
{
    const InSight library;
    return lyn_create_service(handle, life.service.c_str(), OnState, &life);
}

void Application::MakeCall(Actor& actor, const Move& move)
{
    const lyn_service_h handle = HandleOf(move.handle);
    Call call(move, actor, m_ledger.Find(handle));
    const FrameScope scope(actor, {Frame::Kind::call, move.what, FunctionOf(move.what), call.life});
    m_ledger.BeginCall(call);
    const int code = Invoke(call, handle);
    CountCode(move.what, code);
    m_ledger.EndCall(call, code);
}

int Application::Invoke(const Call& call, lyn_service_h handle)
{
    const InSight library;
    const int number = call.move.number;
    switch (call.move.what) {
    case What::destroy:
        return lyn_destroy_service(handle);
    case What::scan:
        return lyn_start_scan(handle, OnFound, call.asked);
    case What::scanJson:
        return lyn_start_scan_with_serialization(handle, OnJson, call.asked);
    case What::stop:
        return lyn_stop_scan(handle);
    case What::request:
        return lyn_request_initiating(handle, AddressOf(number), OnResult, call.asked);
    case What::requestExtra:
        return lyn_request_initiating_with_extra_data(handle, AddressOf(number), kExtraData, OnResult, call.asked);
    case What::advertise:
        return lyn_start_advertise(handle, static_cast<lyn_adv_interval_e>(number));
    case What::unadvertise:
        return lyn_stop_advertise(handle);
    case What::version:
        return SetVersion(handle, kVersions.at(static_cast<std::size_t>(number)));
    case What::type:
        return ReadType(handle);
    default:
        return ReadText(handle, number);
    }
}

lyn_service_h Application::HandleOf(Handle handle)
{
    if (handle == Handle::null) {
        return nullptr;
    }
    const Life* life = handle == Handle::old ? m_ledger.BeforeLatest() : m_ledger.Latest();
    return life != nullptr && (life->IsAlive() || KeepsAddresses()) ? life->handle : nullptr;
}

void Application::StayInCallback(Actor& actor)
{
    for (;;) {
        const Move move = Conductor::Instance().Stop(StopKind::callback, "");
        if (move.what == What::goOn) {
            return;
        }
        Perform(actor, move);
    }
}

void Application::OnState(lyn_state_e state, void* userData)
{
    const OutOfSight schedule;
    Actor* const me = Conductor::Me();
    auto& life = *static_cast<Life*>(userData);
    Require(me != nullptr, "late", "a state is reported after the end");
    const Actor* const reporting = TheLedger().EnterState(life, state, *me);
    const FrameScope scope(*me, {Frame::Kind::state, What::goOn, "", &life});
    TheApplication().StayInCallback(*me);
    TheLedger().LeaveState(life, reporting);
}

void Application::OnFound(const lyn_device_info_t* /*info*/, void* userData)
{
    const OutOfSight schedule;
    Actor* const me = Conductor::Me();
    const auto& asked = *static_cast<Asked*>(userData);
    Require(me != nullptr, "late", "a phone is reported after the end");
    TheLedger().OnFound(asked, *me);
    const FrameScope scope(*me, {Frame::Kind::found, What::goOn, "", asked.life});
    TheApplication().StayInCallback(*me);
}

void Application::OnJson(const char* json, void* userData)
{
    Require(json != nullptr, "callback", "a phone has a text");
    OnFound(nullptr, userData);
}

void Application::OnResult(lyn_request_initiating_result_e result, void* userData)
{
    const OutOfSight schedule;
    Actor* const me = Conductor::Me();
    const auto& asked = *static_cast<Asked*>(userData);
    Require(me != nullptr, "late", "a result is reported after the end");
    TheLedger().OnResult(asked, result, *me);
    const FrameScope scope(*me, {Frame::Kind::result, What::goOn, "", asked.life});
    TheApplication().StayInCallback(*me);
}

}  // namespace lyn::schedules
