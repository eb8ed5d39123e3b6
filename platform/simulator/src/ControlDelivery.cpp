// SPDX-License-Identifier: Apache-2.0
#include "Simulator.h"

namespace lyn::simulator {

namespace {

template <typename Body>
auto Locked(Body body)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    return body(simulator);
}

/// The characteristic of the client made last, or null.
const Attribute* LatestCharacteristic(Simulator& simulator, const std::string& uuid)
{
    return simulator.clients.FindCharacteristic(simulator.clients.LatestCharacteristic(uuid));
}

/// Wakes the main context from time to time, so that a condition that comes true elsewhere is seen.
class Alarm {
public:
    Alarm() : m_source(g_timeout_source_new(kEveryMs))
    {
        g_source_set_callback(
            m_source, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
        g_source_attach(m_source, nullptr);
    }

    ~Alarm()
    {
        g_source_destroy(m_source);
        g_source_unref(m_source);
    }

    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

private:
    static constexpr unsigned kEveryMs = 10;

    GSource* m_source;
};

}  // namespace

Registration<bt_adapter_le_scan_result_cb> ScanRegistration()
{
    return Locked([](Simulator& simulator) { return simulator.radio.registration.Shown(); });
}

Registration<bt_adapter_state_changed_cb> AdapterRegistration()
{
    return Locked([](Simulator& simulator) { return simulator.adapter.registration.Shown(); });
}

Registration<bt_gatt_connection_state_changed_cb> ConnectionRegistration()
{
    return Locked([](Simulator& simulator) { return simulator.links.registration.Shown(); });
}

Registration<device_power_off_cb> PowerOffRegistration()
{
    return Locked([](Simulator& simulator) { return simulator.power.powerOff.Shown(); });
}

Registration<device_power_off_cb> AmbientPowerOffRegistration()
{
    return Locked([](Simulator& simulator) { return simulator.power.ambientPowerOff.Shown(); });
}

Registration<bt_gatt_client_att_mtu_changed_cb> MtuRegistration()
{
    return Locked([](Simulator& simulator) {
        const Client* client = simulator.clients.Find(simulator.clients.Latest());
        return client != nullptr ? client->mtu.Shown() : Registration<bt_gatt_client_att_mtu_changed_cb>{};
    });
}

Registration<bt_gatt_client_characteristic_value_changed_cb> ValueRegistration(const std::string& uuid)
{
    return Locked([&](Simulator& simulator) {
        const Attribute* found = LatestCharacteristic(simulator, uuid);
        return found != nullptr ? found->notification.Shown()
                                : Registration<bt_gatt_client_characteristic_value_changed_cb>{};
    });
}

Registration<bt_gatt_client_request_completed_cb> WriteRegistration(const std::string& uuid)
{
    return Locked([&](Simulator& simulator) {
        const Attribute* found = LatestCharacteristic(simulator, uuid);
        return found != nullptr ? found->write.Shown() : Registration<bt_gatt_client_request_completed_cb>{};
    });
}

bt_gatt_client_h ClientHandle()
{
    return Locked([](Simulator& simulator) { return simulator.clients.Latest(); });
}

bt_gatt_h CharacteristicHandle(const std::string& uuid)
{
    return Locked([&](Simulator& simulator) { return simulator.clients.LatestCharacteristic(uuid); });
}

void DeliverAdvertisement(const std::string& address, int rssi, const std::optional<Bytes>& advertising,
                          const std::optional<Bytes>& scanResponse)
{
    const auto scan = Locked([](Simulator& simulator) { return simulator.radio.registration.id; });
    Simulator::Instance().radio.Deliver(
        {address, rssi, advertising ? &*advertising : nullptr, scanResponse ? &*scanResponse : nullptr}, scan);
}

bool RunUntil(const std::function<bool()>& done, int limitMs)
{
    const Alarm alarm;
    const gint64 limitUs = Loop::Now() + gint64{limitMs} * 1000;
    while (!done()) {
        if (Loop::Now() >= limitUs) {
            return false;
        }
        g_main_context_iteration(nullptr, TRUE);
    }
    return true;
}

void Settle()
{
    Locked([](Simulator& simulator) { simulator.loop.HoldBackground(); });
    const auto awaits = [] { return Locked([](Simulator& simulator) { return simulator.loop.HasAwaited(); }); };
    while (awaits() || g_main_context_pending(nullptr)) {
        g_main_context_iteration(nullptr, awaits());
    }
    Locked([](Simulator& simulator) { simulator.loop.ReleaseBackground(); });
}

Counts Alive()
{
    return Locked([](Simulator& simulator) {
        const auto one = [](const auto& slot) { return slot.id != 0 ? 1 : 0; };
        Counts counts;
        counts.clients = simulator.clients.Count();
        counts.links = simulator.links.Count();
        counts.registrations = simulator.clients.Registrations() + one(simulator.radio.registration) +
                               one(simulator.adapter.registration) + one(simulator.links.registration) +
                               one(simulator.power.powerOff) + one(simulator.power.ambientPowerOff);
        counts.productInits = simulator.adapter.productInits;
        counts.wifiInits = simulator.wifi.inits;
        counts.wifiDirectInits = simulator.wifi.directInits;
        counts.scanning = simulator.radio.IsScanning();
        counts.boosted = simulator.adapter.boosted;
        return counts;
    });
}

}  // namespace lyn::simulator
