// SPDX-License-Identifier: Apache-2.0
#include "phone.h"

#include <utility>

#include "bluez/Bluez.h"
#include "failure.h"

namespace lynphone {

using lyn::linux_platform::BluezMethod;
using lyn::linux_platform::Bus;
using lyn::linux_platform::DevicePath;
using lyn::linux_platform::kAdapter;
using lyn::linux_platform::kBluez;
using lyn::linux_platform::kProperties;
using lyn::linux_platform::Reply;
using lyn::linux_platform::Timer;
using lyn::linux_platform::Variant;

namespace {

constexpr int kPowerLimitMs = 10'000;
/// bluetoothd shows its adapters some time after itself.
constexpr int kTries = 50;
constexpr unsigned kRetryMs = 200;

std::string Why(const char* what, const Reply& reply)
{
    return std::string(what) + ": " + reply.error->message;
}

}  // namespace

PhoneOnAir::PhoneOnAir(std::shared_ptr<Bus> bus, const std::string& adapter, lyn::simulator::Phone phone,
                       const Reports& reports, Failed failed)
    : m_bus(std::move(bus)),
      m_adapter(adapter),
      m_path("/org/bluez/" + adapter),
      m_phone(std::move(phone)),
      m_reports(reports),
      m_failed(std::move(failed)),
      m_peers(m_bus, m_path, [this](const std::string& address, bool connected) { OnLink(address, connected); }),
      m_application(m_bus, m_phone.services, m_peers, m_reports)
{
    m_bluetoothd = m_bus->OnOwner(kBluez, [this](const std::string& owner) { OnBluetoothd(owner); });
}

void PhoneOnAir::OnBluetoothd(const std::string& owner)
{
    ++m_begun;
    m_advertisement.reset();
    m_peers.LoseAll();
    if (owner.empty()) {
        m_reports.Waiting();
    } else {
        TurnOn(kTries);
    }
}

void PhoneOnAir::TurnOn(int tries)
{
    GVariant* const arguments = g_variant_new("(ssv)", kAdapter, "Powered", g_variant_new_boolean(TRUE));
    m_bus->Call(BluezMethod(m_path, kProperties, "Set"), arguments, kPowerLimitMs,
                [this, tries, begun = m_begun](const Reply& reply) {
                    if (begun != m_begun) {
                        return;
                    }
                    if (reply.Ok()) {
                        Serve();
                    } else if (tries > 0) {
                        m_retry = Timer(kRetryMs, [this, tries] { TurnOn(tries - 1); });
                    } else {
                        m_failed(Why(("the adapter " + m_adapter + " cannot be turned on").c_str(), reply));
                    }
                });
}

void PhoneOnAir::Serve()
{
    if (m_phone.services.empty()) {
        Advertise();  // bluetoothd takes no application without a service
        return;
    }
    m_application.Register(m_path, [this, begun = m_begun](const Reply& reply) {
        if (begun != m_begun) {
            return;
        }
        if (reply.Ok()) {
            Advertise();
        } else {
            m_failed(Why("the services are not taken", reply));
        }
    });
}

void PhoneOnAir::Advertise()
{
    try {
        m_advertisement =
            std::make_unique<Advertisement>(static_cast<std::uint16_t>(std::stoi(m_adapter.substr(3))), m_phone);
    } catch (const lynctl::Failure& failure) {
        m_failed(failure.what());
        return;
    }
    m_bus->Call(BluezMethod(m_path, kProperties, "Get"), g_variant_new("(ss)", kAdapter, "Address"), kPowerLimitMs,
                [this](const Reply& reply) {
                    std::string address;
                    if (reply.Ok() && g_variant_is_of_type(reply.values.get(), G_VARIANT_TYPE("(v)"))) {
                        const Variant boxed(g_variant_get_child_value(reply.values.get(), 0));
                        const Variant text(g_variant_get_variant(boxed.get()));
                        if (g_variant_is_of_type(text.get(), G_VARIANT_TYPE_STRING)) {
                            address = g_variant_get_string(text.get(), nullptr);
                        }
                    }
                    m_reports.Advertising(m_adapter, address, m_phone);
                });
}

void PhoneOnAir::OnLink(const std::string& address, bool connected)
{
    if (!connected) {
        m_drop = Timer();
        m_reports.Disconnected(address);
        return;
    }
    m_reports.Connected(address);
    if (m_phone.dropAfterConnectMs) {
        m_drop = Timer(static_cast<unsigned>(*m_phone.dropAfterConnectMs),
                       [this, path = DevicePath(m_path, address)] { m_peers.Disconnect(path); });
    }
}

}  // namespace lynphone
