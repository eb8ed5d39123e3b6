// SPDX-License-Identifier: Apache-2.0
//
// The control side of the simulated TV: what a test, or a program that wants to steer the simulation
// while it runs, may ask of it. The platform side is lyn_platform/*.h, as on every platform.
//
// Threads: every function may be called from any thread, unless it says "main loop thread": those run
// or deliver callbacks and belong to the thread that runs the GLib default main context. Whatever the
// simulation delivers, it delivers from that context, in the order of time; what comes without a delay
// comes in the order in which it was caused.
// Errors: a bad argument throws std::invalid_argument, a bad scenario throws ScenarioError, a file that
// cannot be written throws std::runtime_error.
//
// Example: a phone that answers "Success".
//
//   using namespace lyn::simulator;
//   Reset();
//   Phone phone = MirroringPhone("AA:BB:CC:DD:EE:01", "Kitchen", "0123456789abcdefghijkl");
//   phone.services[0].characteristics[0].answers = {Answer{.text = "Success"}};
//   AddPhone(phone);
//   ... lyn_start_scan(), lyn_request_initiating() ...
//   RunUntil([&] { return done; });
//   for (const Call& call : Journal()) std::cout << call.function << "(" << call.arguments << ")\n";
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

#include "lyn_platform/bluetooth.h"
#include "lyn_platform/gatt.h"
#include "lyn_platform/power.h"

namespace lyn::simulator {

using Bytes = std::vector<std::uint8_t>;

// ---- Scenarios -------------------------------------------------------------------------------------

/// A scenario that cannot be used. what() is "FILE:LINE: FIELD: reason".
class ScenarioError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A TV with its default settings, Bluetooth on, no phones; journal, faults, logs and registrations empty.
/// Delayed events that were still to come are dropped. Main loop thread.
///
/// The default TV: addresses 02:00:00:00:00:01 (Bluetooth) and 02:00:00:00:00:02 (Wi-Fi Direct), access point
/// 02:00:00:00:00:FE at 2437 MHz, power state 1, no files, and these keys:
///   db/menu/network/devicename/tv_name                           "Living Room TV"
///   memory/menu/network/screenmirroring/p2p_listen_channel       0
///   memory/wifi/frequency                                        2437
///   memory/acm/networkspeaker_status                             0
///   com.calyxon/featureconf/devicename.icon_index                1   (system information)
///   com.calyxon/featureconf/devicename.device_type_index         12  (system information)
void Reset();

/// Reset(), then the TV and phones of a scenario. Nothing changes when the scenario is bad. Main loop thread.
void LoadScenarioFile(const std::string& path);
void LoadScenarioText(const std::string& json, const std::string& nameForErrors = "scenario");
/// The living room that a process starts with when LYN_SIMULATOR_SCENARIO names no file.
void LoadDefaultScenario();
/// The text of the default scenario, as LoadScenarioText() takes it.
std::string DefaultScenarioText();

// ---- Phones ----------------------------------------------------------------------------------------

/// One thing that a phone does with a message written to it. Answers are used in order, from one link to the
/// next, the last one again and again; a characteristic without answers stays silent.
struct Answer {
    enum class Kind { notify, silent, disconnect, writeError };
    Kind kind = Kind::notify;
    std::string text;               ///< bytes of the notification
    int delayMs = 0;                ///< after the write (after the write's completion for notify)
    int repeat = 1;                 ///< notifications sent
    int code = 0;                   ///< writeError: result of the write; disconnect: result of the report
    bool beforeCompletion = false;  ///< notify, disconnect: comes before the write's completion is reported
};

struct Characteristic {
    std::string uuid;
    bool notifies = true;  ///< false: asking for notifications fails
    bool writable = true;  ///< false: beginning a write fails
    std::vector<Answer> answers;
    bool answersPerLink = false;  ///< true: each link begins with the first answer again
};

struct Service {
    std::string uuid;
    std::vector<Characteristic> characteristics;
};

/// How one connect attempt ends. Used in order, the last one again and again; none means success.
struct ConnectOutcome {
    int code = 0;
    int delayMs = 0;
};

struct Phone {
    std::string address;  ///< in upper case when it comes back
    int rssi = -50;
    int rssiJitter = 0;                 ///< each advertisement's RSSI is off by at most this much
    bool hasAdvertising = true;         ///< false: the packet is reported as missing
    Bytes advertising;                  ///< raw advertising packet
    std::optional<Bytes> scanResponse;  ///< raw scan response, if the phone answers scan requests
    int intervalMs = 100;               ///< between two advertisements while a scan runs
    int limit = 0;                      ///< advertisements in one scan, 0 for no limit
    std::vector<ConnectOutcome> connects;
    unsigned maxMtu = 517;
    unsigned mtuStatus = 0;
    int mtuDelayMs = 0;
    std::vector<Service> services;
    std::optional<int> dropAfterConnectMs;  ///< the link is lost this long after it came up
    int dropCode = 0;                       ///< result of the report of that loss
    int disconnectDelayMs = 0;              ///< from bt_gatt_disconnect() to its report
    int disconnectCode = 0;                 ///< result of that report
    int joinsAtMs = 0;                      ///< the phone comes this long after it was added
    std::optional<int> leavesAtMs;          ///< ... and goes; a link of a phone that goes is lost
};

/// Adds a phone, or replaces the one with the same address: its script begins anew, a link to it stays.
void AddPhone(const Phone& phone);
/// Removes a phone. Its link is lost, with the phone's dropCode; a connect on its way fails with 0xC0000001.
void RemovePhone(const std::string& address);
std::vector<Phone> Phones();
/// The latest 1000 messages written to a phone since the last Reset(), as they arrived, oldest first.
std::vector<std::string> MessagesTo(const std::string& address);

/// Raw bytes of the feature layouts, for tests that start from a good phone and bend it. A unique id has 22
/// bytes. The phones have their feature's one service with its one characteristic, and no answers yet.
Bytes AdStructure(std::uint8_t type, const Bytes& value);
Bytes ManufacturerData(std::uint16_t company, const Bytes& value);
Phone MirroringPhone(const std::string& address, const std::string& name, const std::string& uniqueId);
Phone KovPhone(const std::string& address, const std::string& name, const std::string& uniqueId);
Phone NodLinkPhone(const std::string& address, bool mirroringAvailable, bool version3);
Phone NodLinkAvDevice(const std::string& address);

// ---- The TV ----------------------------------------------------------------------------------------

/// Changes the adapter state; `report` also delivers it to the registered callback from the main loop.
/// Turned off, the adapter ends the scan without a word, loses its links with 0xFE400104, fails connects on
/// their way, and refuses scans and connects until it is on again.
void SetAdapterState(bt_adapter_state_e state, bool report = true);
void SetAdapterAddress(const std::optional<std::string>& address);  ///< none: success with a null text
/// A connect that has not ended this long after its beginning fails with 0xC0000001 (default 30000).
void SetConnectDeadline(int ms);
void SetPowerState(int state);
/// Delivers a power-off event from the main loop.
void PowerOff(std::uint32_t flags);
void AmbientPowerOff();
void SetSetting(const std::string& key, int value);
void SetSetting(const std::string& key, const std::string& value);
void RemoveSetting(const std::string& key);
std::optional<int> IntSetting(const std::string& key);
std::optional<std::string> TextSetting(const std::string& key);
void SetSystemInfo(const std::string& key, std::optional<int> value);
struct AccessPoint {
    std::optional<std::string> bssid;  ///< none: success with a null text
    int frequency = 2437;              ///< MHz
};
void SetAccessPoint(const std::optional<AccessPoint>& ap);
void SetWifiDirectAddress(const std::optional<std::string>& mac);  ///< none: success with a null text
/// Folder put before every absolute path of the TV's files. Reset() makes a fresh, empty one.
std::string FilePrefix();
void SetFilePrefix(const std::string& folder);
/// Writes a file of the TV, below FilePrefix().
void WriteFile(const std::string& path, const std::string& content);

// ---- Journal and faults ----------------------------------------------------------------------------

/// One call of a platform function, in the order in which the calls began.
struct Call {
    std::string function;
    std::string arguments;  ///< texts in double quotes, numbers, true and false, comma and blank between;
                            ///< handles and user data are left out; out values as "-> value" at the end
    int result = 0;
    std::uint64_t thread = 0;
};
/// Log calls are not in the journal; they are in Log(). The journal begins with the first Reset() or
/// LoadScenario...(), and keeps the latest 200000 calls.
std::vector<Call> Journal();
void ClearJournal();
/// Switches the journal off, or on again; every Reset() switches it on.
void SetJournal(bool enabled);
/// "function(arguments)" of every call, for comparisons in tests.
std::vector<std::string> JournalText();

/// Makes the nth coming call of a function (1 is the next) fail with a code, having done nothing else.
/// nth 0: every coming call. Functions that return a pointer return null. Faults add up.
void FailCall(const std::string& function, int code, int nth = 1);
/// Makes the nth coming call of a function that gives a text out succeed with a null text. (Manufacturer data
/// counts as a text.)
void NullText(const std::string& function, int nth = 1);
/// Makes the nth coming platform call, whatever its function, fail with a code. Counted are the calls that the
/// journal shows.
void FailAnyCall(int code, int nth);
void ClearFaults();

/// One end of a platform call: its work is about to begin, or has been done.
struct CallMoment {
    enum class Phase { before, after };

    std::string function;
    Phase phase = Phase::before;
    std::string text;  ///< of platform_log_print: the line; else empty
};
/// Tells `listener` of both ends of every platform call that begins from now on, log calls and the opening of the
/// kernel log included; none for nobody. It is told on the calling thread, while the simulation holds no lock,
/// and by several threads at once: it may block the thread for as long as it likes, and use this interface
/// meanwhile. Its own platform calls are told, too. It must not throw. A Reset() leaves it in place.
void SetCallListener(const std::function<void(const CallMoment&)>& listener);

// ---- Logs ------------------------------------------------------------------------------------------

struct LogLine {
    int priority = 0;
    std::string tag;
    std::string text;
};
/// The latest 200000 lines since the last Reset().
std::vector<LogLine> Log();
void ClearLog();
/// Keep lines of this priority and above (default 3); 7 keeps none and makes logging cheap.
void SetLogCapture(int lowestPriority);
/// Also gives every line to `listener` as it comes, on the thread that logs, whatever is kept; none for nobody.
/// The listener must not log. A Reset() leaves it in place.
void SetLogListener(const std::function<void(const LogLine&)>& listener);

enum class KernelLogMode { capture, refuseOpen, failWrite, discard };
/// `discard` takes lines and forgets them, for measurements.
void SetKernelLogMode(KernelLogMode mode);
/// Each captured line, bytes as written: everything that was written when this is called.
std::vector<std::string> KernelLog();

// ---- Delivering ------------------------------------------------------------------------------------

/// The registrations in force, so that a test can call any callback with any arguments (on the main
/// loop thread, as a platform would). A null callback means that nothing is registered.
template <typename Callback>
struct Registration {
    Callback callback = nullptr;
    void* userData = nullptr;
};
Registration<bt_adapter_le_scan_result_cb> ScanRegistration();
Registration<bt_adapter_state_changed_cb> AdapterRegistration();
Registration<bt_gatt_connection_state_changed_cb> ConnectionRegistration();
Registration<device_power_off_cb> PowerOffRegistration();
Registration<device_power_off_cb> AmbientPowerOffRegistration();
Registration<bt_gatt_client_att_mtu_changed_cb> MtuRegistration();  ///< of the client made last
Registration<bt_gatt_client_characteristic_value_changed_cb> ValueRegistration(const std::string& uuid);
Registration<bt_gatt_client_request_completed_cb> WriteRegistration(const std::string& uuid);
bt_gatt_client_h ClientHandle();                          ///< of the client made last, or null
bt_gatt_h CharacteristicHandle(const std::string& uuid);  ///< of the client made last, or null

/// Puts one scan result on the air now, through the registered callback. Main loop thread.
void DeliverAdvertisement(const std::string& address, int rssi, const std::optional<Bytes>& advertising,
                          const std::optional<Bytes>& scanResponse);

/// Runs the default main context until `done` is true. False when `limitMs` passed first. Main loop thread.
bool RunUntil(const std::function<bool()>& done, int limitMs = 5000);
/// Runs the default main context until the simulation has nothing left to deliver but advertisements and
/// nothing else is ready: delayed answers, reports and drops are waited for, and so is the first advertisement
/// of each phone in a scan. Further advertisements, phones that join or leave, and a scenario's timeline stand
/// still meanwhile. Time-outs of others are not waited for. Main loop thread.
void Settle();

/// What is alive, for tests that look for leaks.
struct Counts {
    int clients = 0;        ///< bt_gatt_client_create() without destroy
    int links = 0;          ///< links up or on their way
    int registrations = 0;  ///< callbacks registered
    int productInits = 0;   ///< bt_product_init() without deinit
    int wifiInits = 0;
    int wifiDirectInits = 0;
    bool scanning = false;
    bool boosted = false;
};
Counts Alive();

}  // namespace lyn::simulator

#pragma GCC visibility pop
