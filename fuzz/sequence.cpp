// SPDX-License-Identifier: Apache-2.0
//
// Arbitrary sequences of C calls and platform events. Each byte of the input is one step; some steps take
// further bytes. Whatever happens, every accepted request has at most one result, nothing crashes, and a
// normal request on a fresh service works afterwards.
#include <array>

#include "Room.h"
#include "support/Clock.h"

namespace {

using namespace lyn;

constexpr std::array<const char*, 4> SERVICES = {"dummy", "mirroring", "nodlink", "kov"};
constexpr std::array<const char*, 4> ADDRESSES = {"AA:00:00:00:00:01", "AA:00:00:00:00:02", "AA:00:00:00:00:03",
                                                  "AA:00:00:00:00:04"};
constexpr std::array<const char*, 8> FALLIBLE = {"bt_gatt_connect",
                                                 "bt_gatt_client_create",
                                                 "bt_gatt_client_get_service",
                                                 "bt_gatt_set_value",
                                                 "bt_gatt_client_write_value",
                                                 "bt_adapter_le_start_scan",
                                                 "bt_adapter_le_stop_scan",
                                                 "vconf_set_int"};

class Player {
public:
    explicit Player(fuzz::Input input) : m_input(input) {}

    void Play()
    {
        AddPhones();
        for (int steps = 0; !m_input.IsEmpty() && steps < 100; ++steps) {
            Step();
        }
        Destroy();
        simulator::Settle();
        fuzz::Require(m_results <= m_accepted, "a request has one result at most");
        fuzz::Require(simulator::Alive().clients == 0, "no client is left behind");
        fuzz::Require(simulator::Alive().productInits == 0, "Bluetooth is given back");
    }

private:
    void AddPhones()
    {
        using simulator::Answer;
        auto answering = [](simulator::Phone phone, const Answer& answer) {
            phone.services.at(0).characteristics.at(0).answers = {answer};
            simulator::AddPhone(phone);
        };
        answering(simulator::MirroringPhone(ADDRESSES[0], "One", "0123456789abcdefghijkl"), {.text = "Success"});
        answering(simulator::KovPhone(ADDRESSES[1], "Two", "0123456789abcdefghijkl"),
                  {.kind = Answer::Kind::disconnect});
        answering(simulator::NodLinkPhone(ADDRESSES[2], true, false),
                  {.text = R"({"type":"fgApp","packageName":"x"})"});
        simulator::Phone refusing = simulator::MirroringPhone(ADDRESSES[3], "Four", "0123456789abcdefghijkl");
        refusing.connects = {{.code = 133}};
        simulator::AddPhone(refusing);
    }

    void Step()
    {
        switch (m_input.TakeByte() % 20) {
        case 0:
            Create();
            break;
        case 1:
            Destroy();
            break;
        case 2:
            lyn_start_scan(m_handle, OnFound, this);
            break;
        case 3:
            lyn_start_scan_with_serialization(m_handle, OnJson, this);
            break;
        case 4:
            lyn_stop_scan(m_handle);
            break;
        case 5:
        case 6:
            Request();
            break;
        case 7:
            lyn_start_advertise(m_handle, static_cast<lyn_adv_interval_e>(m_input.TakeByte() - 2));
            break;
        case 8:
            lyn_stop_advertise(m_handle);
            break;
        case 9:
            lyn_set_nodlink_version(m_handle, (m_input.TakeByte() & 1U) != 0 ? "2.0" : "3.0");
            break;
        case 10:
            ReadBack();
            break;
        case 11:
            simulator::SetAdapterState(BT_ADAPTER_DISABLED);
            break;
        case 12:
            simulator::SetAdapterState(BT_ADAPTER_ENABLED);
            break;
        case 13:
            simulator::PowerOff((m_input.TakeByte() & 1U) != 0 ? 0x40000000U : 0U);
            break;
        case 14:
            simulator::AmbientPowerOff();
            break;
        case 15:
            simulator::RemovePhone(TakeAddress());
            break;
        case 16:
            test::ElapseTimeout();
            break;
        case 17:
            simulator::FailCall(FALLIBLE[m_input.TakeByte() % FALLIBLE.size()], -1);
            break;
        case 18:
            m_onReport = m_input.TakeByte();
            break;
        default:
            simulator::Settle();
            break;
        }
    }

    void Create() { lyn_create_service(&m_handle, SERVICES[m_input.TakeByte() % SERVICES.size()], OnState, this); }

    void Destroy()
    {
        lyn_service_h handle = m_handle;
        m_handle = nullptr;
        lyn_destroy_service(handle);
    }

    void Request()
    {
        m_accepted += lyn_request_initiating(m_handle, TakeAddress(), OnResult, this) == LYN_ERROR_NONE ? 1 : 0;
    }

    void ReadBack()
    {
        nod_link_type type = 0;
        lyn_get_nodlink_type(m_handle, &type);
        const auto result = static_cast<lyn_request_initiating_result_e>(m_input.TakeByte());
        fuzz::Require(lyn_get_request_initiating_error_string(m_handle, result) != nullptr, "a text is there");
    }

    const char* TakeAddress() { return ADDRESSES[m_input.TakeByte() % ADDRESSES.size()]; }

    // What the application does from inside its next device or result callback.
    void React()
    {
        const unsigned action = m_onReport;
        m_onReport = 0;
        if ((action & 1U) != 0) {
            Destroy();
        }
        if ((action & 2U) != 0) {
            Create();
        }
        if ((action & 4U) != 0) {
            Request();
        }
        if ((action & 8U) != 0) {
            lyn_stop_scan(m_handle);
        }
    }

    static void OnState(lyn_state_e state, void* userData)
    {
        auto& player = *static_cast<Player*>(userData);
        fuzz::Require(state >= LYN_STATE_READY && state <= LYN_STATE_NOT_READY, "a state is known");
        if ((player.m_onReport & 16U) != 0) {
            player.m_onReport = 0;
            player.Destroy();
        }
    }
    static void OnFound(const lyn_device_info_t* /*info*/, void* userData)
    {
        static_cast<Player*>(userData)->React();
    }
    static void OnJson(const char* /*json*/, void* userData) { static_cast<Player*>(userData)->React(); }
    static void OnResult(lyn_request_initiating_result_e /*result*/, void* userData)
    {
        auto& player = *static_cast<Player*>(userData);
        ++player.m_results;
        player.React();
    }

    fuzz::Input m_input;
    lyn_service_h m_handle = nullptr;
    unsigned m_onReport = 0;
    int m_accepted = 0;
    int m_results = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::PrepareTv();
    Player(fuzz::Input(data, size)).Play();

    fuzz::PrepareTv();
    simulator::Phone phone = simulator::MirroringPhone(ADDRESSES[0], "One", "0123456789abcdefghijkl");
    phone.services.at(0).characteristics.at(0).answers = {simulator::Answer{.text = "Success"}};
    simulator::AddPhone(phone);
    fuzz::App("mirroring").RequestAndRequireOneResult(ADDRESSES[0], "");
    return 0;
}
