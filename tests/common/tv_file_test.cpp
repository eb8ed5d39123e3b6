// SPDX-License-Identifier: Apache-2.0
#include "Common/TvFile.h"

#include <sys/stat.h>

#include <climits>
#include <filesystem>
#include <string>

#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

constexpr const char* PATH = "/opt/etc/.lyn_appid";
constexpr std::size_t ENOUGH = 100000;

class FileOfTheTv : public SimulatedTv {
protected:
    static std::string Place() { return simulator::FilePrefix() + PATH; }
};

TEST_F(FileOfTheTv, IsReadWhereThePlatformKeepsIt)
{
    simulator::WriteFile(PATH, "org.example.app\nsecond line\n");
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), "org.example.app\nsecond line\n");
}

TEST_F(FileOfTheTv, MayHoldAnyBytesOrNone)
{
    const std::string bytes("\0\xFF\r\n\0", 5);
    simulator::WriteFile(PATH, bytes);
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), bytes);
    simulator::WriteFile(PATH, "");
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), "");
}

TEST_F(FileOfTheTv, IsReadToTheLimitAndNoFurther)
{
    const std::string content = std::string(9000, 'a') + "end";
    simulator::WriteFile(PATH, content);
    for (const std::size_t limit : std::vector<std::size_t>{0, 1, 4095, 4096, 4097, 9002, 9003, 9004}) {
        SCOPED_TRACE(limit);
        EXPECT_EQ(ReadTvFile(PATH, limit), content.substr(0, limit));
    }
}

TEST_F(FileOfTheTv, ThatIsNotThereIsNone)
{
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), std::nullopt);
    // Not the machine's own file either.
    EXPECT_EQ(ReadTvFile("/etc/passwd", ENOUGH), std::nullopt);
}

TEST_F(FileOfTheTv, ThatIsADirectoryIsNone)
{
    std::filesystem::create_directories(Place());
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), std::nullopt);
}

TEST_F(FileOfTheTv, ThatIsAPipeIsNoneAndNotWaitedFor)
{
    std::filesystem::create_directories(std::filesystem::path(Place()).parent_path());
    ASSERT_EQ(mkfifo(Place().c_str(), 0600), 0);
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), std::nullopt);
}

TEST_F(FileOfTheTv, ThatNeverEndsIsNone)
{
    std::filesystem::create_directories(std::filesystem::path(Place()).parent_path());
    std::filesystem::create_symlink("/dev/zero", Place());
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), std::nullopt);
}

TEST_F(FileOfTheTv, WhosePlaceThePlatformDoesNotTellIsNone)
{
    simulator::WriteFile(PATH, "org.example.app");
    simulator::FailCall("platform_file_path", -5);
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), std::nullopt);
    EXPECT_EQ(ReadTvFile(PATH, ENOUGH), "org.example.app");
}

TEST_F(FileOfTheTv, WhosePathIsTooLongIsNone)
{
    EXPECT_EQ(ReadTvFile(("/" + std::string(PATH_MAX, 'x')).c_str(), ENOUGH), std::nullopt);
}

}  // namespace
}  // namespace lyn::test
