// SPDX-License-Identifier: Apache-2.0
//
// lyn-advertiser as its users run it, with a bluetoothd that is played.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>

#include "FakeAdvertising.h"
#include "FakeBluez.h"
#include "PrivateBus.h"
#include "Program.h"
#include "TemporaryFolder.h"
#include "settings/SettingsStore.h"

namespace lyn::linux_tests {
namespace {

using linux_platform::SettingsStore;
using OnAir = std::vector<std::string>;

constexpr const char* kMirroring = "memory/org.nuvex.bleapp/mirroring_trigger";
constexpr const char* kKov = "memory/org.nuvex.bleapp/kov_trigger";
constexpr const char* kRegister = "LEAdvertisingManager1.RegisterAdvertisement";
constexpr const char* kUnregister = "LEAdvertisingManager1.UnregisterAdvertisement";
constexpr const char* kConfig = R"({
  "mirroring": {"manufacturerData": {"company": 117, "data": "01 19 aB 00 ff"}, "localName": "Living room"},
  "kov": {"connectable": false, "serviceUuids": ["1e5ed7a3-9e92-41c1-af60-6a15643dfb34"]}
})";

class AdvertiserTest : public ::testing::Test {
protected:
    AdvertiserTest() : store({folder.Make("state", "LYN_STATE_DIR"), folder.Make("run", "LYN_RUNTIME_DIR")})
    {
        PrivateBus::Instance();
        ::unsetenv("LYN_BT_ADAPTER");
        std::ofstream(folder.Path() / "config.json") << kConfig;
        bluez = std::make_unique<FakeBluez>();
        advertising = std::make_unique<FakeAdvertising>(*bluez);
    }

    void Run(std::vector<std::string> words = {"--json"})
    {
        words.insert(words.begin(), {LYN_ADVERTISER, "--config", (folder.Path() / "config.json").string()});
        program.emplace(words);
    }

    /// Runs it with an advertisement of mirroring on the air.
    void RunMirroring()
    {
        store.Write(kMirroring, 100);
        Run();
        ASSERT_TRUE(IsOnAir({"hci0 mirroring"}));
        ASSERT_TRUE(program->WaitFor(News("mirroring", "on", 100)));
    }

    bool IsOnAir(const OnAir& wanted) const
    {
        return RunUntil([&] { return advertising->OnAir() == wanted; });
    }

    static std::string News(const std::string& feature, const std::string& what, int interval)
    {
        return R"({"advertisement":")" + what + R"(","feature":")" + feature + R"(","interval":)" +
               std::to_string(interval);
    }

    int StatusOf(const std::vector<std::string>& words)
    {
        Run(words);
        return program->WaitForEnd();
    }

    TemporaryFolder folder;
    SettingsStore store;
    std::unique_ptr<FakeBluez> bluez;
    std::unique_ptr<FakeAdvertising> advertising;
    std::optional<Program> program;
};

TEST_F(AdvertiserTest, ANumberPutsTheFeatureOnTheAirAndZeroTakesItBack)
{
    Run();
    ASSERT_TRUE(RunUntil([&] { return bluez->Count("ObjectManager.GetManagedObjects") > 0; }));
    EXPECT_TRUE(IsOnAir({}));
    store.Write(kMirroring, 100);
    EXPECT_TRUE(IsOnAir({"hci0 mirroring"}));
    EXPECT_TRUE(program->WaitFor(News("mirroring", "on", 100) + "}\n"));
    store.Write(kMirroring, 0);
    EXPECT_TRUE(IsOnAir({}));
    EXPECT_TRUE(program->WaitFor(News("mirroring", "off", 0) + "}\n"));
    EXPECT_EQ(bluez->Count(kUnregister), 1);
}

TEST_F(AdvertiserTest, BluetoothdReadsThePayloadOfTheConfigurationByteForByte)
{
    store.Write(kMirroring, 100);
    store.Write(kKov, 250);
    Run();
    ASSERT_TRUE(RunUntil([&] { return advertising->OnAir().size() == 2; }));
    EXPECT_EQ(advertising->Property("mirroring", "Type"), "'peripheral'");
    EXPECT_EQ(advertising->Property("mirroring", "ManufacturerData"),
              "{uint16 117: <[byte 0x01, 0x19, 0xab, 0x00, 0xff]>}");
    EXPECT_EQ(advertising->Property("mirroring", "LocalName"), "'Living room'");
    EXPECT_EQ(advertising->Property("mirroring", "ServiceUUIDs"), "@as []");
    EXPECT_EQ(advertising->Property("mirroring", "MinInterval"), "uint32 100");
    EXPECT_EQ(advertising->Property("mirroring", "MaxInterval"), "uint32 100");
    EXPECT_EQ(advertising->Property("kov", "Type"), "'broadcast'");
    EXPECT_EQ(advertising->Property("kov", "ManufacturerData"), "@a{qv} {}");
    EXPECT_EQ(advertising->Property("kov", "LocalName"), "") << "bluetoothd takes an empty name for a name";
    EXPECT_EQ(advertising->Property("kov", "ServiceUUIDs"), "['1e5ed7a3-9e92-41c1-af60-6a15643dfb34']");
    EXPECT_EQ(advertising->Property("kov", "MinInterval"), "uint32 250");
}

TEST_F(AdvertiserTest, FeaturesAreSwitchedIndependently)
{
    RunMirroring();
    store.Write(kKov, 200);
    EXPECT_TRUE(IsOnAir({"hci0 mirroring", "hci0 kov"}));
    store.Write(kMirroring, 0);
    EXPECT_TRUE(IsOnAir({"hci0 kov"}));
    EXPECT_EQ(bluez->Count(kRegister), 2) << "kov was left alone";
}

TEST_F(AdvertiserTest, AnotherIntervalReplacesTheAdvertisement)
{
    RunMirroring();
    store.Write(kMirroring, 500);
    EXPECT_TRUE(RunUntil([&] { return advertising->Property("mirroring", "MaxInterval") == "uint32 500"; }));
    EXPECT_TRUE(program->WaitFor(News("mirroring", "on", 500)));
    EXPECT_EQ(advertising->OnAir().size(), 1U);
    store.Write(kMirroring, 500);
    RunQuietly();
    EXPECT_EQ(bluez->Count(kRegister), 2) << "the same interval once more";
}

TEST_F(AdvertiserTest, WhatIsNoIntervalIsOff)
{
    using linux_platform::Setting;
    for (const Setting& value :
         {Setting(0), Setting(-1), Setting(10'241), Setting(2'147'483'647), Setting(-2'147'483'647 - 1),
          Setting(std::string("100")), Setting(std::string())}) {
        store.Write(kMirroring, 100);
        if (!program) {
            Run();
        }
        ASSERT_TRUE(IsOnAir({"hci0 mirroring"}));
        store.Write(kMirroring, value);
        EXPECT_TRUE(IsOnAir({})) << linux_platform::LineOf(value);
    }
    const std::string complaint = R"("reason":")" + std::string(kMirroring) + ": ";
    for (const char* const found : {"-1", "10241", "2147483647", "-2147483648", "a text"}) {
        EXPECT_TRUE(program->WaitFor(complaint + found + " is no interval: 0 (off) to 10240 ms"));
    }
    EXPECT_EQ(program->Count(complaint), 6U) << "twice a text; 0 is one";
    store.Write(kMirroring, 10'240);
    EXPECT_TRUE(RunUntil([&] { return advertising->Property("mirroring", "MinInterval") == "uint32 10240"; }));
    store.Write(kMirroring, 1);
    EXPECT_TRUE(RunUntil([&] { return advertising->Property("mirroring", "MinInterval") == "uint32 1"; }));
}

TEST_F(AdvertiserTest, WhatIsNoIntervalIsToldOnce)
{
    RunMirroring();
    store.Write(kMirroring, -5);
    ASSERT_TRUE(program->WaitFor("is no interval"));
    store.Write(kKov, 200);
    ASSERT_TRUE(program->WaitFor(News("kov", "on", 200)));
    EXPECT_EQ(program->Count("is no interval"), 1U);
}

TEST_F(AdvertiserTest, ASettingThatIsRemovedOrBrokenIsOff)
{
    RunMirroring();
    std::filesystem::remove(store.FileOf(kMirroring));
    EXPECT_TRUE(IsOnAir({}));
    store.Write(kMirroring, 100);
    EXPECT_TRUE(IsOnAir({"hci0 mirroring"}));
    std::ofstream(store.FileOf(kMirroring)) << "garbage\n";
    EXPECT_TRUE(IsOnAir({}));
    EXPECT_TRUE(program->WaitFor(R"("reason":")" + store.FileOf(kMirroring).string() + ": is no setting"));
}

TEST_F(AdvertiserTest, ARefusalIsToldAndTriedAgain)
{
    bluez->Treat(kRegister, 1, Treatment::Fails("org.bluez.Error.NotPermitted", "Maximum advertisements reached"));
    store.Write(kMirroring, 100);
    Run();
    EXPECT_TRUE(program->WaitFor(News("mirroring", "failed", 100) +
                                 R"(,"reason":"org.bluez.Error.NotPermitted: Maximum advertisements reached"})"));
    EXPECT_TRUE(program->WaitFor(News("mirroring", "on", 100)));
    EXPECT_EQ(advertising->OnAir(), OnAir{"hci0 mirroring"});
}

TEST_F(AdvertiserTest, AnEndThatComesLateSaysNothingOfWhatHasTakenItsPlace)
{
    Treatment lateRefusal = Treatment::Fails("org.bluez.Error.Failed");
    lateRefusal.delayMs = 700;
    bluez->Treat(kRegister, 1, lateRefusal);
    store.Write(kMirroring, 100);
    Run();
    ASSERT_TRUE(RunUntil([&] { return bluez->Count(kRegister) == 1; }));
    store.Write(kMirroring, 200);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count(kRegister) == 2; }));
    store.Write(kMirroring, 100);
    ASSERT_TRUE(program->WaitFor(News("mirroring", "on", 100)));
    RunQuietly(900);
    store.Write(kKov, 300);
    ASSERT_TRUE(program->WaitFor(News("kov", "on", 300)));
    EXPECT_EQ(program->Count("failed"), 0U) << program->Output();
    EXPECT_EQ(advertising->OnAir(), (OnAir{"hci0 mirroring", "hci0 kov"}));
}

TEST_F(AdvertiserTest, BluetoothdThatComesBackIsAskedAgain)
{
    RunMirroring();
    bluez->Die();
    advertising->Forget();
    EXPECT_TRUE(program->WaitFor(News("mirroring", "off", 0)));
    bluez->Return();
    EXPECT_TRUE(IsOnAir({"hci0 mirroring"}));
    EXPECT_TRUE(program->WaitFor(News("mirroring", "on", 100), 2));
}

TEST_F(AdvertiserTest, BluetoothdMayComeLater)
{
    bluez->Die();
    store.Write(kMirroring, 100);
    Run();
    RunQuietly(300);
    bluez->Return();
    EXPECT_TRUE(IsOnAir({"hci0 mirroring"}));
}

TEST_F(AdvertiserTest, AnAdapterThatWasOffIsUsedAgain)
{
    RunMirroring();
    bluez->SetPowered("hci0", false);
    EXPECT_TRUE(program->WaitFor(News("mirroring", "off", 0)));
    EXPECT_TRUE(IsOnAir({}));
    bluez->SetPowered("hci0", true);
    EXPECT_TRUE(IsOnAir({"hci0 mirroring"}));
}

TEST_F(AdvertiserTest, TheAdapterThatIsAskedForIsUsed)
{
    bluez->AddAdapter("hci1", "02:00:00:00:00:11", true);
    for (const char* const asked : {"hci1", "02:00:00:00:00:11"}) {
        ::setenv("LYN_BT_ADAPTER", asked, 1);
        store.Write(kMirroring, 100);
        Run();
        EXPECT_TRUE(IsOnAir({"hci1 mirroring"}));
        program->Send(SIGTERM);
        EXPECT_EQ(program->WaitForEnd(), 0);
    }
    ::unsetenv("LYN_BT_ADAPTER");
}

TEST_F(AdvertiserTest, ItMovesToTheAdapterThatIsLeft)
{
    bluez->AddAdapter("hci1", "02:00:00:00:00:11", true);
    RunMirroring();
    bluez->RemoveAdapter("hci0");
    EXPECT_TRUE(RunUntil([&] {
        const auto air = advertising->OnAir();
        return !air.empty() && air.back() == "hci1 mirroring";
    }));
}

TEST_F(AdvertiserTest, ItEndsWhenItIsToldToAndLeavesNothingOnTheAir)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        store.Write(kKov, 0);
        RunMirroring();
        store.Write(kKov, 100);
        ASSERT_TRUE(IsOnAir({"hci0 mirroring", "hci0 kov"}));
        program->Send(signal);
        EXPECT_EQ(program->WaitForEnd(), 0);
        EXPECT_TRUE(IsOnAir({}));
        EXPECT_EQ(program->Errors().find("ERROR"), std::string::npos) << program->Errors();
    }
}

TEST_F(AdvertiserTest, AReleaseIsUnderstood)
{
    RunMirroring();
    EXPECT_TRUE(advertising->Release("mirroring"));
}

TEST_F(AdvertiserTest, TextIsForPeople)
{
    store.Write(kMirroring, 100);
    Run({});
    EXPECT_TRUE(program->WaitFor("mirroring: on, every 100 ms\n"));
    store.Write(kMirroring, 0);
    EXPECT_TRUE(program->WaitFor("mirroring: off\n"));
    bluez->Treat(kRegister, 0, Treatment::Fails("org.bluez.Error.Failed", "no"));
    store.Write(kMirroring, 50);
    EXPECT_TRUE(program->WaitFor("mirroring: failed, every 50 ms: org.bluez.Error.Failed: no\n"));
}

TEST_F(AdvertiserTest, ABadConfigurationIsNamedAndIsStatusTwo)
{
    std::ofstream(folder.Path() / "config.json") << R"({"kov": {"localName": 5}})";
    EXPECT_EQ(StatusOf({}), 2);
    EXPECT_EQ(program->Errors(), "lyn-advertiser: " + (folder.Path() / "config.json").string() +
                                     ": kov.localName: a text is wanted\n");
    EXPECT_EQ(StatusOf({"--check"}), 2);
    EXPECT_EQ(StatusOf({"--config", "/nowhere/at/all.json"}), 2);
    EXPECT_EQ(program->Errors(), "lyn-advertiser: /nowhere/at/all.json: No such file or directory\n");
}

TEST_F(AdvertiserTest, BadArgumentsAreStatusTwoAndHelpIsNone)
{
    EXPECT_EQ(StatusOf({"--loud"}), 2);
    EXPECT_EQ(StatusOf({"mirroring"}), 2);
    EXPECT_EQ(program->Errors(), "lyn-advertiser: unexpected argument 'mirroring'\n");
    EXPECT_EQ(StatusOf({"--help"}), 0);
    EXPECT_EQ(program->Output().rfind("Usage: lyn-advertiser", 0), 0U);
    EXPECT_EQ(StatusOf({"--version"}), 0);
    EXPECT_EQ(program->Output().rfind("lyn-advertiser ", 0), 0U);
    EXPECT_EQ(StatusOf({"--check"}), 0);
    EXPECT_EQ(program->Output(), (folder.Path() / "config.json").string() + ": good\n");
}

TEST_F(AdvertiserTest, WithoutASystemBusItFails)
{
    const std::string address = PrivateBus::Instance().Address();
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/at/all", 1);
    Run();
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    EXPECT_EQ(program->WaitForEnd(), 1);
    EXPECT_EQ(program->Errors(), "lyn-advertiser: the system bus cannot be reached\n");
}

TEST_F(AdvertiserTest, ASettingsFolderThatCannotBeMadeIsAFailure)
{
    std::ofstream(folder.Path() / "file") << "in the way";
    ::setenv("LYN_RUNTIME_DIR", (folder.Path() / "file").c_str(), 1);
    EXPECT_EQ(StatusOf({}), 1);
    EXPECT_NE(program->Errors().find((folder.Path() / "file").string()), std::string::npos) << program->Errors();
}

}  // namespace
}  // namespace lyn::linux_tests
