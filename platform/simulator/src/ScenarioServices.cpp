// SPDX-License-Identifier: Apache-2.0
#include "AdvertisingData.h"
#include "ScenarioParts.h"

namespace lyn::simulator {

namespace {

constexpr int kMaxRepeat = 10'000;
constexpr std::size_t kMaxNotification = 512;

Answer::Kind ParseKind(const JsonField& field)
{
    const std::string name = field.Text();
    if (name == "notify") {
        return Answer::Kind::notify;
    }
    if (name == "silent") {
        return Answer::Kind::silent;
    }
    if (name == "disconnect") {
        return Answer::Kind::disconnect;
    }
    if (name == "writeError") {
        return Answer::Kind::writeError;
    }
    field.Fail("must be notify, silent, disconnect or writeError");
}

void CheckLength(const JsonField& field, const std::string& text)
{
    if (text.size() > kMaxNotification) {
        field.Fail("holds at most " + std::to_string(kMaxNotification) + " bytes");
    }
}

std::string ParseNotification(const JsonField& field)
{
    if (field.Has("text") + field.Has("hex") + field.Has("json") != 1) {
        field.Fail("must have one of \"text\", \"hex\" and \"json\"");
    }
    std::string text;
    if (const auto plain = field.Find("text")) {
        text = plain->Text();
    } else if (const auto hex = field.Find("hex")) {
        const Bytes bytes = hex->Hex();
        text.assign(bytes.begin(), bytes.end());
    } else {
        Json::StreamWriterBuilder writer;
        writer["indentation"] = "";
        text = Json::writeString(writer, field.Get("json").Value());
    }
    CheckLength(field, text);
    if (const auto cut = field.Find("cut")) {
        text.resize(static_cast<std::size_t>(cut->Integer(0, static_cast<std::int64_t>(text.size()))));
    }
    return text;
}

void ParseNotify(const JsonField& field, Answer& answer)
{
    field.OnlyMembers({"kind", "text", "hex", "json", "cut", "delayMs", "repeat", "beforeCompletion"});
    answer.text = ParseNotification(field);
    if (const auto repeat = field.Find("repeat")) {
        answer.repeat = repeat->Integer(0, kMaxRepeat);
    }
}

void ParseOther(const JsonField& field, Answer& answer)
{
    if (answer.kind == Answer::Kind::silent) {
        field.OnlyMembers({"kind", "delayMs"});
        return;
    }
    if (answer.kind == Answer::Kind::disconnect) {
        field.OnlyMembers({"kind", "delayMs", "code", "beforeCompletion"});
        if (const auto code = field.Find("code")) {
            answer.code = code->Code();
        }
        return;
    }
    field.OnlyMembers({"kind", "delayMs", "code"});
    answer.code = field.Get("code").Code();
}

Answer ParseAnswer(const JsonField& field)
{
    Answer answer;
    if (field.IsText()) {
        answer.text = field.Text();
        CheckLength(field, answer.text);
        return answer;
    }
    if (!field.IsObject()) {
        field.Fail("must be a text or an object");
    }
    if (const auto kind = field.Find("kind")) {
        answer.kind = ParseKind(*kind);
    }
    if (answer.kind == Answer::Kind::notify) {
        ParseNotify(field, answer);
    } else {
        ParseOther(field, answer);
    }
    if (const auto delay = field.Find("delayMs")) {
        answer.delayMs = delay->Milliseconds();
    }
    if (const auto before = field.Find("beforeCompletion")) {
        answer.beforeCompletion = before->Bool();
    }
    return answer;
}

void ParseBehaviour(const JsonField& field, Characteristic& characteristic)
{
    if (const auto notifies = field.Find("notifies")) {
        characteristic.notifies = notifies->Bool();
    }
    if (const auto writable = field.Find("writable")) {
        characteristic.writable = writable->Bool();
    }
    if (const auto answers = field.Find("answers")) {
        characteristic.answers = ParseAnswers(*answers);
    }
    if (const auto perLink = field.Find("answersPerLink")) {
        characteristic.answersPerLink = perLink->Bool();
    }
}

Service ParseFeatureService(const JsonField& field)
{
    field.OnlyMembers({"feature", "notifies", "writable", "answers", "answersPerLink"});
    const JsonField name = field.Get("feature");
    const auto feature = FeatureNamed(name.Text());
    if (!feature) {
        name.Fail("must be mirroring, nodlink or kov");
    }
    Service service = FeatureService(*feature);
    ParseBehaviour(field, service.characteristics.front());
    return service;
}

Characteristic ParseCharacteristic(const JsonField& field)
{
    field.OnlyMembers({"uuid", "notifies", "writable", "answers", "answersPerLink"});
    Characteristic characteristic;
    characteristic.uuid = field.Get("uuid").Uuid();
    ParseBehaviour(field, characteristic);
    return characteristic;
}

Service ParseService(const JsonField& field)
{
    if (field.IsObject() && field.Has("feature")) {
        return ParseFeatureService(field);
    }
    field.OnlyMembers({"uuid", "characteristics"});
    Service service;
    service.uuid = field.Get("uuid").Uuid();
    for (const JsonField& element : field.Get("characteristics").Elements()) {
        service.characteristics.push_back(ParseCharacteristic(element));
    }
    return service;
}

}  // namespace

std::vector<Answer> ParseAnswers(const JsonField& field)
{
    std::vector<Answer> answers;
    for (const JsonField& element : field.Elements()) {
        answers.push_back(ParseAnswer(element));
    }
    return answers;
}

std::vector<Service> ParseServices(const JsonField& field)
{
    std::vector<Service> services;
    for (const JsonField& element : field.Elements()) {
        services.push_back(ParseService(element));
    }
    return services;
}

}  // namespace lyn::simulator
