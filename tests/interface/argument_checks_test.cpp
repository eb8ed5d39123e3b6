// SPDX-License-Identifier: Apache-2.0
//
// Arguments that the functions check themselves, in the order of the checks.
#include <climits>

#include "interface/Functions.h"
#include "support/App.h"

namespace lyn::test {
namespace {

class ArgumentCheck : public SimulatedTv {
protected:
    // Fails the test unless the call was refused with this one line, and nobody inside was asked.
    static void ExpectRefused(lyn_error_e error, const std::string& function, const std::string& message)
    {
        SCOPED_TRACE(function + ": " + message);
        EXPECT_EQ(error, LYN_ERROR_INVALID_PARAMETER);
        std::vector<Line> lines;
        for (const Line& line : LogLines()) {
            if (line.priority != DEBUG) {
                lines.push_back(line);
            }
        }
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].priority, ERROR);
        EXPECT_EQ(lines[0].file, "lyn_service.cpp");
        EXPECT_EQ(lines[0].function, function);
        EXPECT_EQ(lines[0].message, message);
        EXPECT_FALSE(AskedTheManager());
        EXPECT_TRUE(simulator::JournalText().empty());
        simulator::ClearLog();
    }

    static void NoteResult(lyn_request_initiating_result_e /*result*/, void* called)
    {
        *static_cast<bool*>(called) = true;
    }
};

TEST_F(ArgumentCheck, RefusesToCreateWithoutANameFirst)
{
    int used = 0;
    void* handle = nullptr;
    void* usedHandle = &used;
    for (void** service : {&handle, &usedHandle, static_cast<void**>(nullptr)}) {
        ExpectRefused(lyn_create_service(service, nullptr, nullptr, nullptr), "lyn_create_service",
                      "service_name is NULL");
    }
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(usedHandle, &used);
}

TEST_F(ArgumentCheck, RefusesToCreateWithoutAPlaceForTheHandle)
{
    for (const char* name : {"dummy", "unknown", ""}) {
        ExpectRefused(lyn_create_service(nullptr, name, nullptr, nullptr), "lyn_create_service",
                      "service is NULL");
    }
}

TEST_F(ArgumentCheck, RefusesToCreateOverAHandleAndKeepsIt)
{
    int used = 0;
    for (const char* name : {"dummy", "unknown", ""}) {
        void* handle = &used;
        ExpectRefused(lyn_create_service(&handle, name, nullptr, nullptr), "lyn_create_service",
                      "service handle should be nullptr");
        EXPECT_EQ(handle, &used);
    }
}

TEST_F(ArgumentCheck, RefusesToCreateOverTheHandleOfTheLivingService)
{
    App app("dummy");
    void* handle = app.handle;
    simulator::ClearLog();
    simulator::ClearJournal();
    ExpectRefused(lyn_create_service(&handle, "dummy", nullptr, nullptr), "lyn_create_service",
                  "service handle should be nullptr");
    EXPECT_EQ(handle, app.handle);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
}

TEST_F(ArgumentCheck, RefusesARequestWithoutADeviceAndCallsNothing)
{
    App app("dummy");
    bool called = false;
    for (lyn_service_h handle :
         {app.handle, static_cast<lyn_service_h>(nullptr), static_cast<lyn_service_h>(&app)}) {
        simulator::ClearLog();
        simulator::ClearJournal();
        ExpectRefused(lyn_request_initiating(handle, nullptr, NoteResult, &called), "lyn_request_initiating",
                      "device_id is NULL");
        ExpectRefused(lyn_request_initiating_with_extra_data(handle, nullptr, "{}", NoteResult, &called),
                      "lyn_request_initiating_with_extra_data", "device_id is NULL");
        ExpectRefused(lyn_request_initiating_with_extra_data(handle, nullptr, nullptr, NoteResult, &called),
                      "lyn_request_initiating_with_extra_data", "device_id is NULL");
    }
    simulator::Settle();
    EXPECT_FALSE(called);
    EXPECT_TRUE(app.states.empty());
}

TEST_F(ArgumentCheck, RefusesAnIntervalThatIsNoneAsAnException)
{
    App app("mirroring");
    for (const int interval : {5, 6, 50, 300, -1, -5, INT_MAX, INT_MIN}) {
        for (lyn_service_h handle : {app.handle, static_cast<lyn_service_h>(nullptr)}) {
            SCOPED_TRACE(interval);
            simulator::ClearLog();
            simulator::ClearJournal();
            EXPECT_EQ(lyn_start_advertise(handle, static_cast<lyn_adv_interval_e>(interval)),
                      LYN_ERROR_INVALID_PARAMETER);
            EXPECT_EQ(Messages(ERROR), Texts({"wrong interval value", "exception: wrong interval value"}));
            for (const Line& line : LogLines()) {
                if (line.priority == ERROR) {
                    EXPECT_EQ(line.file, "lyn_service.cpp");
                    EXPECT_EQ(line.function, "lyn_start_advertise");
                }
            }
            EXPECT_FALSE(AskedTheManager());
            EXPECT_TRUE(simulator::JournalText().empty());
        }
    }
}

TEST_F(ArgumentCheck, AcceptsEveryIntervalThatIsOne)
{
    App app("mirroring");
    for (int interval = 0; interval <= 4; ++interval) {
        EXPECT_EQ(lyn_start_advertise(app.handle, static_cast<lyn_adv_interval_e>(interval)), LYN_ERROR_NONE);
    }
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ArgumentCheck, DoesNotMindANullPlaceForTheType)
{
    App app("nodlink");
    EXPECT_EQ(lyn_get_nodlink_type(app.handle, nullptr), LYN_ERROR_NONE);
}

}  // namespace
}  // namespace lyn::test
