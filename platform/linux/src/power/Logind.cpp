// SPDX-License-Identifier: Apache-2.0
#include "power/Logind.h"

#include <gio/gunixfdlist.h>
#include <unistd.h>

#include <utility>

#include "Codes.h"
#include "bluez/Adapter.h"
#include "log/Log.h"

namespace lyn::linux_platform {

namespace {

constexpr const char* kLogin = "org.freedesktop.login1";
constexpr const char* kPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr std::uint32_t kSuspend = 0x40000000;

constexpr unsigned kRetryMs = 2000;

/// Whether what a signal announces begins; none when it says something else.
std::optional<bool> Begins(GVariant* values)
{
    if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(b)"))) {
        return std::nullopt;
    }
    gboolean begins = FALSE;
    g_variant_get(values, "(b)", &begins);
    return begins != FALSE;
}

/// The descriptor that an answer (h) names; -1 when it has none.
int TakeDescriptor(GVariant* values, GUnixFDList* descriptors)
{
    gint32 index = -1;
    g_variant_get(values, "(h)", &index);
    const bool there = descriptors != nullptr && index >= 0 && index < g_unix_fd_list_get_length(descriptors);
    return there ? g_unix_fd_list_get(descriptors, index, nullptr) : -1;
}

}  // namespace

Logind& Logind::Instance()
{
    static Logind* const instance = new Logind;  // never destroyed: signals may be on their way
    return *instance;
}

int Logind::Watch()
{
    if (Bus::System() == nullptr) {
        return kNoBus;
    }
    if (!m_watching.exchange(true)) {
        Post([this] { BeginWatching(); });
    }
    return 0;
}

void Logind::BeginWatching()
{
    m_bus = Bus::System();
    if (m_bus == nullptr) {
        m_retry = Timer(kRetryMs, [this] { BeginWatching(); });
        return;
    }
    m_subscriptions.push_back(m_bus->OnClosed([this] { BeginAgain(); }));
    m_subscriptions.push_back(
        m_bus->OnSignal({kLogin, kPath, kManager, "PrepareForSleep", ""},
                        [this](const char*, GVariant* values) { OnPrepareForSleep(Begins(values)); }));
    m_subscriptions.push_back(
        m_bus->OnSignal({kLogin, kPath, kManager, "PrepareForShutdown", ""},
                        [this](const char*, GVariant* values) { OnPrepareForShutdown(Begins(values)); }));
    // A logind that was started again has forgotten the delay, and a sleep that it announced.
    m_subscriptions.push_back(m_bus->OnOwner(kLogin, [this](const std::string& owner) {
        Forget();
        if (!owner.empty()) {
            DelaySleep();
        }
    }));
}

void Logind::BeginAgain()
{
    m_subscriptions.clear();
    Forget();
    m_retry = Timer(kRetryMs, [this] { BeginWatching(); });
}

void Logind::Forget()
{
    AllowSleep();
    if (!m_awake) {
        WakeUp();
    }
}

void Logind::WakeUp()
{
    m_awake = true;
    // The library goes on only after a report that Bluetooth is on.
    Adapter::Instance().TellAgain();
}

void Logind::OnPrepareForSleep(std::optional<bool> begins)
{
    if (begins == true) {
        m_awake = false;
        const device_power_off_info_s info{kSuspend};
        powerOff.Deliver(powerOff.Id(), &info);
        AllowSleep();
    } else if (begins == false) {
        DelaySleep();
        WakeUp();
    }
}

void Logind::OnPrepareForShutdown(std::optional<bool> begins) const
{
    if (begins == true) {
        const device_power_off_info_s info{0};
        powerOff.Deliver(powerOff.Id(), &info);
    }
}

void Logind::DelaySleep()
{
    if (m_inhibitor >= 0) {
        return;
    }
    const auto done = [](GObject* connection, GAsyncResult* result, gpointer self) {
        GUnixFDList* descriptors = nullptr;
        GVariant* values = g_dbus_connection_call_with_unix_fd_list_finish(G_DBUS_CONNECTION(connection),
                                                                           &descriptors, result, nullptr);
        const int granted = values != nullptr ? TakeDescriptor(values, descriptors) : -1;
        g_clear_pointer(&values, g_variant_unref);
        g_clear_object(&descriptors);
        static_cast<Logind*>(self)->OnDelayed(granted);
    };
    g_dbus_connection_call_with_unix_fd_list(
        m_bus->Connection(), kLogin, kPath, kManager, "Inhibit",
        g_variant_new("(ssss)", "sleep", "lyn_service", "tells applications of the coming sleep", "delay"),
        G_VARIANT_TYPE("(h)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, kCallLimitMs, nullptr, nullptr, done, this);
}

void Logind::OnDelayed(int granted)
{
    if (granted < 0) {
        LogWarn("%s", "logind gives no time before a sleep: the TV may sleep before it has said so");
        return;
    }
    AllowSleep();
    m_inhibitor = granted;
    if (!m_awake) {
        AllowSleep();  // The application has been told, and nothing else would end it.
    }
}

void Logind::AllowSleep()
{
    if (m_inhibitor >= 0) {
        ::close(std::exchange(m_inhibitor, -1));
    }
}

}  // namespace lyn::linux_platform
