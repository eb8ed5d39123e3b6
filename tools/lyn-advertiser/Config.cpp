// SPDX-License-Identifier: Apache-2.0
#include "Config.h"

#include <glib.h>
#include <json/json.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <system_error>

namespace lyn::advertiser {

namespace {

// A legacy advertising packet has 31 bytes: 3 are flags, 2 the head of the structure, 2 the company.
constexpr std::size_t kMaxData = 24;
constexpr std::size_t kMaxName = 26;
constexpr unsigned kMaxCompany = 0xFFFF;

/// One value of the file, and how to say where it stands.
class Field {
public:
    Field(std::string file, std::string path, const Json::Value& value)
        : m_file(std::move(file)),
          m_path(std::move(path)),
          m_value(value)
    {
    }

    [[noreturn]] void Reject(const std::string& reason) const
    {
        throw ConfigError(m_file + ": " + (m_path.empty() ? "" : m_path + ": ") + reason);
    }

    const Json::Value& Value() const { return m_value; }

    Field Member(const std::string& name) const { return {m_file, Below(name), m_value[name]}; }
    Field Item(Json::ArrayIndex index) const
    {
        return {m_file, m_path + "[" + std::to_string(index) + "]", m_value[index]};
    }

    void WantObject(const std::set<std::string>& known) const
    {
        if (!m_value.isObject()) {
            Reject("an object is wanted");
        }
        for (const std::string& name : m_value.getMemberNames()) {
            if (known.count(name) == 0) {
                throw ConfigError(m_file + ": " + Below(name) + ": unknown field");
            }
        }
    }

    std::string Text() const
    {
        if (!m_value.isString()) {
            Reject("a text is wanted");
        }
        return m_value.asString();
    }

private:
    std::string Below(const std::string& name) const { return m_path.empty() ? name : m_path + "." + name; }

    std::string m_file;
    std::string m_path;
    const Json::Value& m_value;
};

int HexDigit(char c)
{
    const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower >= '0' && lower <= '9') {
        return lower - '0';
    }
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Pairs of hexadecimal digits, with blanks between pairs where they help.
std::optional<std::vector<std::uint8_t>> BytesOf(const std::string& text)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        const int high = HexDigit(text[i]);
        const int low = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
        i += 2;
    }
    return bytes;
}

bool IsUuid(const std::string& text)
{
    constexpr std::size_t kLength = 36;
    if (text.size() != kLength) {
        return false;
    }
    for (std::size_t i = 0; i < kLength; ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? text[i] != '-' : HexDigit(text[i]) < 0) {
            return false;
        }
    }
    return true;
}

void ReadManufacturerData(Payload& payload, const Field& field)
{
    field.WantObject({"company", "data"});
    const Field company = field.Member("company");
    if (!company.Value().isUInt() || company.Value().asUInt() > kMaxCompany) {
        company.Reject("a whole number from 0 to 65535 is wanted");
    }
    const Field data = field.Member("data");
    const auto bytes = BytesOf(data.Text());
    if (!bytes) {
        data.Reject("pairs of hexadecimal digits are wanted");
    }
    if (bytes->size() > kMaxData) {
        data.Reject("an advertising packet has room for " + std::to_string(kMaxData) + " bytes");
    }
    payload.manufacturerData[static_cast<std::uint16_t>(company.Value().asUInt())] = *bytes;
}

void ReadServiceUuids(Payload& payload, const Field& field)
{
    if (!field.Value().isArray()) {
        field.Reject("an array is wanted");
    }
    for (Json::ArrayIndex i = 0; i < field.Value().size(); ++i) {
        const Field item = field.Item(i);
        if (!IsUuid(item.Text())) {
            item.Reject("a UUID of 36 characters is wanted");
        }
        payload.serviceUuids.push_back(item.Text());
    }
}

std::string NameFrom(const Field& field)
{
    std::string name = field.Text();
    if (name.size() > kMaxName) {
        field.Reject("at most " + std::to_string(kMaxName) + " bytes");
    }
    // JSON readers let other bytes through, which the bus does not carry.
    if (g_utf8_validate(name.data(), static_cast<gssize>(name.size()), nullptr) == FALSE) {
        field.Reject("a text in UTF-8, without a NUL, is wanted");
    }
    return name;
}

Payload ReadPayload(const Field& field)
{
    field.WantObject({"connectable", "manufacturerData", "serviceUuids", "localName"});
    Payload payload;
    if (field.Value().isMember("connectable")) {
        const Field connectable = field.Member("connectable");
        if (!connectable.Value().isBool()) {
            connectable.Reject("true or false is wanted");
        }
        payload.connectable = connectable.Value().asBool();
    }
    if (field.Value().isMember("manufacturerData")) {
        ReadManufacturerData(payload, field.Member("manufacturerData"));
    }
    if (field.Value().isMember("serviceUuids")) {
        ReadServiceUuids(payload, field.Member("serviceUuids"));
    }
    if (field.Value().isMember("localName")) {
        payload.localName = NameFrom(field.Member("localName"));
    }
    return payload;
}

}  // namespace

Config ParseConfig(const std::string& text, const std::string& file)
{
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    builder["rejectDupKeys"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    std::string errors;
    bool read = false;
    try {
        read = reader->parse(text.data(), text.data() + text.size(), &root, &errors);
    } catch (const Json::Exception& error) {  // nested too deep
        errors = error.what();
    }
    if (!read) {
        std::replace(errors.begin(), errors.end(), '\n', ' ');
        throw ConfigError(file + ": no JSON: " + errors);
    }
    const Field top(file, "", root);
    top.WantObject({"mirroring", "kov"});
    Config config;
    for (const std::string& feature : root.getMemberNames()) {
        config[feature] = ReadPayload(top.Member(feature));
    }
    if (config.empty()) {
        top.Reject("neither mirroring nor kov has a payload");
    }
    return config;
}

Config ReadConfig(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw ConfigError(file + ": " + std::generic_category().message(errno));
    }
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    return ParseConfig(text, file);
}

}  // namespace lyn::advertiser
