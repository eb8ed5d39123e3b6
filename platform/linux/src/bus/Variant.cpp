// SPDX-License-Identifier: Apache-2.0
#include "bus/Variant.h"

namespace lyn::linux_platform {

Variant Lookup(GVariant* dictionary, const char* key, const char* type)
{
    return Variant(g_variant_lookup_value(dictionary, key, G_VARIANT_TYPE(type)));
}

std::optional<bool> LookupBool(GVariant* dictionary, const char* key)
{
    const Variant value = Lookup(dictionary, key, "b");
    return value ? std::optional(g_variant_get_boolean(value.get()) != FALSE) : std::nullopt;
}

std::optional<std::string> LookupText(GVariant* dictionary, const char* key)
{
    const Variant value = Lookup(dictionary, key, "s");
    return value ? std::optional<std::string>(g_variant_get_string(value.get(), nullptr)) : std::nullopt;
}

std::optional<std::string> LookupPath(GVariant* dictionary, const char* key)
{
    const Variant value = Lookup(dictionary, key, "o");
    return value ? std::optional<std::string>(g_variant_get_string(value.get(), nullptr)) : std::nullopt;
}

}  // namespace lyn::linux_platform
