// SPDX-License-Identifier: Apache-2.0
#include "Common/TvFile.h"

#include <climits>
#include <string>

#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

class FileOfTheTv : public SimulatedTv {
protected:
    static std::string FirstLine(std::ifstream& file)
    {
        std::string line;
        std::getline(file, line);
        return line;
    }
};

TEST_F(FileOfTheTv, IsReadWhereThePlatformKeepsIt)
{
    simulator::WriteFile("/opt/etc/.lyn_appid", "org.example.app\nsecond line\n");
    std::ifstream file = OpenTvFile("/opt/etc/.lyn_appid");
    ASSERT_TRUE(file.is_open());
    EXPECT_EQ(FirstLine(file), "org.example.app");
}

TEST_F(FileOfTheTv, ThatIsNotThereIsNotOpen)
{
    EXPECT_FALSE(OpenTvFile("/opt/etc/.lyn_appid").is_open());
    // Not the machine's own file either.
    EXPECT_FALSE(OpenTvFile("/etc/passwd").is_open());
}

TEST_F(FileOfTheTv, WhosePlaceThePlatformDoesNotTellIsNotOpen)
{
    simulator::WriteFile("/opt/etc/.lyn_appid", "org.example.app");
    simulator::FailCall("platform_file_path", -5);
    EXPECT_FALSE(OpenTvFile("/opt/etc/.lyn_appid").is_open());
    EXPECT_TRUE(OpenTvFile("/opt/etc/.lyn_appid").is_open());
}

TEST_F(FileOfTheTv, WhosePathIsTooLongIsNotOpen)
{
    EXPECT_FALSE(OpenTvFile(("/" + std::string(PATH_MAX, 'x')).c_str()).is_open());
}

}  // namespace
}  // namespace lyn::test
