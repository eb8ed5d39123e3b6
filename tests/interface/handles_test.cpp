// SPDX-License-Identifier: Apache-2.0
//
// Handles that are null, not alive any more, or somebody else's, given to each function.
#include "interface/Functions.h"
#include "support/App.h"

namespace lyn::test {
namespace {

class Handles : public SimulatedTv {
protected:
    static void ExpectUnknownErr(lyn_service_h handle, const Texts& errors)
    {
        simulator::ClearLog();
        EXPECT_STREQ(lyn_get_request_initiating_error_string(handle, LYN_REQUEST_INITIATING_RESULT_SUCCESS),
                     "UnknownErr");
        EXPECT_EQ(Messages(ERROR), errors);
        EXPECT_FALSE(HasLogWith(INFO, "errorString"));
    }

    // Each function refuses this handle, which is not alive; nothing happens on the platform.
    static void ExpectNotAlive(lyn_service_h handle)
    {
        for (const Function& function : FunctionsWithAHandle()) {
            SCOPED_TRACE(function.name);
            const bool destroys = function.staleCode == LYN_ERROR_INVALID_HANDLE;
            simulator::ClearLog();
            simulator::ClearJournal();
            EXPECT_EQ(function.call(handle), function.staleCode);
            EXPECT_EQ(Messages(ERROR), Texts({destroys ? "exception: not mached service"
                                                       : "exception: Invalid Parameter exception"}));
            EXPECT_EQ(Messages(WARN), destroys ? Texts() : Texts({"no service"}));
            EXPECT_TRUE(simulator::JournalText().empty());
        }
        ExpectUnknownErr(handle, {"exception: Invalid Parameter exception"});
        EXPECT_EQ(Messages(WARN), Texts({"no service"}));
    }
};

TEST_F(Handles, ThatAreNullAreRefusedWithAndWithoutAService)
{
    App app;
    for (const bool alive : {false, true}) {
        SCOPED_TRACE(alive);
        if (alive) {
            ASSERT_EQ(app.Create("nodlink"), LYN_ERROR_NONE);
        }
        for (const Function& function : FunctionsWithAHandle()) {
            SCOPED_TRACE(function.name);
            simulator::ClearLog();
            simulator::ClearJournal();
            EXPECT_EQ(function.call(nullptr), LYN_ERROR_INVALID_HANDLE);
            EXPECT_EQ(Messages(ERROR), Texts({"service is NULL", "exception: service is NULL"}));
            EXPECT_TRUE(Messages(WARN).empty());
            EXPECT_TRUE(simulator::JournalText().empty());
        }
        ExpectUnknownErr(nullptr, {"service is NULL", "exception: service is NULL"});
    }
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
}

TEST_F(Handles, ThatAreNobodysAreRefused)
{
    int other = 0;
    ExpectNotAlive(&other);
}

TEST_F(Handles, ThatAreNotTheLivingServicesAreRefused)
{
    App app("nodlink");
    int other = 0;
    ExpectNotAlive(&other);
    ExpectNotAlive(static_cast<char*>(app.handle) + 1);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
}

TEST_F(Handles, OfADestroyedServiceAreRefused)
{
    for (const char* name : {"dummy", "mirroring", "nodlink", "kov"}) {
        SCOPED_TRACE(name);
        App app(name);
        const lyn_service_h stale = app.handle;
        ASSERT_EQ(app.Destroy(), LYN_ERROR_NONE);
        ExpectNotAlive(stale);
    }
}

TEST_F(Handles, OfTheLivingServiceAreAcceptedByEveryFunction)
{
    App app("nodlink");
    for (const Function& function : FunctionsWithAHandle()) {
        SCOPED_TRACE(function.name);
        if (function.name == "lyn_destroy_service") {
            EXPECT_STREQ(
                lyn_get_request_initiating_error_string(app.handle, LYN_REQUEST_INITIATING_RESULT_SUCCESS),
                "Success");
        }
        EXPECT_EQ(function.call(app.handle), LYN_ERROR_NONE);
    }
    app.handle = nullptr;
    EXPECT_FALSE(HasLogWith(ERROR, "exception:"));
}

}  // namespace
}  // namespace lyn::test
