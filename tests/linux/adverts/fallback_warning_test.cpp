// SPDX-License-Identifier: Apache-2.0
//
// A program of its own: the line is written once in a process.
#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "adverts/FallbackWarning.h"

namespace lyn::linux_platform {
namespace {

TEST(FallbackWarning, SaysOnceWhatIsLostAndHowToGrantIt)
{
    ::setenv("LYN_LOG_TARGET", "stderr", 1);
    ::unsetenv("LYN_LOG_LEVEL");
    ::testing::internal::CaptureStderr();
    WarnOfFallback(EPERM);
    WarnOfFallback(EPERM);
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
    EXPECT_THAT(log, ::testing::HasSubstr("W/LYN_PLATFORM"));
    EXPECT_THAT(log, ::testing::HasSubstr("CAP_NET_RAW is missing"));
    EXPECT_THAT(log, ::testing::HasSubstr("mirroring and Kov phones are found late or never"));
    EXPECT_THAT(log, ::testing::ContainsRegex("setcap cap_net_raw\\+ep /.*test_linux_adverts_warning"));
    EXPECT_THAT(log, ::testing::HasSubstr("AmbientCapabilities=CAP_NET_RAW"));
}

TEST(FallbackWarning, GrantsNoRightWhereNoneIsMissing)
{
    const std::string noSockets = FallbackText(EAFNOSUPPORT);
    EXPECT_THAT(noSockets, ::testing::HasSubstr("RestrictAddressFamilies"));
    EXPECT_THAT(noSockets, ::testing::Not(::testing::HasSubstr("setcap")));
    const std::string noAdapter = FallbackText(ENODEV);
    EXPECT_THAT(noAdapter, ::testing::HasSubstr("No such device"));
    EXPECT_THAT(noAdapter, ::testing::Not(::testing::HasSubstr("setcap")));
}

}  // namespace
}  // namespace lyn::linux_platform
