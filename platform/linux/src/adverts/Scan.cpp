// SPDX-License-Identifier: Apache-2.0
#include "adverts/Scan.h"

#include <cerrno>
#include <utility>

#include "Codes.h"
#include "adverts/FallbackWarning.h"
#include "bluez/Adapter.h"

namespace lyn::linux_platform {

namespace {

AdapterStatus CurrentAdapter()
{
    Adapter& adapter = Adapter::Instance();
    AdapterStatus known = adapter.Known();
    return known.path.empty() ? adapter.Read(AutoStart::yes) : known;
}

/// A copy of exactly the packet's size, so that a reader who goes one byte too far is caught.
std::unique_ptr<char[]> CopyOf(const Bytes& packet)
{
    auto copy = std::make_unique<char[]>(packet.size());
    std::copy(packet.begin(), packet.end(), copy.get());
    return copy;
}

}  // namespace

Scan& Scan::Instance()
{
    static Scan* const instance = new Scan;  // never destroyed: adverts may be on their way
    return *instance;
}

Scan::Scan()
{
    Adapter::Instance().AddListener([this](const AdapterStatus& status) { OnAdapter(status); });
}

int Scan::Start(bt_adapter_le_scan_result_cb callback, void* userData)
{
    const Deadline deadline(kCallLimitMs);
    const AdapterStatus adapter = CurrentAdapter();
    if (adapter.path.empty()) {
        return kAdapterOff;
    }
    const std::uint64_t registration = m_slot.Set(callback, userData);
    if (m_discovery.IsOn()) {
        return 0;  // It goes on, for the new callback.
    }
    // Before the discovery, whose first adverts may be the only ones for long.
    Listen(adapter.path);
    const int code = m_discovery.Start(adapter.path, deadline);
    if (code != 0 && m_slot.Id() == registration) {
        m_slot.Unset();
        Post([this] { Close(); });
    }
    return code;
}

int Scan::Stop()
{
    if (m_slot.Id() == 0) {
        return kScanNotRunning;
    }
    m_slot.Unset();
    m_discovery.Stop();
    Post([this] { Close(); });
    return 0;
}

bool Scan::IsOn() const
{
    return m_slot.Id() != 0;
}

void Scan::Listen(const std::string& adapterPath)
{
    const auto index = HciIndex(adapterPath.c_str());
    int error = ENODEV;
    auto opened = index ? HciSocket::Open(*index, error) : std::nullopt;
    if (!opened) {
        WarnOfFallback(error);
        Post([this, adapterPath] { UseDevices(adapterPath); });
        return;
    }
    const auto socket = std::make_shared<HciSocket>(std::move(*opened));  // a task can be copied, a socket cannot
    Post([this, socket, adapterPath] {
        Use(HciAdverts::Begin(std::move(*socket), [this](const Advert& advert) { Deliver(advert); }), adapterPath);
    });
}

void Scan::Use(std::shared_ptr<HciAdverts> adverts, const std::string& adapterPath)
{
    m_path = adapterPath;
    m_hciAdverts = std::move(adverts);
    m_deviceAdverts.reset();
    Close();
}

void Scan::UseDevices(const std::string& adapterPath)
{
    m_path = adapterPath;
    m_hciAdverts.reset();
    const auto bus = Bus::System();
    m_deviceAdverts =
        bus == nullptr ? nullptr
                       : DeviceAdverts::Begin(bus, adapterPath, [this](const Advert& advert) { Deliver(advert); });
    Close();
}

/// Unless a scan is on: it may have begun since this was asked for.
void Scan::Close()
{
    if (m_slot.Id() == 0) {
        m_path.clear();
        m_hciAdverts.reset();
        m_deviceAdverts.reset();
    }
}

void Scan::OnAdapter(const AdapterStatus& status)
{
    if (m_slot.Id() == 0) {
        return;
    }
    if (!status.powered) {
        // What cannot be opened now may be there when it is on again.
        m_path.clear();
        m_hciAdverts.reset();
        m_deviceAdverts.reset();
    } else if (status.path != m_path || (m_hciAdverts != nullptr && m_hciAdverts->HasEnded())) {
        Listen(status.path);
    }
    m_discovery.OnAdapter(status);
}

void Scan::Deliver(const Advert& advert)
{
    std::string address = advert.address;
    const auto advertising = CopyOf(advert.advertising);
    const auto response = advert.response ? CopyOf(*advert.response) : nullptr;
    bt_adapter_le_device_scan_result_info_s info{};
    info.remote_address = address.data();
    info.rssi = advert.rssi;
    info.adv_data = advertising.get();
    info.adv_data_len = static_cast<int>(advert.advertising.size());
    info.scan_data = response.get();
    info.scan_data_len = advert.response ? static_cast<int>(advert.response->size()) : 0;
    m_slot.Deliver(m_slot.Id(), 0, &info);
}

}  // namespace lyn::linux_platform
