// SPDX-License-Identifier: Apache-2.0
//
// lynctl doctor as its users run it: what it prints, and its exit status.
#include <json/json.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <set>
#include <sstream>

#include "PlayedMachine.h"
#include "Program.h"

namespace lyn::linux_tests {
namespace {

class Doctor : public PlayedMachine {
protected:
    struct Result {
        int status;
        std::string output;
    };

    static Result Run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {LYNCTL, "doctor"});
        Program program(words);
        const int status = program.WaitForEnd();
        EXPECT_EQ(program.Errors(), "");
        return {status, program.Output()};
    }

    static std::vector<Json::Value> Objects(const std::string& output)
    {
        Json::CharReaderBuilder builder;
        builder["failIfExtra"] = true;
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        std::vector<Json::Value> objects;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            Json::Value object;
            EXPECT_TRUE(reader->parse(line.data(), line.data() + line.size(), &object, nullptr)) << line;
            objects.push_back(object);
        }
        return objects;
    }

    /// Checks the shape of all lines. @return the level of each check by its name
    static std::map<std::string, std::string> Levels(const std::string& output)
    {
        std::map<std::string, std::string> levels;
        auto objects = Objects(output);
        EXPECT_FALSE(objects.empty());
        const Json::Value summary = objects.empty() ? Json::Value() : objects.back();
        EXPECT_EQ(summary.getMemberNames(), (std::vector<std::string>{"event", "notes", "problems", "seconds"}));
        EXPECT_EQ(summary["event"], "summary");
        objects.resize(objects.empty() ? 0 : objects.size() - 1);
        std::map<std::string, int> counts;
        for (const Json::Value& check : objects) {
            EXPECT_EQ(check.getMemberNames(),
                      (std::vector<std::string>{"check", "event", "found", "level", "mend", "seconds"}));
            EXPECT_EQ(check["event"], "check");
            EXPECT_TRUE(check["seconds"].isNumeric());
            EXPECT_NE(check["found"], "");
            EXPECT_EQ(check["mend"] == "", check["level"] == "good");
            ++counts[check["level"].asString()];
            levels[check["check"].asString()] = check["level"].asString();
        }
        EXPECT_EQ(summary["problems"].asInt(), counts["problem"]);
        EXPECT_EQ(summary["notes"].asInt(), counts["note"]);
        EXPECT_EQ(levels.size(), objects.size());
        return levels;
    }
};

TEST_F(Doctor, AMachineThatHasWhatItNeedsIsStatusZero)
{
    const Result result = Run({"--json"});
    EXPECT_EQ(result.status, 0);
    const auto levels = Levels(result.output);
    EXPECT_EQ(levels.size(), 9U);
    for (const auto& [name, level] : levels) {
        EXPECT_TRUE(level == "good" || name == "rights" || name == "MTU") << name;
    }
    EXPECT_NE(Run({}).output.find("This machine has what it needs (0 problems, "), std::string::npos);
}

TEST_F(Doctor, AProblemIsStatusOne)
{
    bluez->SetPowered("hci0", false);
    supplicant->Die();
    const Result result = Run({"--json"});
    EXPECT_EQ(result.status, 1);
    auto levels = Levels(result.output);
    EXPECT_EQ(levels["power"], "problem");
    EXPECT_EQ(levels["access point"], "note");
    EXPECT_EQ(levels["adapter"], "good");
    EXPECT_NE(Run({}).output.find("This machine cannot serve as it is (1 problem, "), std::string::npos);
}

TEST_F(Doctor, ANoteAloneIsNoFailure)
{
    supplicant->Die();
    EXPECT_EQ(Run({}).status, 0);
}

TEST_F(Doctor, TextHasAMarkAndTheCureBelow)
{
    ::setenv("LC_ALL", "C.UTF-8", 1);
    bluez->RemoveAdapter("hci0");
    std::string text = Run({}).output;
    EXPECT_NE(text.find("\u2714 bluetoothd    runs\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\u2718 adapter       there is none\n"
                        "                \u2192 plug in a Bluetooth adapter that does Low Energy\n"),
              std::string::npos)
        << text;
    ::setenv("LC_ALL", "C", 1);
    text = Run({}).output;
    EXPECT_NE(text.find("ok bluetoothd    runs\n"), std::string::npos) << text;
    EXPECT_NE(text.find("X  adapter       there is none\n"
                        "                 -> plug in a Bluetooth adapter that does Low Energy\n"),
              std::string::npos)
        << text;
    ::unsetenv("LC_ALL");
}

TEST_F(Doctor, WithoutABusTheRestIsCheckedAllTheSame)
{
    const std::string address = PrivateBus::Instance().Address();
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/at/all", 1);
    const Result result = Run({"--json"});
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    EXPECT_EQ(result.status, 1);
    auto levels = Levels(result.output);
    EXPECT_EQ(levels["system bus"], "problem");
    EXPECT_EQ(levels.count("bluetoothd"), 0U) << "nobody knows";
    EXPECT_EQ(levels["Wi-Fi Direct"], "good");
    EXPECT_EQ(levels["settings"], "good");
    EXPECT_NE(result.output.find("sudo systemctl start dbus"), std::string::npos);
}

TEST_F(Doctor, AFolderThatCannotBeWrittenIsAProblem)
{
    // The superuser may write everywhere but where the kernel lets nobody.
    const std::filesystem::path locked = ::geteuid() == 0 ? "/proc/sys" : folder.Path() / "locked";
    if (::geteuid() != 0) {
        std::filesystem::create_directory(locked);
        ::chmod(locked.c_str(), 0500);
    }
    ::setenv("LYN_STATE_DIR", (locked / "lyn").c_str(), 1);
    const Result result = Run({"--json"});
    EXPECT_EQ(Levels(result.output)["settings"], "problem") << result.output;
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("sudo install -d -o $USER " + (locked / "lyn").string() + "\""),
              std::string::npos)
        << result.output;
}

}  // namespace
}  // namespace lyn::linux_tests
