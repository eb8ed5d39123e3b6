// SPDX-License-Identifier: Apache-2.0
#include "Common/JsonText.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>
#include <sstream>

namespace lyn {
namespace {

// Made once, for that costs more than a line; never destroyed, for a service may outlive it.
const Json::StreamWriterBuilder& OneLineBuilder()
{
    static const auto* const builder = [] {
        auto made = std::make_unique<Json::StreamWriterBuilder>();
        (*made)["indentation"] = "";
        return made.release();
    }();
    return *builder;
}

}  // namespace

bool FromJsonText(const std::string& text, Json::Value& value, std::string& error)
{
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    return reader->parse(text.data(), text.data() + text.size(), &value, &error);
}

std::string ToJsonText(const Json::Value& value)
{
    const std::unique_ptr<Json::StreamWriter> writer(OneLineBuilder().newStreamWriter());
    std::ostringstream text;
    // Else a stream that finds no memory keeps silent, and half a text would go out.
    text.exceptions(std::ios::badbit);
    writer->write(value, &text);
    return text.str();
}

}  // namespace lyn
