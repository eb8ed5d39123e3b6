// SPDX-License-Identifier: Apache-2.0
#include "ArgumentText.h"

#include <array>
#include <cstdio>

namespace lyn::simulator {

void AppendArgument(std::string& out, const char* text)
{
    if (text == nullptr) {
        out += "null";
        return;
    }
    AppendArgument(out, std::string_view(text));
}

void AppendArgument(std::string& out, std::string_view text)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    out += '"';
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            out += '\\';
            out += character;
        } else if (byte < 0x20 || byte == 0x7F) {
            out += "\\x";
            out += kDigits[byte >> 4];
            out += kDigits[byte & 15];
        } else {
            out += character;
        }
    }
    out += '"';
}

void AppendArgument(std::string& out, bool value)
{
    out += value ? "true" : "false";
}

void AppendArgument(std::string& out, float value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", static_cast<double>(value));
    out += text.data();
}

}  // namespace lyn::simulator
