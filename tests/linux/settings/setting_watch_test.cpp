// SPDX-License-Identifier: Apache-2.0
#include "settings/SettingWatch.h"

#include <glib.h>

#include "StoreTest.h"

namespace lyn::linux_platform {
namespace {

class SettingWatchTest : public StoreTest {
protected:
    /// Runs the main context until the condition holds; false after a generous time.
    static bool RunUntil(const std::function<bool()>& done)
    {
        const gint64 limit = g_get_monotonic_time() + gint64{20} * G_USEC_PER_SEC;
        while (!done() && g_get_monotonic_time() < limit) {
            g_main_context_iteration(nullptr, FALSE);
            g_usleep(1000);
        }
        return done();
    }
};

TEST_F(SettingWatchTest, TellsOfASettingThatIsMadeReplacedAndRemoved)
{
    int told = 0;
    const SettingWatch watch(store.FileOf("memory/a/b"), [&] { ++told; });
    store.Write("memory/a/b", 1);
    EXPECT_TRUE(RunUntil([&] { return told > 0; }));
    int before = told;
    store.Write("memory/a/b", 2);
    EXPECT_TRUE(RunUntil([&] { return told > before; }));
    before = told;
    std::filesystem::remove(store.FileOf("memory/a/b"));
    EXPECT_TRUE(RunUntil([&] { return told > before; }));
}

TEST_F(SettingWatchTest, TellsOfAFirstValue)
{
    int told = 0;
    const SettingWatch watch(store.FileOf("memory/a"), [&] { ++told; });
    EXPECT_TRUE(store.WriteFirst("memory/a", 1));
    EXPECT_TRUE(RunUntil([&] { return told > 0; }));
}

TEST_F(SettingWatchTest, TellsOfAValueWrittenInPlace)
{
    store.Write("memory/a", 1);
    int told = 0;
    const SettingWatch watch(store.FileOf("memory/a"), [&] { ++told; });
    PutFile("memory/a", "int 2\n");
    EXPECT_TRUE(RunUntil([&] { return told > 0; }));
}

TEST_F(SettingWatchTest, TellsNothingOnceItIsGone)
{
    int told = 0;
    {
        const SettingWatch watch(store.FileOf("memory/a"), [&] { ++told; });
        store.Write("memory/a", 1);
    }
    int other = 0;
    const SettingWatch later(store.FileOf("memory/a"), [&] { ++other; });
    store.Write("memory/a", 2);
    EXPECT_TRUE(RunUntil([&] { return other > 0; }));
    EXPECT_EQ(told, 0);
}

TEST_F(SettingWatchTest, SaysWhenTheFolderCannotBeMade)
{
    PutFile("memory/file", "int 1\n");
    EXPECT_THROW(SettingWatch(store.FileOf("memory/file/below/it"), [] {}), std::runtime_error);
}

}  // namespace
}  // namespace lyn::linux_platform
