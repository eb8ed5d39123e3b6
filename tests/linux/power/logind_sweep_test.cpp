// SPDX-License-Identifier: Apache-2.0
//
// A sleep is announced, whatever became of the delay that logind was asked for.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "FakeLogind.h"
#include "OpenFiles.h"
#include "PrivateBus.h"
#include "lyn_platform/power.h"

namespace lyn::linux_tests {
namespace {

constexpr const char* kInhibit = "Manager.Inhibit";

struct Mishap {
    const char* name;
    Treatment treatment;
};

std::vector<Mishap> Mishaps()
{
    return {
        {"fails", Treatment::Fails("org.freedesktop.DBus.Error.AccessDenied")},
        {"is unknown", Treatment::Fails("org.freedesktop.DBus.Error.UnknownMethod")},
        {"is late", Treatment::Late(60)},
        {"comes twice", Treatment::Twice()},
        {"is done and never answered", Treatment::DoneWithoutAnswer()},
        {"is never done", Treatment::Ignored()},
        {"kills logind", Treatment::Dies()},
        {"has no values", Treatment::Answers("()")},
        {"has other values", Treatment::Answers("('handle', 5)")},
        {"has a descriptor that is missing", Treatment::Answers("(@h 0,)")},
        {"is far too long", Treatment::Answers("('" + std::string(200'000, 'x') + "',)")},
    };
}

class LogindSweep : public ::testing::Test {
protected:
    LogindSweep() { PrivateBus::Instance(); }
    ~LogindSweep() override
    {
        device_power_unsubscribe_poweroff_event();
        logind.reset();
        RunQuietly(20);
    }

    void Subscribe()
    {
        const auto count = [](const device_power_off_info_s*, void* self) {
            ++static_cast<LogindSweep*>(self)->told;
            return 0;
        };
        ASSERT_EQ(device_power_subscribe_poweroff_event(count, this), 0);
        ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    }

    /// logind comes back, and its first delay is treated so.
    void Restart(const Treatment& treatment)
    {
        logind->Die();
        ASSERT_TRUE(RunUntil([&] { return logind->Held() == 0; }));
        logind->TreatWell();
        logind->Forget();
        logind->Treat(kInhibit, 1, treatment);
        logind->Return();
        ASSERT_TRUE(RunUntil([&] { return logind->Count(kInhibit) == 1; }));
        logind->Return();  // If it died of it.
    }

    void SleepAndWake()
    {
        logind->PrepareForSleep(true);
        ASSERT_TRUE(RunUntil([&] { return told == 1; })) << "the application has not been told";
        EXPECT_EQ(device_power_get_state(), 3);
        // What was granted and not answered is the bus's until the call's time is over.
        RunQuietly(80);
        EXPECT_TRUE(RunUntil([&] { return logind->Held() == 0; })) << "the sleep is held up";
        logind->PrepareForSleep(false);
        EXPECT_TRUE(RunUntil([&] { return device_power_get_state() == 1; }));
        EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; })) << "the next sleep would not wait";
        RunQuietly(80);
        EXPECT_EQ(logind->Held(), 1U);
        EXPECT_EQ(told, 1);
    }

    std::unique_ptr<FakeLogind> logind = std::make_unique<FakeLogind>();
    int told = 0;
};

TEST_F(LogindSweep, ASleepIsToldAndNothingIsLeftWhateverBecameOfTheDelay)
{
    Subscribe();
    for (const Mishap& mishap : Mishaps()) {
        SCOPED_TRACE(mishap.name);
        told = 0;
        Restart(mishap.treatment);
        SleepAndWake();
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(LogindSweep, ADelayThatIsGrantedDuringTheSleepIsGivenBack)
{
    Subscribe();
    Restart(Treatment::Late(60));
    logind->PrepareForSleep(true);
    ASSERT_TRUE(RunUntil([&] { return told == 1; }));
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 0; })) << "the sleep is held up";
    logind->PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
}

TEST_F(LogindSweep, NoDescriptorIsLeftOpenByAnyAnswer)
{
    Subscribe();
    Restart(Treatment{});
    ASSERT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    RunQuietly(50);
    const auto ends = [&] { return OpenFiles() - static_cast<long>(logind->Granted()); };
    const auto before = ends();
    for (const auto& [descriptors, index] : {std::pair(0, 0), {1, 0}, {2, 1}, {1, 1}, {2, -1}, {16, 3}}) {
        SCOPED_TRACE(std::to_string(descriptors) + " descriptors, number " + std::to_string(index));
        logind->GrantWith(descriptors, index);
        logind->PrepareForSleep(true);
        logind->PrepareForSleep(false);
        RunQuietly(60);
    }
    logind->GrantWith(1, 0);
    logind->PrepareForSleep(true);
    logind->PrepareForSleep(false);
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; }));
    EXPECT_TRUE(RunUntil([&] { return ends() <= before; })) << "a descriptor is left open";
}

TEST_F(LogindSweep, TheDelayIsTheDescriptorThatTheAnswerNames)
{
    Subscribe();
    logind->GrantWith(2, 1);
    Restart(Treatment{});
    ASSERT_TRUE(RunUntil([&] { return logind->Granted() == 3; }));
    EXPECT_TRUE(RunUntil([&] { return logind->Held() == 1; })) << "the one that is not named is closed";
    EXPECT_TRUE(logind->IsHeld(2));
}

}  // namespace
}  // namespace lyn::linux_tests
