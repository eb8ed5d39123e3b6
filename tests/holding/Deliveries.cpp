// SPDX-License-Identifier: Apache-2.0
#include "holding/Deliveries.h"

#include <array>

#include "lifetime/Phones.h"
#include "lyn_simulator/simulator.h"
#include "support/Clock.h"

namespace lyn::test {
namespace {

constexpr std::uint32_t kSuspend = 0x40000000;

/// The one characteristic of the phone that has one.
std::string Characteristic()
{
    for (const simulator::Phone& phone : simulator::Phones()) {
        if (!phone.services.empty() && !phone.services[0].characteristics.empty()) {
            return phone.services[0].characteristics[0].uuid;
        }
    }
    return "";
}

/// Calls what is registered now with these arguments.
template <typename Callback, typename... Arguments>
std::function<void()> Report(const simulator::Registration<Callback>& registration, Arguments... arguments)
{
    if (registration.callback == nullptr) {
        return {};
    }
    return [registration, arguments...] { registration.callback(arguments..., registration.userData); };
}

std::function<void()> FindPhones()
{
    if (simulator::ScanRegistration().callback == nullptr) {
        return {};
    }
    return [] {
        for (const simulator::Phone& phone : simulator::Phones()) {
            simulator::DeliverAdvertisement(phone.address, phone.rssi, phone.advertising, phone.scanResponse);
        }
    };
}

std::function<void()> ReportLink(bool isUp)
{
    return Report(simulator::ConnectionRegistration(), 0, isUp, kPhone);
}

std::function<void()> ChangeMtu()
{
    static const bt_gatt_client_att_mtu_info_s info{kPhone, 256, 0};
    return Report(simulator::MtuRegistration(), simulator::ClientHandle(), &info);
}

std::function<void()> EndWrite()
{
    const std::string uuid = Characteristic();
    return Report(simulator::WriteRegistration(uuid), 0, simulator::CharacteristicHandle(uuid));
}

std::function<void()> Notify()
{
    static std::array<char, 8> value{"Success"};
    const std::string uuid = Characteristic();
    const int length = static_cast<int>(value.size()) - 1;
    return Report(simulator::ValueRegistration(uuid), simulator::CharacteristicHandle(uuid), value.data(), length);
}

std::function<void()> ReportAdapter(bt_adapter_state_e state)
{
    return Report(simulator::AdapterRegistration(), 0, state);
}

std::function<void()> ReportPower(const simulator::Registration<device_power_off_cb>& registration)
{
    static const device_power_off_info_s info{kSuspend};
    return Report(registration, &info);
}

std::function<void()> RunMainLoop()
{
    return simulator::Settle;
}

std::function<void()> LetTimeoutElapse()
{
    if (ArmedTimeouts().empty()) {
        return {};
    }
    return [] {
        ElapseTimeout();
        simulator::Settle();
    };
}

constexpr auto kLinkIsUp = [] { return ReportLink(true); };
constexpr auto kLinkIsDown = [] { return ReportLink(false); };
constexpr auto kAdapterIsOff = [] { return ReportAdapter(BT_ADAPTER_DISABLED); };
constexpr auto kAdapterIsOn = [] { return ReportAdapter(BT_ADAPTER_ENABLED); };
constexpr auto kIsSuspended = [] { return ReportPower(simulator::PowerOffRegistration()); };
constexpr auto kIsAmbientOff = [] { return ReportPower(simulator::AmbientPowerOffRegistration()); };

constexpr Delivery kPhoneFound{"found phone", false, FindPhones};
constexpr Delivery kLinkUp{"link up", false, kLinkIsUp};
constexpr Delivery kLinkDown{"link down", false, kLinkIsDown};
constexpr Delivery kMtu{"MTU", false, ChangeMtu};
constexpr Delivery kWritten{"end of write", false, EndWrite};
constexpr Delivery kValue{"value", false, Notify};
constexpr Delivery kMainLoop{"main loop", true, RunMainLoop};
constexpr Delivery kTimeout{"time-out", true, LetTimeoutElapse};
constexpr Delivery kAdapterOff{"Bluetooth off", true, kAdapterIsOff};
constexpr Delivery kAdapterOn{"Bluetooth on", true, kAdapterIsOn};
constexpr Delivery kSuspended{"suspend", true, kIsSuspended};
constexpr Delivery kAmbientOff{"ambient off", true, kIsAmbientOff};

}  // namespace

const std::vector<Delivery>& AnswerFirst()
{
    static const std::vector<Delivery> deliveries = {kPhoneFound, kLinkUp,     kMtu,      kWritten,   kValue,
                                                     kLinkDown,   kMainLoop,   kTimeout,  kSuspended, kAdapterOn,
                                                     kAmbientOff, kAdapterOff, kAdapterOn};
    return deliveries;
}

const std::vector<Delivery>& TimeoutFirst()
{
    static const std::vector<Delivery> deliveries = {kTimeout,    kPhoneFound, kLinkUp,   kMtu,       kWritten,
                                                     kValue,      kLinkDown,   kMainLoop, kSuspended, kAdapterOn,
                                                     kAmbientOff, kAdapterOff, kAdapterOn};
    return deliveries;
}

void LetAllCome()
{
    simulator::Settle();
    while (ElapseTimeout()) {
        simulator::Settle();
    }
}

}  // namespace lyn::test
