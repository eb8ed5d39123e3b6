// SPDX-License-Identifier: Apache-2.0
#include "gatt/Exchange.h"

#include <cstring>
#include <utility>

#include "Codes.h"
#include "bluez/Bluez.h"
#include "gatt/Limits.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

Exchange::Exchange(std::shared_ptr<const Phone> phone, std::string path, bt_gatt_h handle)
    : m_phone(std::move(phone)),
      m_path(std::move(path)),
      m_handle(handle)
{
}

int Exchange::Listen(bt_gatt_client_characteristic_value_changed_cb callback, void* userData)
{
    if (!m_phone->up) {
        return kNotConnected;
    }
    m_listener.Set(callback, userData);
    Run(&Exchange::Start);
    return 0;
}

void Exchange::StopListening()
{
    m_listener.Unset();
    Run(&Exchange::Stop);
}

void Exchange::Write(std::string value, bt_gatt_client_request_completed_cb callback, void* userData)
{
    Post([self = shared_from_this(), write = PendingWrite{std::move(value), callback, userData}] {
        self->Begin(write);
    });
}

void Exchange::End()
{
    m_ended = true;
    StopListening();
}

void Exchange::Run(void (Exchange::*step)())
{
    Post([self = shared_from_this(), step] { (self.get()->*step)(); });
}

void Exchange::Call(const char* method, GVariant* arguments, int limitMs, ReplyHandler done) const
{
    m_phone->bus->Call(BluezMethod(m_path, kGattCharacteristic, method), arguments, limitMs, std::move(done));
}

void Exchange::Start()
{
    if (m_listener.Id() == 0 || m_notifying == Notifying::starting || m_notifying == Notifying::yes) {
        return;
    }
    m_notifying = Notifying::starting;
    // Listened to before it is asked for: a phone may notify before BlueZ replies.
    m_values = m_phone->bus->OnSignal({kBluez, m_path, kProperties, "PropertiesChanged", kGattCharacteristic},
                                      [self = weak_from_this()](const char*, GVariant* values) {
                                          if (const auto exchange = self.lock()) {
                                              exchange->OnSignal(values);
                                          }
                                      });
    Call("StartNotify", nullptr, TimeLimits().startNotify, [self = weak_from_this()](const Reply& reply) {
        if (const auto exchange = self.lock()) {
            exchange->OnStarted(reply);
        }
    });
}

void Exchange::OnStarted(const Reply& reply)
{
    if (m_notifying != Notifying::starting) {
        return;
    }
    m_notifying = reply.Ok() ? Notifying::yes : Notifying::refused;
    m_refusal = reply.Ok() ? 0 : CodeOf(*reply.error);
    if (!reply.Ok()) {
        WarnOfRefusal(m_path, "StartNotify", *reply.error);
        m_values.End();
    }
    for (const PendingWrite& write : std::exchange(m_waiting, {})) {
        Begin(write);
    }
}

void Exchange::Stop()
{
    if (m_listener.Id() != 0 && !m_ended) {
        return;  // Asked for again meanwhile.
    }
    const bool asked = m_notifying == Notifying::starting || m_notifying == Notifying::yes;
    m_notifying = Notifying::no;
    m_values.End();
    if (asked && m_phone->up) {
        // A phone that has gone lets this take long; nobody waits for it.
        Call("StopNotify", nullptr, TimeLimits().startNotify, [](const Reply&) {});
    }
    for (const PendingWrite& write : std::exchange(m_waiting, {})) {
        Begin(write);
    }
}

void Exchange::OnSignal(GVariant* values) const
{
    const Variant changed = ChangedProperties(values);
    const Variant value = changed ? Lookup(changed.get(), "Value", "ay") : nullptr;
    if (!value) {
        return;
    }
    gsize length = 0;
    const void* const bytes = g_variant_get_fixed_array(value.get(), &length, sizeof(guchar));
    // A copy of its own, NUL included, which lives until the callback returns.
    const std::unique_ptr<char[]> text(new char[length + 1]());
    if (length != 0) {
        std::memcpy(text.get(), bytes, length);
    }
    m_listener.Deliver(m_listener.Id(), m_handle, text.get(), static_cast<int>(length));
}

void Exchange::Begin(const PendingWrite& write)
{
    if (m_notifying == Notifying::starting) {
        m_waiting.push_back(write);
    } else if (m_notifying == Notifying::refused) {
        Complete(write, m_refusal);
    } else {
        Send(write);
    }
}

void Exchange::Send(const PendingWrite& write)
{
    if (m_ended) {
        return;
    }
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&options, "{sv}", "type", g_variant_new_string("request"));
    GVariant* const value =
        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, write.value.data(), write.value.size(), sizeof(char));
    Call("WriteValue", g_variant_new("(@aya{sv})", value, &options), TimeLimits().write,
         [self = shared_from_this(), write](const Reply& reply) {
             if (!reply.Ok()) {
                 WarnOfRefusal(self->m_path, "WriteValue", *reply.error);
             }
             self->Complete(write, reply.Ok() ? 0 : CodeOf(*reply.error));
         });
}

void Exchange::Complete(const PendingWrite& write, int code) const
{
    if (!m_ended && write.callback != nullptr) {
        write.callback(code, m_handle, write.userData);
    }
}

}  // namespace lyn::linux_platform
