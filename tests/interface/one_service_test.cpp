// SPDX-License-Identifier: Apache-2.0
//
// One service at a time: creation, refusal of a second one, destruction, creation again.
#include <cstdio>
#include <cstdlib>

#include "interface/Functions.h"
#include "support/App.h"

namespace lyn::test {
namespace {

using OneService = SimulatedTv;

TEST_F(OneService, RefusesASecondOneOfWhateverNameAndIsUntouched)
{
    for (const std::string first : {"dummy", "mirroring", "nodlink", "kov"}) {
        App app(first);
        ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);
        for (const std::string second : {"dummy", "mirroring", "nodlink", "kov", "unknown", "Dummy", ""}) {
            SCOPED_TRACE(first + " then " + second);
            simulator::ClearLog();
            simulator::ClearJournal();
            App another;
            EXPECT_EQ(another.Create(second), LYN_ERROR_ALREADY_DONE);
            EXPECT_EQ(another.handle, nullptr);
            EXPECT_EQ(Messages(ERROR), Texts({"already service is running", "exception: Already Done exception"}));
            EXPECT_TRUE(simulator::JournalText().empty());
            EXPECT_TRUE(another.events.empty());
        }
        EXPECT_EQ(app.StartScan(), LYN_ERROR_INVALID_STATE) << "still scanning";
        EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    }
}

TEST_F(OneService, RefusesUnknownNamesAndLeavesTheHandleNull)
{
    for (const std::string name : {"", "Dummy", "DUMMY", "dummy ", "mirror", "nod_link", "Kov", "screen", "%s"}) {
        SCOPED_TRACE(name);
        simulator::ClearLog();
        App app;
        EXPECT_EQ(app.Create(name), LYN_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(app.handle, nullptr);
        EXPECT_EQ(Messages(ERROR), Texts({name + " is not defined service", "exception: not defined service"}));
        EXPECT_EQ(Messages(INFO), Texts({"create new sevice for " + name}));
    }
    EXPECT_TRUE(simulator::JournalText().empty());
}

TEST_F(OneService, IsCreatedAgainAfterItsDestruction)
{
    for (const std::string name : {"dummy", "mirroring", "dummy", "nodlink", "kov", "nodlink"}) {
        SCOPED_TRACE(name);
        App app(name);
        EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
        EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        EXPECT_EQ(simulator::Alive().productInits, 0);
    }
}

TEST_F(OneService, IsCreatedAgainAfterAFailedCreation)
{
    App app;
    EXPECT_EQ(app.Create("unknown"), LYN_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(app.Create("dummy"), LYN_ERROR_NONE);
}

TEST_F(OneService, BeginsReadyWhateverTheLastOneDid)
{
    App first("dummy");
    first.StartScan();
    ASSERT_EQ(first.Destroy(), LYN_ERROR_NONE);
    EXPECT_EQ(first.states, std::vector({LYN_STATE_SCANNING})) << "a destruction reports nothing";
    App second("dummy");
    EXPECT_EQ(second.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(second.states, std::vector({LYN_STATE_SCANNING}));
}

TEST_F(OneService, IsDestroyedOnce)
{
    App app("dummy");
    const lyn_service_h handle = app.handle;
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    simulator::ClearLog();
    EXPECT_EQ(lyn_destroy_service(handle), LYN_ERROR_INVALID_HANDLE);
    EXPECT_EQ(Messages(ERROR), Texts({"exception: not mached service"}));
    EXPECT_EQ(lyn_stop_scan(handle), LYN_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CountCalls("bt_product_deinit"), 1);
}

// Runs after the library's own work at exit, because it is registered before.
void SayWhatIsLeft()
{
    const simulator::Counts alive = simulator::Alive();
    std::fprintf(stderr, "left: %d inits, %d registrations, %d clients\n", alive.productInits, alive.registrations,
                 alive.clients);
}

TEST_F(OneService, IsReleasedWhenTheProcessExits)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // In a process that has not used the library yet.
    for (const char* name : {"dummy", "mirroring", "nodlink", "kov"}) {
        SCOPED_TRACE(name);
        EXPECT_EXIT(
            {
                std::atexit(SayWhatIsLeft);
                void* handle = nullptr;
                lyn_create_service(&handle, name, nullptr, nullptr);
                lyn_request_initiating(handle, kPhone, nullptr, nullptr);
                std::exit(handle != nullptr ? 0 : 1);
            },
            ::testing::ExitedWithCode(0), "left: 0 inits, 0 registrations, 0 clients");
    }
}

}  // namespace
}  // namespace lyn::test
