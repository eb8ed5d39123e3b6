// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace lyn::simulator {

/// A JSON text and its name in error messages.
class JsonDocument {
public:
    /// Throws ScenarioError when the text is not JSON.
    JsonDocument(const std::string& text, const std::string& name);

    const Json::Value& Root() const;
    /// "NAME:LINE: FIELD: reason", for the line in which a value begins.
    [[noreturn]] void Fail(const Json::Value& at, const std::string& field, const std::string& reason) const;

private:
    std::string m_text;
    std::string m_name;
    Json::Value m_root;
};

/// A value of a document and the way to it, such as "phones[1].address". Reading it as something that it
/// is not throws a ScenarioError that names file, line and field. It must not outlive its document.
class JsonField {
public:
    explicit JsonField(const JsonDocument& document);

    [[noreturn]] void Fail(const std::string& reason) const;

    bool IsNull() const;
    bool IsText() const;
    bool IsObject() const;
    bool IsArray() const;
    bool IsInteger() const;
    const Json::Value& Value() const;

    /// Fails unless this is an object with no other members than these.
    void OnlyMembers(std::initializer_list<const char*> names) const;
    bool Has(const char* name) const;
    /// A member that must be there.
    JsonField Get(const char* name) const;
    /// A member, if it is there.
    std::optional<JsonField> Find(const char* name) const;
    std::vector<std::string> MemberNames() const;
    std::vector<JsonField> Elements() const;

    std::string Text() const;
    bool Bool() const;
    int Integer(std::int64_t least, std::int64_t most) const;
    int Milliseconds() const;
    /// A result code: an integer, or the text of 32 bits in hexadecimal such as "0xFE400104".
    int Code() const;
    /// Bytes as text of hexadecimal digits; blanks between bytes are allowed.
    std::vector<std::uint8_t> Hex() const;
    /// Six hexadecimal pairs joined by colons.
    std::string Address() const;
    std::string Uuid() const;

private:
    JsonField(const JsonDocument& document, const Json::Value& value, std::string path);

    const JsonDocument* m_document;
    const Json::Value* m_value;
    std::string m_path;
};

}  // namespace lyn::simulator
