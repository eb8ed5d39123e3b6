// SPDX-License-Identifier: Apache-2.0
#include "FakeBluez.h"

#include <algorithm>
#include <utility>

namespace lyn::linux_tests {

namespace {

constexpr const char* kAdapter = "org.bluez.Adapter1";
constexpr const char* kDevice = "org.bluez.Device1";
constexpr const char* kService = "org.bluez.GattService1";
constexpr const char* kCharacteristic = "org.bluez.GattCharacteristic1";
constexpr const char* kFailed = "org.bluez.Error.Failed";
constexpr guint16 kPhoneCompany = 117;
constexpr int kAdvertIntervalMs = 10;

std::string AdapterPath(const std::string& name)
{
    return "/org/bluez/" + name;
}

GVariant* Bytes(const std::string& bytes)
{
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
}

}  // namespace

FakeBluez::FakeBluez(std::string adapter) : FakeDaemon("org.bluez"), m_adapter(std::move(adapter))
{
    HandleAdapters();
    HandleDevices();
    HandleCharacteristics();
    AddAdapter(m_adapter, "02:00:00:00:00:10", true);
    Return();
}

FakeBluez::~FakeBluez()
{
    FakeDaemon::Die();
}

void FakeBluez::AddAdapter(const std::string& name, const std::string& address, bool powered)
{
    Add(AdapterPath(name), kAdapter,
        {{"Address", g_variant_new_string(address.c_str())},
         {"Powered", g_variant_new_boolean(powered)},
         {"Discovering", g_variant_new_boolean(FALSE)}});
}

void FakeBluez::RemoveAdapter(const std::string& name)
{
    const std::lock_guard lock(m_mutex);
    CancelConnects("le-connection-canceled");
    Remove(AdapterPath(name));
}

void FakeBluez::SetPowered(const std::string& name, bool powered)
{
    const std::lock_guard lock(m_mutex);
    for (const auto& [address, state] : m_phones) {
        if (!powered && DevicePath(address).starts_with(AdapterPath(name))) {
            TakeDown(address);
        }
    }
    if (!powered) {
        CancelConnects("le-connection-adapter-not-powered");
        Set(AdapterPath(name), kAdapter, "Discovering", g_variant_new_boolean(FALSE));
    }
    Set(AdapterPath(name), kAdapter, "Powered", g_variant_new_boolean(powered));
}

void FakeBluez::AddPhone(FakePhone phone)
{
    const std::lock_guard lock(m_mutex);
    const std::string address = phone.address;
    m_phones[address] = {std::move(phone), 0, {}};
    ShowDevice(address);
}

void FakeBluez::ChangePhone(const FakePhone& phone)
{
    const std::lock_guard lock(m_mutex);
    m_phones[phone.address].behaviour = phone;
}

void FakeBluez::ForgetPhone(const std::string& address)
{
    const std::lock_guard lock(m_mutex);
    for (const Call& call : std::exchange(m_phones[address].connecting, {})) {
        Refuse(call, kFailed, "le-connection-canceled");
    }
    Remove(DevicePath(address));
    Later(5, [this] {
        if (IsDiscovering()) {
            ShowPhonesInReach(AdapterPath(m_adapter));
        }
    });
}

void FakeBluez::DropLink(const std::string& address)
{
    const std::lock_guard lock(m_mutex);
    TakeDown(address);
}

void FakeBluez::ConnectByAnother(const std::string& address)
{
    const std::lock_guard lock(m_mutex);
    BringUp(address);
}

void FakeBluez::Notify(const std::string& address, const std::string& value)
{
    Set(CharacteristicPath(address), kCharacteristic, "Value", Bytes(value));
}

bool FakeBluez::IsConnected(const std::string& address) const
{
    return IsTrue(DevicePath(address), kDevice, "Connected");
}

bool FakeBluez::IsDiscovering() const
{
    return IsTrue(AdapterPath(m_adapter), kAdapter, "Discovering");
}

std::vector<std::string> FakeBluez::Written() const
{
    const std::lock_guard lock(m_mutex);
    return m_written;
}

std::string FakeBluez::DevicePath(const std::string& address) const
{
    const std::lock_guard lock(m_mutex);
    std::string name = address;
    std::replace(name.begin(), name.end(), ':', '_');
    const auto phone = m_phones.find(address);
    const std::string adapter = phone != m_phones.end() ? phone->second.behaviour.adapter : m_adapter;
    return AdapterPath(adapter) + "/dev_" + name;
}

std::string FakeBluez::CharacteristicPath(const std::string& address) const
{
    return DevicePath(address) + "/service0010/char0011";
}

void FakeBluez::Die()
{
    const std::lock_guard lock(m_mutex);
    FakeDaemon::Die();
    for (auto& [address, state] : m_phones) {
        state.connecting.clear();
        Remove(DevicePath(address));
    }
    Set(AdapterPath(m_adapter), kAdapter, "Discovering", g_variant_new_boolean(FALSE));
}

void FakeBluez::HandleAdapters()
{
    Handle("Adapter1.SetDiscoveryFilter", [this](const Call& call) { Answer(call); });
    Handle("Adapter1.StartDiscovery", [this](const Call& call) { Discover(call); });
    Handle("Adapter1.StopDiscovery", [this](const Call& call) { StopDiscovery(call); });
}

void FakeBluez::HandleDevices()
{
    Handle("Device1.Connect", [this](const Call& call) { Connect(call); });
    Handle("Device1.Disconnect", [this](const Call& call) { Disconnect(call); });
}

void FakeBluez::HandleCharacteristics()
{
    Handle("GattCharacteristic1.StartNotify", [this](const Call& call) {
        const FakePhone& phone = PhoneAt(call.path).behaviour;
        if (!phone.greeting.empty()) {
            Notify(phone.address, phone.greeting);
        }
        Answer(call);
    });
    Handle("GattCharacteristic1.StopNotify", [this](const Call& call) { Answer(call); });
    Handle("GattCharacteristic1.WriteValue", [this](const Call& call) { Write(call); });
}

void FakeBluez::Discover(const Call& call)
{
    if (!IsTrue(call.path, kAdapter, "Powered")) {
        Refuse(call, "org.bluez.Error.NotReady", "Resource Not Ready");
        return;
    }
    if (IsTrue(call.path, kAdapter, "Discovering")) {
        Refuse(call, "org.bluez.Error.InProgress", "Operation already in progress");
        return;
    }
    Set(call.path, kAdapter, "Discovering", g_variant_new_boolean(TRUE));
    Answer(call);
    ++m_discovery;
    ShowPhonesInReach(call.path);
    Advertise(call.path);
}

void FakeBluez::StopDiscovery(const Call& call)
{
    if (!IsTrue(call.path, kAdapter, "Discovering")) {
        Refuse(call, kFailed, "No discovery started");
        return;
    }
    Set(call.path, kAdapter, "Discovering", g_variant_new_boolean(FALSE));
    for (const auto& [address, state] : m_phones) {
        Unset(DevicePath(address), kDevice, "RSSI");
    }
    Answer(call);
}

/// For as long as this discovery is on.
void FakeBluez::Advertise(const std::string& adapterPath)
{
    ++m_advertRound;
    for (const auto& [address, state] : m_phones) {
        const FakePhone& phone = state.behaviour;
        const bool heard = phone.inReach && AdapterPath(phone.adapter) == adapterPath && Has(DevicePath(address));
        if (heard && !phone.adverts.empty()) {
            Hear(phone, phone.adverts[m_advertRound % phone.adverts.size()]);
        }
    }
    Later(kAdvertIntervalMs, [this, adapterPath, discovery = m_discovery] {
        if (discovery == m_discovery && IsTrue(adapterPath, kAdapter, "Discovering")) {
            Advertise(adapterPath);
        }
    });
}

void FakeBluez::Hear(const FakePhone& phone, const std::string& advert)
{
    GVariantBuilder companies;
    g_variant_builder_init(&companies, G_VARIANT_TYPE("a{qv}"));
    g_variant_builder_add(&companies, "{qv}", kPhoneCompany, Bytes(advert));
    Set(DevicePath(phone.address), kDevice,
        {{"RSSI", g_variant_new_int16(-50)}, {"ManufacturerData", g_variant_builder_end(&companies)}});
}

void FakeBluez::ShowPhonesInReach(const std::string& adapterPath)
{
    for (const auto& [address, state] : m_phones) {
        const bool near = state.behaviour.inReach && AdapterPath(state.behaviour.adapter) == adapterPath;
        if (near && !Has(DevicePath(address))) {
            ShowDevice(address);
        }
    }
}

void FakeBluez::Connect(const Call& call)
{
    State& phone = PhoneAt(call.path);
    const std::string address = phone.behaviour.address;
    if (!IsTrue(AdapterPath(phone.behaviour.adapter), kAdapter, "Powered")) {
        Refuse(call, "org.bluez.Error.NotReady", "Resource Not Ready");
    } else if (IsConnected(address)) {
        Refuse(call, "org.bluez.Error.AlreadyConnected", "Already Connected");
    } else if (!phone.connecting.empty()) {
        Refuse(call, "org.bluez.Error.InProgress", "Operation already in progress");
    } else if (!phone.behaviour.inReach) {
        phone.connecting.push_back(call);
    } else {
        Answer(call);
        BringUp(address);
    }
}

void FakeBluez::Disconnect(const Call& call)
{
    State& phone = PhoneAt(call.path);
    if (!phone.connecting.empty()) {
        for (const Call& pending : std::exchange(phone.connecting, {})) {
            Refuse(pending, kFailed, "br-connection-canceled");
        }
    } else if (!IsConnected(phone.behaviour.address)) {
        Refuse(call, "org.bluez.Error.NotConnected", "Not Connected");
        return;
    }
    TakeDown(phone.behaviour.address);
    Answer(call);
}

void FakeBluez::Write(const Call& call)
{
    State& phone = PhoneAt(call.path);
    GVariant* const value = g_variant_get_child_value(call.arguments, 0);
    gsize length = 0;
    const auto* const bytes = static_cast<const char*>(g_variant_get_fixed_array(value, &length, 1));
    m_written.emplace_back(bytes, length);
    g_variant_unref(value);
    Answer(call);
    const auto& answers = phone.behaviour.answers;
    if (!answers.empty()) {
        Notify(phone.behaviour.address, answers[std::min(phone.answered++, answers.size() - 1)]);
    }
}

void FakeBluez::CancelConnects(const std::string& reason)
{
    for (auto& [address, state] : m_phones) {
        for (const Call& call : std::exchange(state.connecting, {})) {
            Refuse(call, kFailed, reason);
        }
    }
}

void FakeBluez::ShowDevice(const std::string& address)
{
    Add(DevicePath(address), kDevice,
        {{"Address", g_variant_new_string(address.c_str())},
         {"Adapter", g_variant_new_object_path(AdapterPath(m_phones[address].behaviour.adapter).c_str())},
         {"Connected", g_variant_new_boolean(FALSE)},
         {"ServicesResolved", g_variant_new_boolean(FALSE)}});
}

void FakeBluez::BringUp(const std::string& address)
{
    const FakePhone& phone = m_phones[address].behaviour;
    const std::string device = DevicePath(address);
    const std::string service = device + "/service0010";
    Set(device, kDevice, "Connected", g_variant_new_boolean(TRUE));
    if (!phone.resolves) {
        return;
    }
    if (!phone.service.empty()) {
        Add(service, kService,
            {{"UUID", g_variant_new_string(phone.service.c_str())},
             {"Device", g_variant_new_object_path(device.c_str())}});
    }
    if (!phone.characteristic.empty()) {
        Add(CharacteristicPath(address), kCharacteristic,
            {{"UUID", g_variant_new_string(phone.characteristic.c_str())},
             {"Service", g_variant_new_object_path(service.c_str())},
             {"MTU", g_variant_new_uint16(static_cast<guint16>(phone.mtu))}});
    }
    Set(device, kDevice, "ServicesResolved", g_variant_new_boolean(TRUE));
}

void FakeBluez::TakeDown(const std::string& address)
{
    const std::string device = DevicePath(address);
    if (!IsConnected(address)) {
        return;
    }
    Set(device, kDevice, "ServicesResolved", g_variant_new_boolean(FALSE));
    Remove(device + "/service0010");
    Set(device, kDevice, "Connected", g_variant_new_boolean(FALSE));
}

FakeBluez::State& FakeBluez::PhoneAt(const std::string& path)
{
    const auto found = std::find_if(m_phones.begin(), m_phones.end(),
                                    [&](const auto& entry) { return path.starts_with(DevicePath(entry.first)); });
    g_assert_true(found != m_phones.end());
    return found->second;
}

}  // namespace lyn::linux_tests
