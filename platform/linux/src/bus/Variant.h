// SPDX-License-Identifier: Apache-2.0
//
// Owning and reading GVariants. What a message holds is never trusted to have the expected type.
#pragma once

#include <glib.h>

#include <memory>
#include <optional>
#include <string>

namespace lyn::linux_platform {

struct VariantUnref {
    void operator()(GVariant* value) const { g_variant_unref(value); }
};

using Variant = std::unique_ptr<GVariant, VariantUnref>;

/// The entry of a dictionary a{sv}, unboxed; null when it is absent or has another type.
Variant Lookup(GVariant* dictionary, const char* key, const char* type);

std::optional<bool> LookupBool(GVariant* dictionary, const char* key);
std::optional<std::string> LookupText(GVariant* dictionary, const char* key);
std::optional<std::string> LookupPath(GVariant* dictionary, const char* key);

}  // namespace lyn::linux_platform
