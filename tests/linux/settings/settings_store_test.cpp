// SPDX-License-Identifier: Apache-2.0
#include <glib.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstdlib>
#include <thread>
#include <vector>

#include "StoreTest.h"
#include "settings/Defaults.h"

namespace lyn::linux_platform {
namespace {

namespace fs = std::filesystem;

TEST_F(StoreTest, KeepsNumbersAndTextsApart)
{
    store.Write("db/a", 55);
    store.Write("db/b", std::string("55"));
    EXPECT_EQ(store.Read("db/a"), Setting(55));
    EXPECT_EQ(store.Read("db/b"), Setting(std::string("55")));
}

TEST_F(StoreTest, KeepsTheExtremesOfNumbersAndTexts)
{
    for (const int number : {INT_MIN, -1, 0, INT_MAX}) {
        store.Write("db/number", number);
        EXPECT_EQ(store.Read("db/number"), Setting(number));
    }
    for (const char* const text : {"", " ", "int 5", "Wohnzimmer \xC3\xBC", "a\tb"}) {
        store.Write("db/text", std::string(text));
        EXPECT_EQ(store.Read("db/text"), Setting(std::string(text)));
    }
}

TEST_F(StoreTest, KeepsPersistentAndVolatileKeysInTheirFolders)
{
    EXPECT_EQ(store.FileOf("db/menu/name"), folder / "state/db/menu/name");
    EXPECT_EQ(store.FileOf("memory/menu/name"), folder / "run/memory/menu/name");
}

TEST_F(StoreTest, WritesOneReadableLineForEachKey)
{
    store.Write("memory/org/trigger", 100);
    std::ifstream stream(folder / "run/memory/org/trigger");
    std::string content{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(content, "int 100\n");
    const auto permissions = fs::status(folder / "run/memory/org/trigger").permissions();
    EXPECT_EQ(permissions & fs::perms::mask, fs::perms(0644));
}

TEST_F(StoreTest, HasNothingForAKeyThatNobodySet)
{
    EXPECT_EQ(store.Read("db/absent"), std::nullopt);
}

TEST_F(StoreTest, RefusesKeysThatLeadElsewhere)
{
    for (const char* const key : {"", "db", "db/", "/db/a", "db/../a", "db/./a", "db//a", "db/a/", "other/a",
                                  "db/.a", "db/a b", "db/a\n", "memory", "db/\xC3\xBC"}) {
        EXPECT_THROW(store.FileOf(key), std::invalid_argument) << key;
    }
    EXPECT_THROW(store.FileOf("db/" + std::string(300, 'a')), std::invalid_argument);
}

TEST_F(StoreTest, SaysWhichFileIsNoSetting)
{
    for (const char* const content : {"", "\n", "5\n", "int\n", "int \n", "int 5x\n", "int 99999999999\n",
                                      "int 5\nint 6\n", "text a\nb\n", "Int 5\n"}) {
        PutFile("db/bad", content);
        try {
            store.Read("db/bad");
            FAIL() << content;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find("db/bad"), std::string::npos);
        }
    }
}

TEST_F(StoreTest, ReadsWhatAPersonHasWrittenWithAnEditorOrWithoutANewline)
{
    PutFile("db/a", "int -7");
    PutFile("db/b", "text Living room\n");
    EXPECT_EQ(store.Read("db/a"), Setting(-7));
    EXPECT_EQ(store.Read("db/b"), Setting(std::string("Living room")));
}

TEST_F(StoreTest, RefusesATextOfSeveralLinesAndKeepsTheOldValue)
{
    store.Write("db/a", 1);
    EXPECT_THROW(store.Write("db/a", std::string("a\nb")), std::invalid_argument);
    EXPECT_THROW(store.Write("db/a", std::string("a\0b", 3)), std::invalid_argument);
    EXPECT_EQ(store.Read("db/a"), Setting(1));
}

TEST_F(StoreTest, SaysWhyAKeyCannotBeWrittenAndLeavesNothingBehind)
{
    PutFile("db/file", "int 1\n");
    EXPECT_THROW(store.Write("db/file/below", 2), std::runtime_error);
    fs::create_directories(folder / "state/db/folder");
    EXPECT_THROW(store.Write("db/folder", 2), std::runtime_error);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "state/db"), {}), 2);
}

TEST_F(StoreTest, GivesAFirstValueOnlyToAKeyThatHasNone)
{
    EXPECT_TRUE(store.WriteFirst("db/a", 1));
    EXPECT_FALSE(store.WriteFirst("db/a", 2));
    EXPECT_EQ(store.Read("db/a"), Setting(1));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "state/db"), {}), 1) << "files left behind";
    fs::create_directories(folder / "state/db/folder");
    EXPECT_FALSE(store.WriteFirst("db/folder", 2));
    EXPECT_THROW(store.WriteFirst("db/b", std::string("two\nlines")), std::invalid_argument);
}

TEST_F(StoreTest, LetsReadersSeeOneOfTheValuesOfManyWriters)
{
    const std::string first(2000, 'a');
    const std::string second(2000, 'b');
    store.Write("memory/shared", first);
    std::atomic<bool> stop = false;
    std::vector<std::thread> writers;
    for (const auto* const text : {&first, &second}) {
        writers.emplace_back([&, text] {
            while (!stop) {
                store.Write("memory/shared", *text);
            }
        });
    }
    for (int i = 0; i < 500; ++i) {
        const auto value = store.Read("memory/shared");
        ASSERT_TRUE(value == Setting(first) || value == Setting(second));
    }
    stop = true;
    for (auto& writer : writers) {
        writer.join();
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "run/memory"), {}), 1) << "files left behind";
}

TEST_F(StoreTest, WritesWhatIsAbsentAndNothingOverWhatIsThere)
{
    EXPECT_TRUE(store.WriteFirst("db/a", 1));
    EXPECT_FALSE(store.WriteFirst("db/a", 2));
    EXPECT_EQ(store.Read("db/a"), Setting(1));
    const auto files = std::distance(std::filesystem::directory_iterator(store.FileOf("db/a").parent_path()), {});
    EXPECT_EQ(files, 1) << "a file that was being written is left";
    EXPECT_EQ(std::filesystem::hard_link_count(store.FileOf("db/a")), 1U);
    EXPECT_THROW(store.WriteFirst("db/b", std::string("two\nlines")), std::invalid_argument);
    PutFile("db/file", "int 1\n");
    EXPECT_THROW(store.WriteFirst("db/file/below", 1), std::runtime_error);
}

TEST(Defaults, NameTheTvAfterItsHost)
{
    char host[256] = {};
    ASSERT_EQ(::gethostname(host, sizeof host - 1), 0);
    EXPECT_EQ(DefaultOf("db/menu/network/devicename/tv_name"), Setting(std::string(host)));
}

TEST(Defaults, AreNoneForOtherKeys)
{
    EXPECT_EQ(DefaultOf("memory/wifi/frequency"), std::nullopt);
    EXPECT_EQ(DefaultOf(""), std::nullopt);
}

TEST(SettingsFolders, AreThoseOfRootOrOfTheUserWithoutIt)
{
    ::setenv("LYN_STATE_DIR", "", 1);
    ::unsetenv("LYN_RUNTIME_DIR");
    const auto folders = SettingsFolders::FromEnvironment();
    const bool root = ::geteuid() == 0;
    EXPECT_EQ(folders.state, root ? "/var/lib/lyn" : std::string(g_get_user_state_dir()) + "/lyn");
    EXPECT_EQ(folders.runtime, root ? "/run/lyn" : std::string(g_get_user_runtime_dir()) + "/lyn");
    ::unsetenv("LYN_STATE_DIR");
}

TEST(SettingsFolders, AreThoseOfTheEnvironmentFirst)
{
    ::setenv("LYN_STATE_DIR", "/a", 1);
    ::setenv("LYN_RUNTIME_DIR", "/b", 1);
    const auto folders = SettingsFolders::FromEnvironment();
    EXPECT_EQ(folders.state, "/a");
    EXPECT_EQ(folders.runtime, "/b");
    ::unsetenv("LYN_STATE_DIR");
    ::unsetenv("LYN_RUNTIME_DIR");
    const auto others = SettingsFolders::FromEnvironment();
    EXPECT_EQ(others.state.filename(), "lyn");
    EXPECT_EQ(others.runtime.filename(), "lyn");
    EXPECT_NE(others.state, others.runtime);
}

}  // namespace
}  // namespace lyn::linux_platform
