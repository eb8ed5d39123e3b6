// SPDX-License-Identifier: Apache-2.0
#include "lyn_platform/files.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

namespace fs = std::filesystem;

class Files : public SimulatorTest {
protected:
    static std::string Place(const char* path)
    {
        std::array<char, 4096> place{};
        EXPECT_EQ(platform_file_path(path, place.data(), place.size()), 0);
        return place.data();
    }

    static std::string Content(const std::string& place)
    {
        std::ostringstream content;
        content << std::ifstream(place).rdbuf();
        return content.str();
    }
};

TEST_F(Files, LieBelowAFreshFolder)
{
    EXPECT_EQ(Place("/opt/etc/file"), FilePrefix() + "/opt/etc/file");
    EXPECT_TRUE(fs::is_empty(FilePrefix()));
    EXPECT_FALSE(fs::exists(Place("/opt/etc/file")));
}

TEST_F(Files, AreWrittenWithTheirFolders)
{
    WriteFile("/opt/etc/early", "1");
    const std::string early = Place("/opt/etc/early");
    WriteFile("/opt/etc/late", "2");
    WriteFile("/opt/etc/late", "3");
    EXPECT_EQ(Content(early), "1");
    EXPECT_EQ(Content(Place("/opt/etc/late")), "3");
}

TEST_F(Files, AreGoneAfterAReset)
{
    WriteFile("/opt/etc/file", "1");
    const std::string prefix = FilePrefix();
    ASSERT_TRUE(fs::exists(prefix + "/opt/etc/file"));
    Reset();
    EXPECT_FALSE(fs::exists(prefix));
    EXPECT_NE(FilePrefix(), prefix);
}

TEST_F(Files, OfOthersAreNeverRemoved)
{
    const std::string prefix = FilePrefix();
    std::ofstream(prefix + "/of-another") << "precious";
    Reset();
    EXPECT_EQ(Content(prefix + "/of-another"), "precious");
    fs::remove_all(prefix);
}

TEST_F(Files, BelowAFolderOfTheTestsOwnStay)
{
    std::string folder = (fs::temp_directory_path() / "lyn-test-XXXXXX").string();
    ASSERT_NE(::mkdtemp(folder.data()), nullptr);
    SetFilePrefix(folder);
    WriteFile("/a/b", "kept");
    EXPECT_EQ(Place("/a/b"), folder + "/a/b");
    Reset();
    EXPECT_EQ(Content(folder + "/a/b"), "kept");
    fs::remove_all(folder);
}

TEST_F(Files, MayStayWhereTheyAre)
{
    SetFilePrefix("");
    EXPECT_EQ(Place("/etc/hostname"), "/etc/hostname");
}

TEST_F(Files, HaveAbsolutePathsThatDoNotClimb)
{
    EXPECT_THROW(WriteFile("relative", "x"), std::invalid_argument);
    EXPECT_THROW(WriteFile("/a/../../b", "x"), std::invalid_argument);
    EXPECT_THROW(WriteFile("/folder/", "x"), std::invalid_argument);
    EXPECT_THROW(WriteFile("", "x"), std::invalid_argument);
    std::array<char, 64> place{};
    EXPECT_NE(platform_file_path("relative", place.data(), place.size()), 0);
    EXPECT_NE(platform_file_path(nullptr, place.data(), place.size()), 0);
    EXPECT_NE(platform_file_path("/a", nullptr, 10), 0);
}

TEST_F(Files, HaveAPlaceThatFitsOrNone)
{
    const std::string expected = FilePrefix() + "/a";
    std::string place(expected.size() + 1, '?');
    EXPECT_EQ(platform_file_path("/a", place.data(), expected.size() + 1), 0);
    EXPECT_STREQ(place.c_str(), expected.c_str());
    place.assign(expected.size() + 1, '?');
    EXPECT_NE(platform_file_path("/a", place.data(), expected.size()), 0);
    EXPECT_EQ(place, std::string(expected.size() + 1, '?'));
}

TEST_F(Files, ThatCannotBeWrittenAreAnError)
{
    SetFilePrefix("/proc/lyn-no-such-folder");
    EXPECT_THROW(WriteFile("/a", "x"), std::runtime_error);
}

}  // namespace
}  // namespace lyn::simulator::test
