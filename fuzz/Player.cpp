// SPDX-License-Identifier: Apache-2.0
#include "Player.h"

#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace lyn::fuzz {
namespace {

using Call = Ledger::Call;
using Scope = Ledger::CallScope;

constexpr std::array<const char*, 6> SERVICES = {"mirroring", "kov", "nodlink", "dummy", "unknown", nullptr};
constexpr std::array<const char*, 5> EXTRA_DATA = {"", R"({"appid":"music"})", "null", "[1]", "{"};
constexpr std::array<const char*, 4> VERSIONS = {"2.0", "3.0", "4.0", nullptr};
constexpr std::array<const char*, 12> RESULTS = {
    "Success",    "GattFail",      "NotRegisteredDevice", "UnknownErr",
    "CommandErr", "NotSupported",  "Connected",           "UnknownErr",
    "NotTap",     "NotStartedKov", "NotStartedMirroring", "GattDisconnected"};
enum HandleOfCall : std::size_t { ALIVE = 0, NONE = 1, STALE = 2 };

// What the application does in its next callback.
enum Action : unsigned {
    DESTROY = 1,
    CREATE = 2,
    REQUEST = 4,
    STOP_SCAN = 8,
    DESTROY_IN_STATE = 16,
    START_SCAN = 32,
    ADVERTISE = 64,
    READ_IN_STATE = 128
};

}  // namespace

std::size_t Player::Pick(std::size_t count)
{
    const std::uint8_t byte = m_input.TakeByte();
    return (byte >= '0' && byte <= '9' ? byte - std::size_t{'0'} : byte) % count;
}

bool Player::PlayCall(char step)
{
    const bool hasHandle = std::strchr("dsjxrRaAvte", step) != nullptr;
    if (hasHandle) {
        const std::size_t which = std::exchange(m_handleOfNextCall, ALIVE);
        if (which != ALIVE || m_ledger.Living() == nullptr) {
            PlayRefused(step, which == STALE);
            return true;
        }
        return PlayWork(step) || PlayRest(step);
    }
    switch (step) {
    case 'c':
        Create();
        return true;
    case 'h':
        m_handleOfNextCall = Pick(3);
        return true;
    case '!':
        m_reaction = m_input.TakeByte();
        return true;
    default:
        return false;
    }
}

bool Player::PlayWork(char step)
{
    switch (step) {
    case 's':
    case 'j':
        StartScan(step == 'j');
        return true;
    case 'x':
        StopScan();
        return true;
    case 'r':
        Request(PickPhone(), "");
        return true;
    case 'R': {
        const char* phone = PickPhone();
        Request(phone, EXTRA_DATA[Pick(EXTRA_DATA.size())]);
        return true;
    }
    case 'a':
        StartAdvertise();
        return true;
    case 'A':
        StopAdvertise();
        return true;
    default:
        return false;
    }
}

bool Player::PlayRest(char step)
{
    switch (step) {
    case 'd':
        Destroy();
        return true;
    case 'v':
        SetVersion();
        return true;
    case 't':
        GetType();
        return true;
    case 'e':
        GetErrorString();
        return true;
    default:
        return false;
    }
}

void Player::PlayRefused(char step, bool isStale)
{
    const Life* life = m_ledger.Living();
    // A new service may have got the address of the last one.
    lyn_service_h handle = isStale && (life == nullptr || life->handle != m_stale) ? m_stale : nullptr;
    if (step == 'e') {
        const std::string text =
            lyn_get_request_initiating_error_string(handle, LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        Require(text == "UnknownErr", "a handle that is not alive names no result");
        return;
    }
    const bool isInvalidHandle = handle == nullptr || step == 'd';
    Require(CallWith(handle, step) == (isInvalidHandle ? LYN_ERROR_INVALID_HANDLE : LYN_ERROR_INVALID_PARAMETER),
            "a handle that is not alive is refused with its documented error");
}

lyn_error_e Player::CallWith(lyn_service_h handle, char step)
{
    Asked& asked = m_ledger.Ask(nullptr);
    nod_link_type type = 0;
    switch (step) {
    case 'd':
        return lyn_destroy_service(handle);
    case 's':
        return lyn_start_scan(handle, OnFound, &asked);
    case 'j':
        return lyn_start_scan_with_serialization(handle, OnJson, &asked);
    case 'x':
        return lyn_stop_scan(handle);
    case 'r':
        return lyn_request_initiating(handle, PickPhone(), OnResult, &asked);
    case 'R':
        return lyn_request_initiating_with_extra_data(handle, PickPhone(), "", OnResult, &asked);
    case 'a':
        return lyn_start_advertise(handle, LYN_ADV_INTERVAL_50);
    case 'A':
        return lyn_stop_advertise(handle);
    case 'v':
        return lyn_set_nodlink_version(handle, "2.0");
    default:
        return lyn_get_nodlink_type(handle, &type);
    }
}

void Player::Create()
{
    const std::size_t kind = Pick(SERVICES.size() + 1);
    const bool isHandleInUse = kind == SERVICES.size();
    CreateService(SERVICES[isHandleInUse ? 0 : kind], isHandleInUse);
}

lyn_error_e Player::ExpectCreation(const char* name, bool isHandleInUse, bool isAlone) const
{
    if (isHandleInUse || name == nullptr) {
        return LYN_ERROR_INVALID_PARAMETER;
    }
    const std::string service = name;
    if (!isAlone) {
        return LYN_ERROR_ALREADY_DONE;
    }
    if (service == "nodlink" && !(m_isBluetoothOn && m_isPowerGood)) {
        return LYN_ERROR_INTERNAL;
    }
    return service == "unknown" ? LYN_ERROR_INVALID_PARAMETER : LYN_ERROR_NONE;
}

void Player::CreateService(const char* name, bool isHandleInUse)
{
    const bool isAlone = m_ledger.Living() == nullptr;
    int something = 0;
    lyn_service_h handle = isHandleInUse ? &something : nullptr;
    const std::string service = name != nullptr ? name : "";
    Life& life = m_ledger.Announce(service, m_hasFaults);
    const lyn_error_e error = lyn_create_service(&handle, name, OnState, &life);
    const lyn_error_e expected = ExpectCreation(name, isHandleInUse, isAlone);
    const auto isUndecided = [](lyn_error_e value) {
        // Bluetooth that cannot be made ready is no reason to refuse, a state that cannot be read is one.
        return value == LYN_ERROR_NONE || value == LYN_ERROR_INTERNAL;
    };
    const bool isLeftOpen = m_hasFaults && isUndecided(expected) && isUndecided(error);
    Require(error == expected || isLeftOpen, "a service is created or refused as documented");
    if (error == LYN_ERROR_NONE) {
        m_ledger.Begin(life, handle);
    } else {
        Require(isHandleInUse ? handle == &something : handle == nullptr, "a refused creation gives no handle");
    }
}

void Player::Destroy()
{
    Life& life = *m_ledger.Living();
    m_stale = life.handle;
    // Nothing may be reported from inside the call either.
    m_ledger.End(life);
    Require(lyn_destroy_service(life.handle) == LYN_ERROR_NONE, "the living service is destroyed");
}

void Player::StartScan(bool isSerialized)
{
    Life& life = *m_ledger.Living();
    Asked& asked = m_ledger.Ask(&life);
    life.phonesTo = &asked;
    const Scope scope(m_ledger, life);
    const lyn_error_e error = isSerialized ? lyn_start_scan_with_serialization(life.handle, OnJson, &asked)
                                           : lyn_start_scan(life.handle, OnFound, &asked);
    scope.Check(Call::startScan, error, MayFail());
}

void Player::StopScan()
{
    Life& life = *m_ledger.Living();
    const Scope scope(m_ledger, life);
    scope.Check(Call::stopScan, lyn_stop_scan(life.handle), MayFail());
}

void Player::Request(const char* phone, const char* extraData)
{
    Life& life = *m_ledger.Living();
    Asked& asked = m_ledger.Ask(&life);
    life.resultTo = &asked;
    const Scope scope(m_ledger, life);
    const lyn_error_e error =
        *extraData == '\0'
            ? lyn_request_initiating(life.handle, phone, OnResult, &asked)
            : lyn_request_initiating_with_extra_data(life.handle, phone, extraData, OnResult, &asked);
    scope.Check(Call::request, error, MayFail());
    if (error == LYN_ERROR_NONE && life.isAlive) {
        life.isOpen = true;
    }
}

void Player::StartAdvertise()
{
    Life& life = *m_ledger.Living();
    const Scope scope(m_ledger, life);
    constexpr int outside = 5;
    const auto interval = static_cast<int>(Pick(outside + 2));
    const lyn_error_e error =
        lyn_start_advertise(life.handle, static_cast<lyn_adv_interval_e>(interval > outside ? -1 : interval));
    if (interval >= outside) {
        Require(error == LYN_ERROR_INVALID_PARAMETER, "an interval outside the enumeration is refused");
        return;
    }
    scope.Check(Call::startAdvertise, error, MayFail());
}

void Player::StopAdvertise()
{
    Life& life = *m_ledger.Living();
    const Scope scope(m_ledger, life);
    scope.Check(Call::stopAdvertise, lyn_stop_advertise(life.handle), MayFail());
}

void Player::SetVersion()
{
    Life& life = *m_ledger.Living();
    const char* version = VERSIONS[Pick(VERSIONS.size())];
    const bool isNodLink = life.service == "nodlink";
    const bool isVersion = version != nullptr && std::strcmp(version, "4.0") != 0;
    lyn_error_e error = LYN_ERROR_NONE;
    try {
        error = lyn_set_nodlink_version(life.handle, version);
        Require(version != nullptr, "a null version throws");
        Require(isVersion || !isNodLink || error == LYN_ERROR_INTERNAL, "an unsupported version throws");
    } catch (const std::logic_error&) {
        Require(version == nullptr, "only a null version throws a logic error");
        return;
    } catch (const char* text) {
        Require(isNodLink && !isVersion && std::strcmp(text, "4.0") == 0, "the thrown text is the version");
        return;
    }
    const lyn_error_e expected = isNodLink ? LYN_ERROR_NONE : LYN_ERROR_NOT_SUPPORTED;
    Require(error == expected || (life.mayLackParts && error == LYN_ERROR_INTERNAL),
            "a version is taken by nodlink only");
}

void Player::GetType()
{
    Life& life = *m_ledger.Living();
    nod_link_type type = -1;
    const lyn_error_e error = lyn_get_nodlink_type(life.handle, &type);
    if (error == LYN_ERROR_NONE) {
        Require(life.service == "nodlink", "only nodlink has a type");
        Require(type >= LYN_NOD_LINK_TYPE_MULTI_VIEW && type <= LYN_NOD_LINK_TYPE_SOUND, "the type is known");
    } else {
        Require(type == -1, "a failure leaves the type alone");
        Require((life.service != "nodlink" && error == LYN_ERROR_NOT_SUPPORTED) ||
                    (life.mayLackParts && error == LYN_ERROR_INTERNAL),
                "nodlink has a type");
    }
}

void Player::GetErrorString()
{
    const std::size_t result = Pick(RESULTS.size() + 1);
    const std::string text = lyn_get_request_initiating_error_string(
        m_ledger.Living()->handle, static_cast<lyn_request_initiating_result_e>(result));
    Require(text == (result < RESULTS.size() ? RESULTS[result] : "UnknownErr"),
            "a result has its documented name");
}

void Player::React(unsigned actions)
{
    const auto isWanted = [&](unsigned action) { return (actions & action) != 0 && m_ledger.Living() != nullptr; };
    if (isWanted(DESTROY)) {
        Destroy();
    }
    if ((actions & CREATE) != 0) {
        Create();
    }
    if (isWanted(STOP_SCAN)) {
        StopScan();
    }
    if (isWanted(ADVERTISE)) {
        StartAdvertise();
    }
    if (isWanted(START_SCAN)) {
        StartScan(false);
    }
    if (isWanted(REQUEST)) {
        Request(PickPhone(), "");
    }
}

void Player::OnState(lyn_state_e state, void* userData)
{
    Life& life = *static_cast<Life*>(userData);
    life.ledger->OnState(life, state);
    Player& player = *life.player;
    const unsigned wanted = player.m_reaction & (DESTROY_IN_STATE | READ_IN_STATE);
    if (wanted == 0) {
        return;
    }
    player.m_reaction = 0;
    if ((wanted & READ_IN_STATE) != 0) {
        player.GetType();
        player.GetErrorString();
    }
    if ((wanted & DESTROY_IN_STATE) != 0) {
        player.Destroy();
    }
}

void Player::OnFound(const lyn_device_info_t* info, void* userData)
{
    const auto& asked = *static_cast<Asked*>(userData);
    Require(info != nullptr && info->address != nullptr, "a phone has an address");
    Require(asked.life != nullptr, "a refused call is not answered");
    asked.life->ledger->OnPhone(asked);
    Player& player = *asked.life->player;
    player.React(std::exchange(player.m_reaction, 0U));
}

void Player::OnJson(const char* json, void* userData)
{
    Require(json != nullptr && *json == '{', "a serialized phone is an object");
    const lyn_device_info_t info{nullptr, "", nullptr, nullptr, 0};
    OnFound(&info, userData);
}

void Player::OnResult(lyn_request_initiating_result_e result, void* userData)
{
    const auto& asked = *static_cast<Asked*>(userData);
    Require(asked.life != nullptr, "a refused call is not answered");
    asked.life->ledger->OnResult(asked, result);
    Player& player = *asked.life->player;
    player.React(std::exchange(player.m_reaction, 0U));
}

}  // namespace lyn::fuzz
