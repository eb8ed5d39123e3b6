// SPDX-License-Identifier: Apache-2.0
//
// Switches the TV's own Bluetooth LE advertisements on and off as the library's trigger settings say.
#include <getopt.h>
#include <glib-unix.h>
#include <json/json.h>

#include <cstdio>
#include <exception>
#include <string>

#include "Advertiser.h"

namespace {

using namespace lyn::advertiser;

constexpr const char* kDefaultConfig = "/etc/lyn/advertiser.json";

constexpr const char* kHelp = R"(Usage: lyn-advertiser [--config FILE] [--check] [--json]

Watches the settings memory/org.nuvex.bleapp/mirroring_trigger and kov_trigger, which applications of lyn_service
write, and lets bluetoothd advertise the TV with the interval that stands there (1 to 10240 milliseconds; 0 is off).

  --config FILE  what the advertisements say (default /etc/lyn/advertiser.json)
  --check        only read the configuration and say what is wrong with it
  --json         one JSON object a line for each change
  --help         this text
  --version      the version

The settings are found as by the library: LYN_RUNTIME_DIR, else /run/lyn for root, else the user's own folder.
LYN_BT_ADAPTER chooses an adapter. Status: 0 after SIGTERM or SIGINT, 1 without a system bus, 2 for bad arguments or
a bad configuration.
)";

enum ExitStatus { kDone = 0, kFailed = 1, kUsage = 2 };

struct Arguments {
    std::string config = kDefaultConfig;
    bool check = false;
    bool json = false;
};

void TellAsText(const News& news)
{
    std::string line = news.feature + ": " + news.what;
    if (news.interval > 0) {
        line += ", every " + std::to_string(news.interval) + " ms";
    }
    if (!news.reason.empty()) {
        line += ": " + news.reason;
    }
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void TellAsJson(const News& news)
{
    Json::Value object;
    object["feature"] = news.feature;
    object["advertisement"] = news.what;
    object["interval"] = news.interval;
    if (!news.reason.empty()) {
        object["reason"] = news.reason;
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    std::printf("%s\n", Json::writeString(builder, object).c_str());
    std::fflush(stdout);
}

gboolean Quit(gpointer loop)
{
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

int Run(const Arguments& arguments)
{
    const Config config = ReadConfig(arguments.config);
    if (arguments.check) {
        std::printf("%s: good\n", arguments.config.c_str());
        return kDone;
    }
    const lyn::linux_platform::SettingsStore store(lyn::linux_platform::SettingsFolders::FromEnvironment());
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    g_unix_signal_add(SIGTERM, &Quit, loop);
    g_unix_signal_add(SIGINT, &Quit, loop);
    // Never destroyed while the adapter may tell it something: it ends with the process, and its
    // advertisements with it.
    static auto* const advertiser = new Advertiser(config, store, arguments.json ? TellAsJson : TellAsText);
    if (lyn::linux_platform::Adapter::Instance().Watch() != 0) {
        std::fprintf(stderr, "lyn-advertiser: the system bus cannot be reached\n");
        g_main_loop_unref(loop);
        return kFailed;
    }
    advertiser->Update();
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
    return kDone;
}

/// The exit status when there is nothing more to do.
int Parse(int argc, char** argv, Arguments& arguments, bool& done)
{
    static const option kOptions[] = {
        {"config", required_argument, nullptr, 'c'}, {"check", no_argument, nullptr, 'k'},
        {"json", no_argument, nullptr, 'j'},         {"help", no_argument, nullptr, 'h'},
        {"version", no_argument, nullptr, 'v'},      {nullptr, 0, nullptr, 0}};
    done = true;
    for (int name = 0; (name = ::getopt_long(argc, argv, "h", kOptions, nullptr)) != -1;) {
        switch (name) {
        case 'c':
            arguments.config = optarg;
            break;
        case 'k':
            arguments.check = true;
            break;
        case 'j':
            arguments.json = true;
            break;
        case 'h':
            std::fputs(kHelp, stdout);
            return kDone;
        case 'v':
            std::puts("lyn-advertiser " LYN_VERSION);
            return kDone;
        default:
            return kUsage;
        }
    }
    if (optind < argc) {
        std::fprintf(stderr, "lyn-advertiser: unexpected argument '%s'\n", argv[optind]);
        return kUsage;
    }
    done = false;
    return kDone;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        Arguments arguments;
        bool done = false;
        const int status = Parse(argc, argv, arguments, done);
        return done ? status : Run(arguments);
    } catch (const ConfigError& error) {
        std::fprintf(stderr, "lyn-advertiser: %s\n", error.what());
        return kUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lyn-advertiser: %s\n", error.what());
        return kFailed;
    }
}
