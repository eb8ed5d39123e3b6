// SPDX-License-Identifier: Apache-2.0
#include "JsonField.h"

#include <glib.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>

#include "Address.h"
#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

namespace {

constexpr int kMaxMilliseconds = 24 * 3600 * 1000;

/// The reader's report is "* Line 3, Column 5\n  What is wrong.\n..."; this is its first sentence.
std::string FirstReason(const std::string& report, int& line)
{
    int column = 0;
    line = 1;
    std::sscanf(report.c_str(), "* Line %d, Column %d", &line, &column);
    const std::size_t begin = report.find("\n  ");
    if (begin == std::string::npos) {
        return report;
    }
    const std::size_t end = report.find('\n', begin + 1);
    return report.substr(begin + 3, end == std::string::npos ? end : end - begin - 3);
}

/// A text of the file, such as an unknown member's name, without what would end the line or clear the screen.
std::string OneLine(const std::string& text)
{
    std::string line;
    for (const char character : text) {
        const bool control = g_ascii_iscntrl(character);
        line += control ? '?' : character;
    }
    return line;
}

std::string Joined(std::initializer_list<const char*> names)
{
    std::string text;
    for (const char* name : names) {
        text += text.empty() ? "" : ", ";
        text += name;
    }
    return text;
}

}  // namespace

JsonDocument::JsonDocument(const std::string& text, const std::string& name) : m_text(text), m_name(name)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string report;
    bool good = false;
    try {
        good = reader->parse(m_text.data(), m_text.data() + m_text.size(), &m_root, &report);
    } catch (const Json::Exception& error) {
        report = std::string("\n  ") + error.what();  // nested too deeply
    }
    if (!good) {
        int line = 1;
        const std::string reason = FirstReason(report, line);
        throw ScenarioError(m_name + ":" + std::to_string(line) + ": not JSON: " + OneLine(reason));
    }
}

const Json::Value& JsonDocument::Root() const
{
    return m_root;
}

void JsonDocument::Fail(const Json::Value& at, const std::string& field, const std::string& reason) const
{
    const auto offset = static_cast<std::ptrdiff_t>(at.getOffsetStart());
    const auto line = 1 + std::count(m_text.begin(), m_text.begin() + offset, '\n');
    const std::string where = field.empty() ? "" : field + ": ";
    throw ScenarioError(m_name + ":" + std::to_string(line) + ": " + OneLine(where + reason));
}

JsonField::JsonField(const JsonDocument& document) : JsonField(document, document.Root(), "") {}

JsonField::JsonField(const JsonDocument& document, const Json::Value& value, std::string path)
    : m_document(&document),
      m_value(&value),
      m_path(std::move(path))
{
}

void JsonField::Fail(const std::string& reason) const
{
    m_document->Fail(*m_value, m_path, reason);
}

bool JsonField::IsNull() const
{
    return m_value->isNull();
}

bool JsonField::IsText() const
{
    return m_value->isString();
}

bool JsonField::IsObject() const
{
    return m_value->isObject();
}

bool JsonField::IsArray() const
{
    return m_value->isArray();
}

bool JsonField::IsInteger() const
{
    return m_value->isInt64();
}

const Json::Value& JsonField::Value() const
{
    return *m_value;
}

void JsonField::OnlyMembers(std::initializer_list<const char*> names) const
{
    for (const std::string& name : MemberNames()) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            const std::string path = m_path.empty() ? name : m_path + "." + name;
            m_document->Fail((*m_value)[name], path, "unknown member; known are " + Joined(names));
        }
    }
}

bool JsonField::Has(const char* name) const
{
    return m_value->isMember(name);
}

JsonField JsonField::Get(const char* name) const
{
    if (!Has(name)) {
        Fail(std::string("member \"") + name + "\" is missing");
    }
    return JsonField(*m_document, (*m_value)[name], m_path.empty() ? name : m_path + "." + name);
}

std::optional<JsonField> JsonField::Find(const char* name) const
{
    return Has(name) ? std::optional(Get(name)) : std::nullopt;
}

std::vector<std::string> JsonField::MemberNames() const
{
    if (!IsObject()) {
        Fail("must be an object");
    }
    return m_value->getMemberNames();
}

std::vector<JsonField> JsonField::Elements() const
{
    if (!IsArray()) {
        Fail("must be an array");
    }
    std::vector<JsonField> elements;
    for (Json::ArrayIndex i = 0; i < m_value->size(); ++i) {
        elements.push_back(JsonField(*m_document, (*m_value)[i], m_path + "[" + std::to_string(i) + "]"));
    }
    return elements;
}

std::string JsonField::Text() const
{
    if (!IsText()) {
        Fail("must be a text");
    }
    return m_value->asString();
}

bool JsonField::Bool() const
{
    if (!m_value->isBool()) {
        Fail("must be true or false");
    }
    return m_value->asBool();
}

int JsonField::Integer(std::int64_t least, std::int64_t most) const
{
    if (!IsInteger()) {
        Fail("must be an integer");
    }
    const std::int64_t value = m_value->asInt64();
    if (value < least || value > most) {
        Fail("must be from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return static_cast<int>(value);
}

int JsonField::Milliseconds() const
{
    return Integer(0, kMaxMilliseconds);
}

int JsonField::Code() const
{
    if (!IsText()) {
        return Integer(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::uint32_t>::max());
    }
    const std::string text = m_value->asString();
    const bool digits = text.size() > 2 && text.size() <= 10 && text.starts_with("0x") &&
                        std::all_of(text.begin() + 2, text.end(), [](char c) { return g_ascii_isxdigit(c); });
    if (!digits) {
        Fail("must be an integer, or a text of hexadecimal digits such as \"0xFE400104\"");
    }
    return static_cast<int>(std::stoul(text.substr(2), nullptr, 16));
}

std::vector<std::uint8_t> JsonField::Hex() const
{
    std::string digits;
    for (const char character : Text()) {
        if (character == ' ' && digits.size() % 2 == 0) {
            continue;
        }
        if (!g_ascii_isxdigit(character)) {
            Fail("not a hex digit in text of bytes");
        }
        digits += character;
    }
    if (digits.size() % 2 != 0) {
        Fail("odd number of hex digits");
    }
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int value = g_ascii_xdigit_value(digits[i]) * 16 + g_ascii_xdigit_value(digits[i + 1]);
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    return bytes;
}

std::string JsonField::Address() const
{
    const auto address = CanonicalAddress(Text());
    if (!address) {
        Fail("must be six hexadecimal pairs joined by colons");
    }
    return *address;
}

std::string JsonField::Uuid() const
{
    std::string uuid = Text();
    bool good = uuid.size() == 36;
    for (std::size_t i = 0; good && i < uuid.size(); ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        good = dash ? uuid[i] == '-' : g_ascii_isxdigit(uuid[i]);
    }
    if (!good) {
        Fail("must be a UUID such as \"f7608236-13bd-4a99-bbcd-9426bccb6c24\"");
    }
    return uuid;
}

}  // namespace lyn::simulator
