// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <thread>

#include "StoreTest.h"
#include "lyn_platform/files.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/system_info.h"
#include "settings/Defaults.h"

namespace lyn::linux_platform {
namespace {

constexpr const char* kTvName = "db/menu/network/devicename/tv_name";
constexpr const char* kDeviceType = "com.calyxon/featureconf/devicename.device_type_index";

/// The functions of the seam. They keep to one store for the life of the process.
class SettingsApiTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_folder = new std::filesystem::path(std::filesystem::temp_directory_path() /
                                             ("lyn-settings-api-" + std::to_string(::getpid())));
        std::filesystem::create_directories(*s_folder);
        ::setenv("LYN_STATE_DIR", (*s_folder / "state").c_str(), 1);
        ::setenv("LYN_RUNTIME_DIR", (*s_folder / "run").c_str(), 1);
        ::setenv("LYN_LOG_TARGET", "stderr", 1);
    }
    static void TearDownTestSuite()
    {
        std::filesystem::remove_all(*s_folder);
        delete s_folder;
        ::unsetenv("LYN_STATE_DIR");
        ::unsetenv("LYN_RUNTIME_DIR");
    }
    void TearDown() override
    {
        std::filesystem::remove_all(*s_folder / "state");
        std::filesystem::remove_all(*s_folder / "run");
    }

    static SettingsStore Store() { return SettingsStore({*s_folder / "state", *s_folder / "run"}); }

    static inline std::filesystem::path* s_folder = nullptr;
};

TEST_F(SettingsApiTest, StoresAndReadsIntegers)
{
    ASSERT_EQ(vconf_set_int("memory/a", -42), 0);
    int value = 0;
    EXPECT_EQ(vconf_get_int("memory/a", &value), 0);
    EXPECT_EQ(value, -42);
}

TEST_F(SettingsApiTest, FailsForTheOtherTypeAndForBadKeys)
{
    ASSERT_EQ(vconf_set_int("memory/a", 1), 0);
    Store().Write("memory/b", std::string("text"));
    int value = 7;
    EXPECT_EQ(vconf_get_str("memory/a"), nullptr);
    EXPECT_NE(vconf_get_int("memory/b", &value), 0);
    EXPECT_NE(vconf_get_int("memory/absent", &value), 0);
    EXPECT_NE(vconf_get_int("../etc/passwd", &value), 0);
    EXPECT_NE(vconf_get_int(nullptr, &value), 0);
    EXPECT_NE(vconf_get_int("memory/a", nullptr), 0);
    EXPECT_NE(vconf_set_int(nullptr, 1), 0);
    EXPECT_NE(vconf_set_int("elsewhere/a", 1), 0);
    EXPECT_EQ(vconf_get_str(nullptr), nullptr);
    EXPECT_EQ(value, 7);
}

TEST_F(SettingsApiTest, WritesADefaultAtItsFirstUse)
{
    EXPECT_EQ(Store().Read(kTvName), std::nullopt);
    char* const name = vconf_get_str(kTvName);
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(Store().Read(kTvName), Setting(std::string(name)));
    std::free(name);
    int type = 0;
    EXPECT_EQ(system_info_get_custom_int(kDeviceType, &type), 0);
    EXPECT_EQ(Store().Read(SystemInfoKey(kDeviceType)), Setting(type));
}

TEST_F(SettingsApiTest, PrefersWhatIsSetToTheDefault)
{
    Store().Write(kTvName, std::string("Kitchen"));
    Store().Write(SystemInfoKey(kDeviceType), 3);
    char* const name = vconf_get_str(kTvName);
    EXPECT_STREQ(name, "Kitchen");
    std::free(name);
    int type = 0;
    EXPECT_EQ(system_info_get_custom_int(kDeviceType, &type), 0);
    EXPECT_EQ(type, 3);
}

TEST_F(SettingsApiTest, PutsNoDefaultInPlaceOfWhatIsSetMeanwhile)
{
    for (int i = 0; i < 200; ++i) {
        std::filesystem::remove(Store().FileOf(kTvName));
        std::thread writer([] { Store().Write(kTvName, std::string("Mine")); });
        std::free(vconf_get_str(kTvName));
        writer.join();
        ASSERT_EQ(Store().Read(kTvName), Setting(std::string("Mine"))) << "round " << i;
    }
}

TEST_F(SettingsApiTest, UsesADefaultThatCannotBeKept)
{
    std::ofstream(*s_folder / "state") << "a file in the way";
    char* const name = vconf_get_str(kTvName);
    EXPECT_NE(name, nullptr);
    std::free(name);
    std::filesystem::remove(*s_folder / "state");
}

TEST_F(SettingsApiTest, KnowsNoOtherFeatureValues)
{
    int value = 7;
    EXPECT_NE(system_info_get_custom_int("org.example/unknown", &value), 0);
    EXPECT_NE(system_info_get_custom_int(nullptr, &value), 0);
    EXPECT_EQ(value, 7);
}

TEST(FilePath, IsThePathOnATvUnlessAFolderStandsBeforeIt)
{
    char place[64] = {};
    EXPECT_EQ(platform_file_path("/opt/x", place, sizeof place), 0);
    EXPECT_STREQ(place, "/opt/x");
    ::setenv("LYN_FILES_DIR", "/srv/tv", 1);
    EXPECT_EQ(platform_file_path("/opt/x", place, sizeof place), 0);
    EXPECT_STREQ(place, "/srv/tv/opt/x");
    EXPECT_NE(platform_file_path("/opt/x", place, 13), 0) << "no room for the NUL";
    EXPECT_EQ(platform_file_path("/opt/x", place, 14), 0);
    ::unsetenv("LYN_FILES_DIR");
    EXPECT_NE(platform_file_path("opt/x", place, sizeof place), 0);
    EXPECT_NE(platform_file_path(nullptr, place, sizeof place), 0);
    EXPECT_NE(platform_file_path("/opt/x", nullptr, 0), 0);
}

}  // namespace
}  // namespace lyn::linux_platform
