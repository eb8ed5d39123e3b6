// SPDX-License-Identifier: Apache-2.0
#include "gatt/Mtu.h"

#include <string>
#include <utility>

#include "Codes.h"
#include "bluez/Bluez.h"
#include "gatt/Limits.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

namespace {

std::string SomeCharacteristic(const Phone& phone)
{
    for (const Service& service : phone.services) {
        if (!service.characteristics.empty()) {
            return service.characteristics.front().path;
        }
    }
    return "";
}

/// 0 when the answer holds no MTU.
unsigned MtuOf(GVariant* values)
{
    if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(v)"))) {
        return 0;
    }
    const Variant box(g_variant_get_child_value(values, 0));
    const Variant mtu(g_variant_get_variant(box.get()));
    const bool good = g_variant_is_of_type(mtu.get(), G_VARIANT_TYPE_UINT16) != FALSE;
    return good ? g_variant_get_uint16(mtu.get()) : 0;
}

}  // namespace

void ReadMtu(const Phone& phone, std::function<void(unsigned, int)> done)
{
    const std::string path = SomeCharacteristic(phone);
    if (path.empty()) {
        done(kLeastMtu, kNotFound);
        return;
    }
    phone.bus->Call(BluezMethod(path, kProperties, "Get"), g_variant_new("(ss)", kGattCharacteristic, "MTU"),
                    TimeLimits().readMtu, [done = std::move(done)](const Reply& reply) {
                        const unsigned mtu = reply.Ok() ? MtuOf(reply.values.get()) : 0;
                        if (mtu >= kLeastMtu) {
                            done(mtu, 0);
                        } else {
                            done(kLeastMtu, reply.Ok() ? kMalformed : CodeOf(*reply.error));
                        }
                    });
}

}  // namespace lyn::linux_platform
