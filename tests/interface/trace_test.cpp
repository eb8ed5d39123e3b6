// SPDX-License-Identifier: Apache-2.0
//
// Each function brackets each of its ways with one IN line, first of all, and one OUT line, last of all.
#include "interface/Functions.h"
#include "support/App.h"

namespace lyn::test {
namespace {

class InterfaceTrace : public SimulatedTv {
protected:
    // Fails the test unless the log is that of one call of this function. It ends with the call's OUT line.
    static void ExpectOne(const std::string& declaration)
    {
        EXPECT_EQ(TraceOfTheInterface(), Texts({"IN " + declaration, "OUT " + declaration}));
        const std::vector<Line> lines = LogLines();
        ASSERT_GE(lines.size(), 2U);
        EXPECT_EQ(lines.front().message.rfind("IN >> [", 0), 0U) << lines.front().message;
        EXPECT_EQ(lines.back().message.rfind("OUT << [", 0), 0U) << lines.back().message;
        EXPECT_EQ(lines.front().message.substr(6), lines.back().message.substr(7)) << "with the same line";
    }

    static lyn_error_e Create(void** handle, const char* name)
    {
        simulator::ClearLog();
        return lyn_create_service(handle, name, nullptr, nullptr);
    }

    static void ErrorString(lyn_service_h handle, int result)
    {
        simulator::ClearLog();
        lyn_get_request_initiating_error_string(handle, static_cast<lyn_request_initiating_result_e>(result));
        ExpectOne(kErrorStringDeclaration);
    }
};

TEST_F(InterfaceTrace, BracketsEverySuccess)
{
    for (const Function& function : FunctionsWithAHandle()) {
        SCOPED_TRACE(function.name);
        App app("nodlink");
        simulator::ClearLog();
        EXPECT_EQ(function.call(app.handle), LYN_ERROR_NONE);
        const bool waited = function.name == "lyn_request_initiating";
        if (waited) {
            EXPECT_EQ(TraceOfTheInterface(), Texts({"IN " + function.declaration, "OUT " + function.declaration}));
        } else {
            ExpectOne(function.declaration);
        }
        app.handle = function.name == "lyn_destroy_service" ? nullptr : app.handle;
    }
}

TEST_F(InterfaceTrace, BracketsEveryRefusalOfAHandle)
{
    int other = 0;
    for (const Function& function : FunctionsWithAHandle()) {
        SCOPED_TRACE(function.name);
        for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&other)}) {
            simulator::ClearLog();
            EXPECT_NE(function.call(handle), LYN_ERROR_NONE);
            ExpectOne(function.declaration);
        }
    }
}

TEST_F(InterfaceTrace, BracketsACreationThatSucceedsOrFails)
{
    App app;
    int used = 0;
    void* usedHandle = &used;
    const auto expectTraced = [&](void** handle, const char* name, lyn_error_e error) {
        EXPECT_EQ(Create(handle, name), error);
        ExpectOne(kCreateDeclaration);
    };
    expectTraced(&app.handle, nullptr, LYN_ERROR_INVALID_PARAMETER);
    expectTraced(nullptr, "dummy", LYN_ERROR_INVALID_PARAMETER);
    expectTraced(&usedHandle, "dummy", LYN_ERROR_INVALID_PARAMETER);
    expectTraced(&app.handle, "unknown", LYN_ERROR_INVALID_PARAMETER);
    simulator::SetAdapterState(BT_ADAPTER_DISABLED, false);
    expectTraced(&app.handle, "nodlink", LYN_ERROR_INTERNAL);
    expectTraced(&app.handle, "dummy", LYN_ERROR_NONE);
    void* second = nullptr;
    expectTraced(&second, "dummy", LYN_ERROR_ALREADY_DONE);
}

TEST_F(InterfaceTrace, BracketsTheChecksOfArguments)
{
    simulator::ClearLog();
    EXPECT_EQ(lyn_request_initiating(nullptr, nullptr, nullptr, nullptr), LYN_ERROR_INVALID_PARAMETER);
    ExpectOne(
        "lyn_error_e lyn_request_initiating(lyn_service_h, const char*, lyn_request_initiating_result_cb, void*)");
    simulator::ClearLog();
    EXPECT_EQ(lyn_request_initiating_with_extra_data(nullptr, nullptr, nullptr, nullptr, nullptr),
              LYN_ERROR_INVALID_PARAMETER);
    ExpectOne("lyn_error_e lyn_request_initiating_with_extra_data(lyn_service_h, const char*, const char*, "
              "lyn_request_initiating_result_cb, void*)");
    simulator::ClearLog();
    EXPECT_EQ(lyn_start_advertise(nullptr, static_cast<lyn_adv_interval_e>(5)), LYN_ERROR_INVALID_PARAMETER);
    ExpectOne("lyn_error_e lyn_start_advertise(lyn_service_h, lyn_adv_interval_e)");
}

TEST_F(InterfaceTrace, BracketsWhatAnExceptionLeaves)
{
    App app("nodlink");
    simulator::ClearLog();
    EXPECT_ANY_THROW(lyn_set_nodlink_version(app.handle, nullptr));
    ExpectOne("lyn_error_e lyn_set_nodlink_version(lyn_service_h, const char*)");
    simulator::ClearLog();
    EXPECT_ANY_THROW(lyn_set_nodlink_version(app.handle, "4.0"));
    ExpectOne("lyn_error_e lyn_set_nodlink_version(lyn_service_h, const char*)");
    simulator::ClearLog();
    EXPECT_ANY_THROW(lyn_request_initiating_with_extra_data(app.handle, kPhone, nullptr, nullptr, nullptr));
    ExpectOne("lyn_error_e lyn_request_initiating_with_extra_data(lyn_service_h, const char*, const char*, "
              "lyn_request_initiating_result_cb, void*)");
}

TEST_F(InterfaceTrace, BracketsARefusalOfTheState)
{
    App app("dummy");
    app.StartScan();
    simulator::ClearLog();
    EXPECT_EQ(app.StartScan(), LYN_ERROR_INVALID_STATE);
    ExpectOne("lyn_error_e lyn_start_scan(lyn_service_h, lyn_device_found_cb, void*)");
    simulator::ClearLog();
    EXPECT_EQ(app.StartScanWithSerialization(), LYN_ERROR_INVALID_STATE);
    ExpectOne("lyn_error_e lyn_start_scan_with_serialization(lyn_service_h, "
              "lyn_device_found_with_serialization_cb, void*)");
}

TEST_F(InterfaceTrace, BracketsTheNameOfAResult)
{
    App app("dummy");
    ErrorString(app.handle, LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    ErrorString(app.handle, LYN_REQUEST_INITIATING_RESULT_RESERVED);
    ErrorString(nullptr, LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    ErrorString(&app, LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(InterfaceTrace, IsLoggedUnderTheLibrarysTag)
{
    lyn_stop_scan(nullptr);
    ASSERT_FALSE(simulator::Log().empty());
    for (const simulator::LogLine& line : simulator::Log()) {
        EXPECT_EQ(line.tag, "LYN_SERVICE");
    }
}

}  // namespace
}  // namespace lyn::test
