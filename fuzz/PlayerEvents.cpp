// SPDX-License-Identifier: Apache-2.0
//
// The platform's part in a played sequence: events, failing calls, and reports by hand.
#include <glib.h>

#include <array>

#include "Player.h"
#include "support/Clock.h"

namespace lyn::fuzz {
namespace {

using simulator::Answer;

constexpr std::array<const char*, 3> CHARACTERISTICS = {"9be85432-b1db-416c-9e1c-d6d381305337",
                                                        "fc4e4003-dd1f-4896-bc77-35a759445f69",
                                                        "7909f901-904c-11e6-bdf4-9bbdfdaad9d9"};
// Results of the platform: success, refused, "gave up waiting", "lost", "reported as success", "no scan".
constexpr std::array<unsigned, 7> CODES = {0, 133, 0xC0000001, 0xFE400104, 0xFE400101, 0xFE400105, 0xFFFFFFFF};
// Calls that release something are left out: nothing sensible can follow their failure.
constexpr std::array<const char*, 20> FALLIBLE = {"bt_gatt_connect",
                                                  "bt_gatt_client_create",
                                                  "bt_gatt_client_get_service",
                                                  "bt_gatt_service_get_characteristic",
                                                  "bt_gatt_client_set_characteristic_value_changed_cb",
                                                  "bt_gatt_set_value",
                                                  "bt_gatt_client_write_value",
                                                  "bt_gatt_client_request_att_mtu_change",
                                                  "bt_gatt_set_connection_state_changed_cb",
                                                  "bt_adapter_le_start_scan",
                                                  "bt_adapter_le_stop_scan",
                                                  "bt_adapter_le_set_scan_mode",
                                                  "bt_adapter_le_enable_le_scan_performance_boost",
                                                  "bt_product_init",
                                                  "bt_adapter_get_state",
                                                  "wifi_direct_initialize",
                                                  "vconf_set_int",
                                                  "vconf_get_int",
                                                  "system_info_get_custom_int",
                                                  "platform_kmsg_open"};
constexpr std::array<const char*, 4> NULLABLE = {"bt_adapter_get_address", "wifi_direct_get_mac_address",
                                                 "vconf_get_str",
                                                 "bt_adapter_le_get_scan_result_manufacturer_data"};
constexpr std::array<const char*, 6> TEXTS = {"Success", "NotTap", R"({"type":"fgApp"})", "", "5", "{}"};

int Code(std::size_t which)
{
    return static_cast<int>(CODES[which]);
}

Answer Answering(std::size_t behaviour)
{
    using Kind = Answer::Kind;
    switch (behaviour) {
    case 1:
        return {.kind = Kind::disconnect};
    case 2:
        return {.text = R"({"type":"fgApp","packageName":"video"})"};
    case 4:
        return {.kind = Kind::silent};
    case 5:
        return {.kind = Kind::writeError, .code = 133};
    case 6:
        return {.text = "Success", .beforeCompletion = true};
    case 7:
        return {.text = "NotTap", .repeat = 3};
    case 8:
        return {.text = ""};
    case 9:
        return {.kind = Kind::disconnect, .code = Code(3), .beforeCompletion = true};
    default:
        return {.text = "Success"};
    }
}

// How the phone's link behaves, beside its answer.
void Bend(simulator::Phone& phone, std::size_t behaviour)
{
    auto& characteristic = phone.services.at(behaviour % phone.services.size()).characteristics.at(0);
    switch (behaviour) {
    case 3:
        phone.connects = {{133}};
        break;
    case 10:
        phone.connects = {{133}, {133}, {0}};
        break;
    case 11:
        phone.services.clear();
        break;
    case 12:
        characteristic.notifies = false;
        break;
    case 13:
        characteristic.writable = false;
        break;
    case 14:
        phone.mtuStatus = 133;
        break;
    case 15:
        phone.dropAfterConnectMs = 0;
        phone.dropCode = Code(3);
        break;
    case 16:
        phone.disconnectCode = 133;
        break;
    case 17:
        phone.connects = {{Code(4)}};
        break;
    default:
        break;
    }
}

}  // namespace

const char* Player::PickPhone()
{
    return PHONES[Pick(PHONES.size())];
}

bool Player::PlayEvent(char step)
{
    constexpr std::size_t behaviours = 18;
    switch (step) {
    case 'g':
        simulator::RemovePhone(PickPhone());
        return true;
    case 'G': {
        const char* phone = PickPhone();
        AddPhone(phone, Pick(behaviours));
        return true;
    }
    case 'y':
        Advertise();
        return true;
    case 'w':
        test::ElapseTimeout();
        return true;
    case '.':
        simulator::Settle();
        return true;
    case ',':
        g_main_context_iteration(nullptr, FALSE);
        return true;
    default:
        return PlayTv(step);
    }
}

bool Player::PlayTv(char step)
{
    constexpr std::array<int, 4> channels = {0, 99, -1, 5};
    switch (step) {
    case 'b':
    case 'B':
        SetBluetooth(step == 'B' ? BT_ADAPTER_ENABLED : BT_ADAPTER_DISABLED, true);
        return true;
    case 'q':
        SetBluetooth(Pick(2) != 0 ? BT_ADAPTER_ENABLED : BT_ADAPTER_DISABLED, false);
        return true;
    case 'p':
        simulator::PowerOff(Pick(2) != 0 ? 0x40000000U : 0U);
        return true;
    case 'm':
        simulator::AmbientPowerOff();
        return true;
    case 'P':
        SetPower(static_cast<int>(Pick(6)));
        return true;
    case 'z':
        simulator::SetSetting("memory/menu/network/screenmirroring/p2p_listen_channel",
                              channels[Pick(channels.size())]);
        return true;
    default:
        return false;
    }
}

bool Player::PlayFault(char step)
{
    constexpr std::size_t mostCalls = 30;
    switch (step) {
    case 'f':
        simulator::FailCall(FALLIBLE[Pick(FALLIBLE.size())], -1);
        break;
    case 'F':
        simulator::FailAnyCall(-1, 1 + static_cast<int>(Pick(mostCalls)));
        m_mayLeave = true;
        break;
    case 'n':
        simulator::NullText(NULLABLE[Pick(NULLABLE.size())]);
        break;
    case '0':
        simulator::ClearFaults();
        m_hasFaults = false;
        return true;
    default:
        return false;
    }
    m_hasFaults = true;
    return true;
}

bool Player::PlayReport(char step)
{
    const Registrations now = Register();
    switch (step) {
    case 'C': {
        const int code = Code(Pick(CODES.size()));
        const bool isConnected = Pick(2) != 0;
        const char* phone = PickPhone();
        if (now.connection.callback != nullptr) {
            now.connection.callback(code, isConnected, phone, now.connection.userData);
        }
        return true;
    }
    case 'M': {
        const bt_gatt_client_att_mtu_info_s info{PHONES[0], 256, static_cast<unsigned>(Code(Pick(CODES.size())))};
        if (now.mtu.callback != nullptr) {
            now.mtu.callback(now.client, &info, now.mtu.userData);
        }
        return true;
    }
    case 'N': {
        std::string text = TEXTS[Pick(TEXTS.size())];
        if (now.value.callback != nullptr) {
            now.value.callback(now.characteristic, text.data(), static_cast<int>(text.size()), now.value.userData);
        }
        return true;
    }
    case 'W': {
        const int code = Code(Pick(CODES.size()));
        if (now.write.callback != nullptr) {
            now.write.callback(code, now.characteristic, now.write.userData);
        }
        return true;
    }
    case 'k':
        m_kept = now;
        return true;
    case 'l':
        CallKept();
        return true;
    default:
        return false;
    }
}

void Player::SetBluetooth(bt_adapter_state_e state, bool isReported)
{
    simulator::SetAdapterState(state, isReported);
    m_isBluetoothOn = state == BT_ADAPTER_ENABLED;
}

void Player::SetPower(int state)
{
    simulator::SetPowerState(state);
    m_isPowerGood = state == 0 || state == 1 || state == 2 || state == 4;
}

void Player::AddPhone(const std::string& address, std::size_t behaviour)
{
    const std::string id = UNIQUE_ID;
    simulator::Phone phone = simulator::MirroringPhone(address, "Phone", id);
    const simulator::Phone kov = simulator::KovPhone(address, "Phone", id);
    const simulator::Phone nodLink = simulator::NodLinkPhone(address, true, false);
    if (behaviour % 3 == 1) {
        phone.advertising = kov.advertising;
    } else if (behaviour % 3 == 2) {
        phone.advertising = nodLink.advertising;
    }
    phone.services.push_back(kov.services.at(0));
    phone.services.push_back(nodLink.services.at(0));
    for (simulator::Service& service : phone.services) {
        // Silent at last: a phone that asks again and again would take the ten seconds of a request.
        service.characteristics.at(0).answers = {
            Answering(behaviour), {.text = "Success"}, {.kind = Answer::Kind::silent}};
    }
    Bend(phone, behaviour);
    simulator::AddPhone(phone);
}

void Player::Advertise()
{
    const auto make = [](std::size_t kind) {
        switch (kind) {
        case 0:
            return simulator::MirroringPhone(ADDRESS, "Phone", UNIQUE_ID);
        case 1:
            return simulator::KovPhone(ADDRESS, "Phone", UNIQUE_ID);
        case 2:
            return simulator::NodLinkPhone(ADDRESS, true, false);
        default:
            return simulator::NodLinkAvDevice(ADDRESS);
        }
    };
    const simulator::Phone phone = make(Pick(4));
    simulator::DeliverAdvertisement(ADDRESS, -60, phone.advertising, phone.scanResponse);
}

Player::Registrations Player::Register()
{
    Registrations all;
    all.scan = simulator::ScanRegistration();
    all.adapter = simulator::AdapterRegistration();
    all.connection = simulator::ConnectionRegistration();
    all.powerOff = simulator::PowerOffRegistration();
    all.ambient = simulator::AmbientPowerOffRegistration();
    all.mtu = simulator::MtuRegistration();
    all.client = simulator::ClientHandle();
    for (const char* uuid : CHARACTERISTICS) {
        if (simulator::CharacteristicHandle(uuid) != nullptr) {
            all.characteristic = simulator::CharacteristicHandle(uuid);
            all.value = simulator::ValueRegistration(uuid);
            all.write = simulator::WriteRegistration(uuid);
        }
    }
    return all;
}

// As when the platform had begun each report before it was un-registered.
void Player::CallKept()
{
    const auto call = [](const auto& registration, auto... arguments) {
        if (registration.callback != nullptr) {
            registration.callback(arguments..., registration.userData);
        }
    };
    const Registrations kept = m_kept;
    char answer[] = "Success";
    const bt_gatt_client_att_mtu_info_s mtu{PHONES[0], 256, 0};
    const device_power_off_info_s suspend{0x40000000U};
    call(kept.write, Code(1), kept.characteristic);
    call(kept.value, kept.characteristic, answer, static_cast<int>(sizeof(answer) - 1));
    call(kept.mtu, kept.client, &mtu);
    call(kept.connection, 0, false, PHONES[0]);
    call(kept.connection, 0, true, PHONES[0]);
    call(kept.adapter, 0, BT_ADAPTER_ENABLED);
    call(kept.powerOff, &suspend);
    call(kept.ambient, &suspend);
}

}  // namespace lyn::fuzz
