// SPDX-License-Identifier: Apache-2.0
#include "schedules/Codes.h"

#include <algorithm>

#include "schedules/Conductor.h"
#include "schedules/Outcome.h"

namespace lyn::schedules {
namespace {

constexpr int kFirstBadInterval = 5;
constexpr int kBadVersion = 2;

using States = std::vector<lyn_state_e>;

bool IsBadInterval(const Move& move)
{
    return move.what == What::advertise && (move.number < 0 || move.number >= kFirstBadInterval);
}

/// The service has been in one of these states during the call.
bool Had(const Call& call, std::initializer_list<lyn_state_e> states)
{
    const auto isOne = [&](lyn_state_e state) {
        return std::find(states.begin(), states.end(), state) != states.end();
    };
    const States& history = call.life->history;
    const auto since = history.begin() + static_cast<std::ptrdiff_t>(call.historyBefore);
    return call.isUncertain || isOne(call.stateBefore) || std::any_of(since, history.end(), isOne);
}

bool MayPlatformFail(const Call& call, const Room& room)
{
    if (room.HasFaults()) {
        return call.move.what != What::version && call.move.what != What::type;
    }
    const bool needsRadio = call.move.what != What::stop && IsWork(call.move.what);
    const bool isRequest = needsRadio && call.move.what >= What::request;
    return (needsRadio && room.HasBluetoothBeenOff()) || (isRequest && call.move.number == kNoPhone);
}

bool IsRightInsideState(const Call& call, int code, const Room& room)
{
    const bool makesNoTransition = call.move.what == What::stop && call.stateBefore == LYN_STATE_REQUESTING;
    if (makesNoTransition) {
        return code == LYN_ERROR_NONE || (code == LYN_ERROR_OPERATION_FAILED && MayPlatformFail(call, room));
    }
    return code == LYN_ERROR_INVALID_STATE;
}

bool IsRightByState(const Call& call, int code)
{
    const bool isRefused = code == LYN_ERROR_INVALID_STATE;
    switch (call.move.what) {
    case What::scan:
    case What::scanJson:
        return isRefused ? Had(call, {LYN_STATE_SCANNING, LYN_STATE_REQUESTING, LYN_STATE_NOT_READY})
                         : Had(call, {LYN_STATE_READY});
    case What::stop:
        return !isRefused;
    default:
        return isRefused ? Had(call, {LYN_STATE_REQUESTING, LYN_STATE_NOT_READY})
                         : Had(call, {LYN_STATE_READY, LYN_STATE_SCANNING});
    }
}

bool IsRightOfLiving(const Call& call, int code, const Room& room)
{
    switch (call.move.what) {
    case What::version:
        if (!call.life->IsNodLink()) {
            return code == LYN_ERROR_NOT_SUPPORTED;
        }
        return code == (call.move.number == kBadVersion ? kThrown : LYN_ERROR_NONE);
    case What::type:
        return code == (call.life->IsNodLink() ? LYN_ERROR_NONE : LYN_ERROR_NOT_SUPPORTED);
    case What::text:
        return code == LYN_ERROR_NONE;
    case What::destroy:
        return code == LYN_ERROR_NONE ? !call.life->IsDestroyed()
                                      : code == LYN_ERROR_INVALID_HANDLE && call.life->destructions > 1;
    default:
        break;
    }
    if (call.isInsideState && IsWork(call.move.what)) {
        return IsRightInsideState(call, code, room);
    }
    const bool isDocumented = code == LYN_ERROR_NONE || code == LYN_ERROR_INVALID_STATE ||
                              (code == LYN_ERROR_OPERATION_FAILED && MayPlatformFail(call, room));
    return isDocumented && IsRightByState(call, code);
}

bool IsRight(const Call& call, int code, const Room& room)
{
    if (IsBadInterval(call.move)) {
        return code == LYN_ERROR_INVALID_PARAMETER;
    }
    const Life* life = call.life;
    if (life == nullptr) {
        return code == LYN_ERROR_INVALID_HANDLE;
    }
    const bool isDestruction = call.move.what == What::destroy;
    if (life->destroyed < call.begun) {
        return code == (isDestruction ? LYN_ERROR_INVALID_HANDLE : LYN_ERROR_INVALID_PARAMETER);
    }
    const bool isOvertaken = !isDestruction && life->destroyBegun != kNever;
    if (isOvertaken &&
        (code == LYN_ERROR_NONE || code == LYN_ERROR_INVALID_STATE || code == LYN_ERROR_INVALID_PARAMETER)) {
        return true;
    }
    if (life->mayLackParts && code == LYN_ERROR_INTERNAL && !isDestruction) {
        return true;
    }
    return IsRightOfLiving(call, code, room);
}

/// What a call reports that nobody has come between.
States ReportsOf(const Call& call, int code)
{
    const bool isDone = code == LYN_ERROR_NONE;
    const bool isTwice = call.life->service == "dummy" && call.stateBefore == LYN_STATE_SCANNING;
    States stopped(isTwice ? 2 : 1, LYN_STATE_READY);
    switch (call.move.what) {
    case What::scan:
    case What::scanJson:
        return isDone ? States{LYN_STATE_SCANNING} : States{};
    case What::stop:
        return isDone && call.stateBefore != LYN_STATE_REQUESTING ? stopped : States{};
    case What::request:
    case What::requestExtra:
        if (code == LYN_ERROR_INVALID_STATE) {
            return {};
        }
        if (isDone) {
            stopped.push_back(LYN_STATE_REQUESTING);
        }
        return stopped;
    default:
        return {};
    }
}

void CheckReports(const Call& call, int code, const Room& room)
{
    const Life* life = call.life;
    if (life == nullptr || call.isDisturbed || call.isUncertain || room.HasFaults() ||
        life->destroyBegun != kNever) {
        return;
    }
    Require(call.reported == ReportsOf(call, code), "state",
            std::string(FunctionOf(call.move.what)) + " has not reported what it should");
}

void CheckAccepted(const Call& call, int code)
{
    if (code != LYN_ERROR_NONE || call.asked == nullptr || call.move.what < What::request) {
        return;
    }
    const Asked& asked = *call.asked;
    Require(asked.IsRequesting() || asked.hasMissed || call.life->destroyBegun != kNever, "state",
            "an accepted request has not reported REQUESTING");
}

}  // namespace

void CheckCode(const Call& call, int code, const Room& room)
{
    Require(IsRight(call, code, room), "code",
            std::string(FunctionOf(call.move.what)) + " returns " + std::to_string(code));
    CheckReports(call, code, room);
    CheckAccepted(call, code);
}

}  // namespace lyn::schedules
