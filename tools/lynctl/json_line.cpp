// SPDX-License-Identifier: Apache-2.0
#include "json_line.h"

#include <glib.h>

#include "terminal.h"

namespace lynctl {

Json::Value Event(const char* event, double seconds)
{
    Json::Value object(Json::objectValue);
    object["event"] = event;
    object["seconds"] = seconds;
    return object;
}

void SetText(Json::Value& object, std::string_view bytes)
{
    object["text"] = std::string(bytes);
    if (g_utf8_validate_len(bytes.data(), bytes.size(), nullptr)) {
        return;
    }
    constexpr const char* kDigits = "0123456789abcdef";
    std::string hex;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += kDigits[byte >> 4];
        hex += kDigits[byte & 0x0F];
    }
    object["hex"] = hex;
}

void PrintJson(const Json::Value& object)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["precision"] = 3;
    builder["precisionType"] = "decimal";
    Print(Json::writeString(builder, object) + "\n");
}

}  // namespace lynctl
