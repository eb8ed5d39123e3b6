// SPDX-License-Identifier: Apache-2.0
#include "checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "FakeService.h"
#include "PrivateBus.h"

namespace lyn::linux_tests {
namespace {

namespace fs = std::filesystem;
using lynctl::Check;
using lynctl::Level;

constexpr const char* kManager = "org.freedesktop.DBus.ObjectManager";
constexpr const char* kTvName = "db/menu/network/devicename/tv_name";

class ChecksTest : public ::testing::Test {
protected:
    ChecksTest() : folder(fs::temp_directory_path() / ("lyn-checks-" + std::to_string(::getpid())))
    {
        PrivateBus::Instance();
        fs::create_directories(folder);
        ::setenv("LYN_STATE_DIR", (folder / "state").c_str(), 1);
        ::setenv("LYN_RUNTIME_DIR", (folder / "run").c_str(), 1);
    }
    ~ChecksTest() override
    {
        fs::remove_all(folder);
        ::unsetenv("LYN_STATE_DIR");
        ::unsetenv("LYN_RUNTIME_DIR");
    }

    static std::optional<Check> Find(const std::string& name)
    {
        const auto checks = lynctl::CheckMachine();
        const auto found =
            std::find_if(checks.begin(), checks.end(), [&](const Check& check) { return check.name == name; });
        return found != checks.end() ? std::optional(*found) : std::nullopt;
    }

    void Put(const std::string& file, const std::string& content) const
    {
        fs::create_directories((folder / file).parent_path());
        std::ofstream(folder / file) << content;
    }

    const fs::path folder;
    std::unique_ptr<FakeService> bluez = std::make_unique<FakeService>("org.bluez");
};

TEST_F(ChecksTest, TellTheAdapterAndItsPower)
{
    bluez->OnText("/", kManager, "GetManagedObjects",
                  "({objectpath '/org/bluez/hci0': {'org.bluez.Adapter1': {'Address': <'02:00:00:00:00:01'>, "
                  "'Powered': <true>}}},)");
    EXPECT_EQ(Find("bluetoothd")->level, Level::good);
    EXPECT_EQ(Find("adapter")->found, "hci0, 02:00:00:00:00:01");
    EXPECT_EQ(Find("power")->level, Level::good);
}

TEST_F(ChecksTest, FindAnAdapterWithoutLowEnergy)
{
    bluez->OnText("/", kManager, "GetManagedObjects",
                  "({objectpath '/org/bluez/hci0': {'org.bluez.Adapter1': {'Address': <'02:00:00:00:00:01'>, "
                  "'Powered': <true>}}},)");
    const auto haveRoles = [&](const char* roles) {
        bluez->OnText("/org/bluez/hci0", "org.freedesktop.DBus.Properties", "Get", roles);
    };
    haveRoles("(<['central', 'peripheral']>,)");
    EXPECT_EQ(Find("adapter")->level, Level::good);
    haveRoles("(<@as []>,)");
    EXPECT_EQ(Find("adapter")->level, Level::problem);
    haveRoles("(<5>,)");
    EXPECT_EQ(Find("adapter")->level, Level::good) << "a bluetoothd that does not say so";
}

TEST_F(ChecksTest, DoNotBlameTheAdapterForABluetoothdThatDoesNotRun)
{
    bluez.reset();
    EXPECT_EQ(Find("bluetoothd")->mend, "sudo systemctl start bluetooth");
    EXPECT_FALSE(Find("adapter").has_value());
}

TEST_F(ChecksTest, SayThatBluetoothdLetsThisUserAskNothing)
{
    bluez->Fail("/", kManager, "GetManagedObjects", "org.freedesktop.DBus.Error.AccessDenied");
    const auto check = Find("bluetoothd");
    EXPECT_EQ(check->level, Level::problem);
    EXPECT_NE(check->mend.find("usermod -aG bluetooth"), std::string::npos) << check->mend;
    EXPECT_FALSE(Find("adapter").has_value());
}

TEST_F(ChecksTest, SayThatBluetoothdDoesNotAnswer)
{
    bluez->On("/", kManager, "GetManagedObjects", [](GDBusMessage*) -> GDBusMessage* { return nullptr; });
    const auto check = Find("bluetoothd");
    EXPECT_EQ(check->found, "does not answer");
    EXPECT_EQ(check->mend, "sudo systemctl restart bluetooth");
}

TEST_F(ChecksTest, SayThatThereIsNoAdapter)
{
    bluez->OnText("/", kManager, "GetManagedObjects", "(@a{oa{sa{sv}}} {},)");
    EXPECT_EQ(Find("bluetoothd")->level, Level::good);
    EXPECT_EQ(Find("adapter")->level, Level::problem);
}

TEST_F(ChecksTest, AcceptSettingsThatNobodyHasMade)
{
    EXPECT_EQ(Find("settings")->level, Level::good);
}

TEST_F(ChecksTest, FindAFolderThatNoSettingCanBeWrittenInto)
{
    Put("state/db", "a file in the way");
    const auto check = Find("settings");
    EXPECT_EQ(check->level, Level::problem);
    EXPECT_NE(check->found.find("state/db"), std::string::npos) << check->found;
}

TEST_F(ChecksTest, FindASettingThatIsNoneOrOfTheWrongKind)
{
    for (const char* const line : {"nonsense", "int 5"}) {
        Put(std::string("state/") + kTvName, line);
        const auto check = Find("settings");
        EXPECT_EQ(check->level, Level::problem) << line;
        EXPECT_NE(check->found.find(kTvName), std::string::npos) << check->found;
        EXPECT_NE(check->mend.find("lynctl settings set"), std::string::npos) << check->mend;
    }
}

}  // namespace
}  // namespace lyn::linux_tests
