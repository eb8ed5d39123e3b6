// SPDX-License-Identifier: Apache-2.0
//
// Plays one input of the sequence fuzzer. Each step is a letter, and some letters take an argument: a digit,
// or any byte. Bytes that are no letter of the list stand for one, so that every input is a sequence.
//
//   c SERVICE  create (mirroring, kov, nodlink, dummy, an unknown one, a null name, into a handle in use)
//   d          destroy                          h WHICH  the next call gets a null (1) or a stale (2) handle
//   s  j       scan, with serialization         x        stop the scan
//   r PHONE    request                          R PHONE EXTRA  with extra data
//   a INTERVAL advertise                        A        stop advertising
//   v VERSION  set the NodLink version          t        get the NodLink type
//   e RESULT   error string                     ! ACTIONS  what the next callback of the application does
//   b  B       Bluetooth off, on                q IS_ON  the same, unreported
//   p FLAGS    power-off event                  m        ambient power-off
//   P STATE    power state                      z VALUE  listen channel setting
//   g PHONE    a phone goes                     G PHONE BEHAVIOUR  and comes, with this behaviour
//   y KIND     an advertisement                 w        the oldest time-out elapses
//   .          the main loop settles            ,        one iteration of the main loop
//   f CALL     this platform call fails         F NTH    the nth platform call fails
//   n CALL     it gives a null text             0        calls work again
//   C CODE IS_CONNECTED PHONE  a report about a link, by hand
//   M STATUS   an MTU report                    N TEXT   a notification
//   W CODE     a write's completion             k  l     keep all registrations; call the kept ones
#pragma once

#include <array>
#include <string>

#include "Ledger.h"
#include "Room.h"

namespace lyn::fuzz {

/// The phones of a sequence; the last one is not there at its beginning.
inline constexpr std::array<const char*, 5> PHONES = {
    "AA:00:00:00:00:00", "AA:00:00:00:00:01", "AA:00:00:00:00:02", "AA:00:00:00:00:03", "AA:00:00:00:00:04"};

class Player {
public:
    explicit Player(Input input) : m_input(input), m_ledger(*this) {}
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    void Play();

private:
    struct Registrations {
        simulator::Registration<bt_adapter_le_scan_result_cb> scan;
        simulator::Registration<bt_adapter_state_changed_cb> adapter;
        simulator::Registration<bt_gatt_connection_state_changed_cb> connection;
        simulator::Registration<device_power_off_cb> powerOff;
        simulator::Registration<device_power_off_cb> ambient;
        simulator::Registration<bt_gatt_client_att_mtu_changed_cb> mtu;
        simulator::Registration<bt_gatt_client_characteristic_value_changed_cb> value;
        simulator::Registration<bt_gatt_client_request_completed_cb> write;
        bt_gatt_client_h client = nullptr;
        bt_gatt_h characteristic = nullptr;
    };

    void Step();
    bool PlayCall(char step);
    bool PlayWork(char step);
    bool PlayRest(char step);
    /// A call with a handle that is not alive.
    void PlayRefused(char step, bool isStale);
    lyn_error_e CallWith(lyn_service_h handle, char step);
    bool PlayEvent(char step);
    bool PlayTv(char step);
    bool PlayFault(char step);
    bool PlayReport(char step);
    void RequireNothingLeft() const;
    void Finish();

    std::size_t Pick(std::size_t count);
    const char* PickPhone();

    void Create();
    void CreateService(const char* name, bool isHandleInUse);
    lyn_error_e ExpectCreation(const char* name, bool isHandleInUse, bool isAlone) const;
    void Destroy();
    void StartScan(bool isSerialized);
    void StopScan();
    void Request(const char* phone, const char* extraData);
    void StartAdvertise();
    void StopAdvertise();
    void SetVersion();
    void GetType();
    void GetErrorString();
    void React(unsigned actions);

    void AddPhone(const std::string& address, std::size_t behaviour);
    void Advertise();
    void SetBluetooth(bt_adapter_state_e state, bool isReported);
    void SetPower(int state);
    static Registrations Register();
    void CallKept();
    /// Whether the platform may refuse a call.
    bool MayFail() const { return m_hasFaults || !m_isBluetoothOn; }

    static void OnState(lyn_state_e state, void* userData);
    static void OnFound(const lyn_device_info_t* info, void* userData);
    static void OnJson(const char* json, void* userData);
    static void OnResult(lyn_request_initiating_result_e result, void* userData);

    Input m_input;
    Ledger m_ledger;
    Registrations m_kept;
    lyn_service_h m_stale = nullptr;
    std::size_t m_handleOfNextCall = 0;
    unsigned m_reaction = 0;
    bool m_hasFaults = false;
    bool m_mayLeave = false;  ///< a release may have been made to fail
    bool m_isBluetoothOn = true;
    bool m_isPowerGood = true;
};

}  // namespace lyn::fuzz
