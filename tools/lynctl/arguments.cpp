// SPDX-License-Identifier: Apache-2.0
#include "arguments.h"

#include <json/json.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <memory>

#include "failure.h"
#include "text.h"

namespace lynctl {

namespace {

constexpr int kMaxSeconds = 86400;

[[noreturn]] void Reject(const std::string& text)
{
    throw Failure(kExitUsage, text);
}

std::string Quoted(const std::string& word)
{
    std::string quoted = "'";  // Not a sum that begins with a literal: GCC 12 at -O3 warns of an overlap in it.
    quoted += Fit(Printable(word, false), 60, false);
    quoted += "'";
    return quoted;
}

// ---- Values ------------------------------------------------------------------------------------------

void SetSeconds(Arguments& out, const std::string& value)
{
    const char* const end = value.data() + value.size();
    int seconds = -1;
    const auto [rest, error] = std::from_chars(value.data(), end, seconds);
    if (error != std::errc() || rest != end || seconds < 0 || seconds > kMaxSeconds) {
        Reject("bad --seconds " + Quoted(value) + ": a whole number from 0 to " + std::to_string(kMaxSeconds));
    }
    out.seconds = seconds;
}

void SetInterval(Arguments& out, const std::string& value)
{
    constexpr std::array<const char*, 5> kIntervals = {"50", "100", "150", "200", "300"};
    const auto found = std::find(kIntervals.begin(), kIntervals.end(), value);
    if (found == kIntervals.end()) {
        Reject("bad --interval " + Quoted(value) + ": 50, 100, 150, 200 or 300");
    }
    out.interval = static_cast<lyn_adv_interval_e>(found - kIntervals.begin());
}

void SetExtra(Arguments& out, const std::string& value)
{
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value parsed;
    bool object = false;
    try {
        object = reader->parse(value.data(), value.data() + value.size(), &parsed, nullptr) && parsed.isObject();
    } catch (const Json::Exception&) {  // nested too deep
    }
    if (!object) {
        Reject("bad --extra " + Quoted(value) + ": not a JSON object");
    }
    out.extra = value;
}

void SetNodlinkVersion(Arguments& out, const std::string& value)
{
    if (value != "2.0" && value != "3.0") {
        Reject("bad --nodlink-version " + Quoted(value) + ": 2.0 or 3.0");
    }
    out.nodlinkVersion = value;
}

void SetPlatform(Arguments& out, const std::string& value)
{
    const auto plain = [](unsigned char c) { return std::isalnum(c) || c == '-' || c == '_'; };
    if (value.empty() || !std::all_of(value.begin(), value.end(), plain)) {
        Reject("bad --platform " + Quoted(value) + ": a name such as simulator or linux");
    }
    out.platform = value;
}

void SetScenario(Arguments& out, const std::string& value)
{
    if (value.empty()) {
        Reject("bad --scenario '': the name of a file");
    }
    out.scenario = value;
}

void SetLibraryFolder(Arguments& out, const std::string& value)
{
    if (value.empty()) {
        Reject("bad --lib-dir '': the name of a folder");
    }
    out.libraryFolder = value;
}

void SetService(Arguments& out, const std::string& value)
{
    constexpr std::array<const char*, 4> kServices = {"mirroring", "nodlink", "kov", "dummy"};
    if (std::find(kServices.begin(), kServices.end(), value) == kServices.end()) {
        Reject("unknown service " + Quoted(value) + ": mirroring, nodlink, kov or dummy");
    }
    out.service = value;
}

void SetAddress(Arguments& out, const std::string& value)
{
    constexpr std::size_t kLength = 17;
    bool good = value.size() == kLength;
    for (std::size_t i = 0; good && i < kLength; ++i) {
        const auto c = static_cast<unsigned char>(value[i]);
        good = i % 3 == 2 ? c == ':' : std::isxdigit(c) != 0;
    }
    if (!good) {
        Reject("bad address " + Quoted(value) + ": six hexadecimal pairs such as AA:BB:CC:DD:EE:01");
    }
    out.address = value;
    std::transform(value.begin(), value.end(), out.address.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
}

// ---- Words -------------------------------------------------------------------------------------------

struct CommandName {
    const char* name;
    Command command;
};

constexpr std::array<CommandName, 6> kCommands = {{
    {"scan", Command::scan},
    {"request", Command::request},
    {"advertise", Command::advertise},
    {"events", Command::events},
    {"settings", Command::settings},
    {"doctor", Command::doctor},
}};

constexpr unsigned Bit(Command command)
{
    return 1U << static_cast<unsigned>(command);
}

constexpr unsigned kAll = ~0U;
constexpr unsigned kFollowing = Bit(Command::scan) | Bit(Command::events) | Bit(Command::settings);
constexpr unsigned kJson = kFollowing | Bit(Command::request) | Bit(Command::doctor);
// Those that ask the machine, and need neither the library nor a platform of it.
constexpr unsigned kOfService = kAll & ~(Bit(Command::settings) | Bit(Command::doctor));

struct Option {
    const char* name;
    bool takesValue;
    unsigned commands;  ///< bits of the commands that know it
    void (*apply)(Arguments&, const std::string&);
};

constexpr std::array<Option, 14> kOptions = {{
    {"--seconds", true, kFollowing, SetSeconds},
    {"--json", false, kJson, [](Arguments& out, const std::string&) { out.json = true; }},
    {"--extra", true, Bit(Command::request), SetExtra},
    {"--nodlink-version", true, Bit(Command::request), SetNodlinkVersion},
    {"--interval", true, Bit(Command::advertise), SetInterval},
    {"--stop", false, Bit(Command::advertise), [](Arguments& out, const std::string&) { out.stop = true; }},
    {"--text", false, Bit(Command::settings), [](Arguments& out, const std::string&) { out.text = true; }},
    {"--platform", true, kOfService, SetPlatform},
    {"--scenario", true, kOfService, SetScenario},
    {"--lib-dir", true, kOfService, SetLibraryFolder},
    {"--verbose", false, kOfService, [](Arguments& out, const std::string&) { out.verbose = true; }},
    {"--help", false, kAll, nullptr},
    {"-h", false, kAll, nullptr},
    {"--version", false, kAll, nullptr},
}};

struct Given {
    const Option* option;
    std::string value;
};

struct Words {
    std::vector<std::string> plain;
    std::vector<Given> options;

    bool Has(const std::string& name) const
    {
        return std::any_of(options.begin(), options.end(), [&](const Given& g) { return name == g.option->name; });
    }
};

Words Split(const std::vector<std::string>& words)
{
    Words out;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word.size() < 2 || word[0] != '-') {
            out.plain.push_back(word);
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const auto known =
            std::find_if(kOptions.begin(), kOptions.end(), [&](const Option& o) { return name == o.name; });
        if (known == kOptions.end()) {
            Reject("unknown option " + Quoted(name) + "; try 'lynctl --help'");
        }
        if (!known->takesValue && equals != std::string::npos) {
            Reject("option '" + name + "' takes no value");
        }
        if (known->takesValue && equals == std::string::npos && i + 1 == words.size()) {
            Reject("option '" + name + "' needs a value");
        }
        std::string value;
        if (known->takesValue) {
            value = equals != std::string::npos ? word.substr(equals + 1) : words[++i];
        }
        out.options.push_back({&*known, std::move(value)});
    }
    return out;
}

const CommandName& FindCommand(const std::string& word)
{
    const auto found =
        std::find_if(kCommands.begin(), kCommands.end(), [&](const CommandName& c) { return word == c.name; });
    if (found == kCommands.end()) {
        Reject("unknown command " + Quoted(word) + "; try 'lynctl --help'");
    }
    return *found;
}

void RejectMore(const std::vector<std::string>& plain, std::size_t known)
{
    if (plain.size() > known) {
        Reject("unexpected argument " + Quoted(plain[known]));
    }
}

void ReadServiceWords(Arguments& out, const CommandName& command, const std::vector<std::string>& plain)
{
    const bool wantsAddress = out.command == Command::request;
    if (plain.size() < 2) {
        Reject(std::string("'") + command.name + "' needs a service: mirroring, nodlink, kov or dummy");
    }
    SetService(out, plain[1]);
    if (wantsAddress && plain.size() < 3) {
        Reject(std::string("'") + command.name + "' needs the address of a phone");
    }
    if (wantsAddress) {
        SetAddress(out, plain[2]);
    }
    RejectMore(plain, wantsAddress ? 3 : 2);
}

void ReadSettingsWords(Arguments& out, const std::vector<std::string>& plain)
{
    constexpr std::array<const char*, 3> kActions = {"get", "set", "watch"};
    const auto action = plain.size() < 2 ? kActions.end() : std::find(kActions.begin(), kActions.end(), plain[1]);
    if (action == kActions.end()) {
        Reject("'settings' needs what to do: get, set or watch");
    }
    out.settingsAction = static_cast<SettingsAction>(action - kActions.begin());
    if (plain.size() < 3) {
        Reject(std::string("'settings ") + *action + "' needs a key such as db/menu/network/devicename/tv_name");
    }
    out.key = plain[2];
    const bool wantsValue = out.settingsAction == SettingsAction::set;
    if (wantsValue && plain.size() < 4) {
        Reject("'settings set' needs a value");
    }
    if (wantsValue) {
        out.value = plain[3];
    }
    RejectMore(plain, wantsValue ? 4 : 3);
}

void ReadPlainWords(Arguments& out, const CommandName& command, const std::vector<std::string>& plain)
{
    switch (out.command) {
    case Command::settings:
        ReadSettingsWords(out, plain);
        break;
    case Command::doctor:
        RejectMore(plain, 1);
        break;
    default:
        ReadServiceWords(out, command, plain);
        break;
    }
}

void CheckTogether(const Arguments& out)
{
    if (out.extra && out.service != "mirroring") {
        Reject("--extra is for 'mirroring' only");
    }
    if (!out.nodlinkVersion.empty() && out.service != "nodlink") {
        Reject("--nodlink-version is for 'nodlink' only");
    }
    if (out.command == Command::advertise && out.interval && out.stop) {
        Reject("--interval and --stop exclude each other");
    }
    if (out.command == Command::advertise && !out.interval && !out.stop) {
        Reject("'advertise' needs --interval or --stop");
    }
    if (!out.scenario.empty() && !out.platform.empty() && out.platform != "simulator") {
        Reject("--scenario is for the platform 'simulator' only");
    }
}

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& words)
{
    const Words split = Split(words);
    Arguments out;
    const bool help = split.Has("--help") || split.Has("-h");
    if (split.Has("--version") && !help) {
        out.command = Command::version;
        return out;
    }
    if (split.plain.empty()) {
        if (!help) {
            Reject("no command; try 'lynctl --help'");
        }
        return out;
    }
    const CommandName& command = FindCommand(split.plain[0]);
    if (help) {
        out.helpTopic = command.command;
        return out;
    }
    out.command = command.command;
    if (out.command == Command::events || out.command == Command::settings) {
        out.seconds = 0;
    }
    for (const Given& given : split.options) {
        if (!(given.option->commands & Bit(out.command))) {
            Reject(std::string("option '") + given.option->name + "' is not for '" + command.name + "'");
        }
        given.option->apply(out, given.value);
    }
    ReadPlainWords(out, command, split.plain);
    CheckTogether(out);
    return out;
}

}  // namespace lynctl
