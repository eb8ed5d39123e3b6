// SPDX-License-Identifier: Apache-2.0
//
// IN and OUT lines of the operations, through the C interface.
#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* PHONE = "AA:BB:CC:DD:EE:01";

struct TraceLine {
    bool in = false;
    std::string operation;  // declaration and line
};

// Compilers differ in the blanks around an asterisk or an ampersand: they are left out.
std::string WithoutBlanks(std::string operation)
{
    for (const std::string sign : {" *", " &", "* ", "& "}) {
        for (std::size_t at = operation.find(sign); at != std::string::npos; at = operation.find(sign)) {
            operation.erase(operation[at] == ' ' ? at : at + 1, 1);
        }
    }
    return operation;
}

// The trace so far.
std::vector<TraceLine> TraceLines()
{
    std::vector<TraceLine> trace;
    for (const Line& line : LogLines()) {
        const bool in = line.message.rfind("IN >> [", 0) == 0;
        if (!in && line.message.rfind("OUT << [", 0) != 0) {
            continue;
        }
        EXPECT_EQ(line.priority, DEBUG);
        EXPECT_EQ(line.file, "lyn_service_log.h");
        EXPECT_EQ(line.function, in ? "ApiTracker" : "~ApiTracker");
        trace.push_back({in, WithoutBlanks(line.message.substr(line.message.find('[')))});
    }
    return trace;
}

// Fails the test unless every IN line has its OUT line, the inner ones inside the outer ones.
void ExpectNested(const std::vector<TraceLine>& trace)
{
    std::vector<std::string> open;
    for (const TraceLine& line : trace) {
        if (line.in) {
            open.push_back(line.operation);
            continue;
        }
        ASSERT_FALSE(open.empty()) << "OUT without IN: " << line.operation;
        EXPECT_EQ(open.back(), line.operation);
        open.pop_back();
    }
    EXPECT_THAT(open, IsEmpty()) << "IN without OUT";
}

struct Operation {
    std::string declaration;
    std::string managerOperation;
    std::function<void(lyn_service_h)> call;
};

std::vector<Operation> Operations()
{
    return {
        {"lyn_error_e lyn_create_service(void**, const char*, lyn_state_changed_cb, void*)", "CreateService",
         [](lyn_service_h) {
             void* service = nullptr;
             lyn_create_service(&service, "no such service", nullptr, nullptr);
         }},
        {"lyn_error_e lyn_destroy_service(lyn_service_h)", "DestroyService",
         [](lyn_service_h service) { lyn_destroy_service(service); }},
        {"lyn_error_e lyn_start_scan(lyn_service_h, lyn_device_found_cb, void*)", "StartScan",
         [](lyn_service_h service) { lyn_start_scan(service, nullptr, nullptr); }},
        {"lyn_error_e lyn_start_scan_with_serialization(lyn_service_h, lyn_device_found_with_serialization_cb, "
         "void*)",
         "StartScan", [](lyn_service_h service) { lyn_start_scan_with_serialization(service, nullptr, nullptr); }},
        {"lyn_error_e lyn_stop_scan(lyn_service_h)", "StopScan",
         [](lyn_service_h service) { lyn_stop_scan(service); }},
        {"lyn_error_e lyn_request_initiating(lyn_service_h, const char*, lyn_request_initiating_result_cb, void*)",
         "RequestInitiating",
         [](lyn_service_h service) { lyn_request_initiating(service, PHONE, nullptr, nullptr); }},
        {"lyn_error_e lyn_request_initiating_with_extra_data(lyn_service_h, const char*, const char*, "
         "lyn_request_initiating_result_cb, void*)",
         "RequestInitiating",
         [](lyn_service_h service) {
             lyn_request_initiating_with_extra_data(service, PHONE, "", nullptr, nullptr);
         }},
        {"lyn_error_e lyn_start_advertise(lyn_service_h, lyn_adv_interval_e)", "StartAdvertisement",
         [](lyn_service_h service) { lyn_start_advertise(service, LYN_ADV_INTERVAL_50); }},
        {"lyn_error_e lyn_stop_advertise(lyn_service_h)", "StopAdvertisement",
         [](lyn_service_h service) { lyn_stop_advertise(service); }},
        {"lyn_error_e lyn_set_nodlink_version(lyn_service_h, const char*)", "SetNodlinkVersion",
         [](lyn_service_h service) { lyn_set_nodlink_version(service, "2.0"); }},
        {"lyn_error_e lyn_get_nodlink_type(lyn_service_h, nod_link_type*)", "GetNodlinkType",
         [](lyn_service_h service) {
             nod_link_type type = 0;
             lyn_get_nodlink_type(service, &type);
         }},
        {"const char* lyn_get_request_initiating_error_string(lyn_service_h, lyn_request_initiating_result_e)",
         "GetRequestIntiatingErrorString",
         [](lyn_service_h service) {
             lyn_get_request_initiating_error_string(service, LYN_REQUEST_INITIATING_RESULT_SUCCESS);
         }},
    };
}

class ApiTrace : public SimulatedTv {
protected:
    // Fails the test unless the trace is that of one exported function, and of what it does inside.
    static void ExpectOneFunction(const std::vector<TraceLine>& trace, std::string declaration)
    {
        declaration = "[" + WithoutBlanks(declaration) + "(";
        ASSERT_GE(trace.size(), 2U);
        EXPECT_TRUE(trace.front().in);
        EXPECT_EQ(trace.front().operation.rfind(declaration, 0), 0U) << trace.front().operation;
        EXPECT_FALSE(trace.back().in);
        EXPECT_EQ(trace.back().operation, trace.front().operation);
        EXPECT_EQ(Count(trace, declaration), 1);
        ExpectNested(trace);
    }

    static int Count(const std::vector<TraceLine>& trace, const std::string& text)
    {
        int count = 0;
        for (const TraceLine& line : trace) {
            count += line.in && line.operation.find(text) != std::string::npos ? 1 : 0;
        }
        return count;
    }
};

TEST_F(ApiTrace, BracketsEveryFunctionThatSucceeds)
{
    App app("nodlink");
    for (const Operation& operation : Operations()) {
        SCOPED_TRACE(operation.declaration);
        if (app.handle == nullptr) {
            app.Create("nodlink");
        }
        simulator::ClearLog();
        operation.call(app.handle);
        ExpectOneFunction(TraceLines(), operation.declaration);
        if (operation.managerOperation == "DestroyService") {
            app.handle = nullptr;
        }
    }
}

TEST_F(ApiTrace, BracketsEveryFunctionThatFailsInside)
{
    for (const Operation& operation : Operations()) {
        SCOPED_TRACE(operation.declaration);
        simulator::ClearLog();
        operation.call(nullptr);
        const std::vector<TraceLine> trace = TraceLines();
        ExpectOneFunction(trace, operation.declaration);
        EXPECT_EQ(Count(trace, "lyn::CServiceManager::GetInstance("), 1);
        EXPECT_EQ(Count(trace, "lyn::CServiceManager::" + operation.managerOperation + "("), 1);
    }
}

TEST_F(ApiTrace, BracketsAFunctionThatRefusesItsArguments)
{
    lyn_create_service(nullptr, nullptr, nullptr, nullptr);
    ExpectOneFunction(TraceLines(), Operations()[0].declaration);
    EXPECT_EQ(TraceLines().size(), 2U);

    simulator::ClearLog();
    lyn_request_initiating(nullptr, nullptr, nullptr, nullptr);
    ExpectOneFunction(TraceLines(), Operations()[5].declaration);
    EXPECT_EQ(TraceLines().size(), 2U);

    simulator::ClearLog();
    lyn_request_initiating_with_extra_data(nullptr, nullptr, nullptr, nullptr, nullptr);
    ExpectOneFunction(TraceLines(), Operations()[6].declaration);
    EXPECT_EQ(TraceLines().size(), 2U);
}

TEST_F(ApiTrace, BracketsAFunctionThatAnExceptionLeaves)
{
    EXPECT_ANY_THROW(lyn_set_nodlink_version(nullptr, nullptr));
    ExpectOneFunction(TraceLines(), "lyn_error_e lyn_set_nodlink_version(lyn_service_h, const char*)");
}

TEST_F(ApiTrace, BracketsEveryOperationOfTheManager)
{
    App app("mirroring");
    EXPECT_EQ(Count(TraceLines(), "lyn::CServiceManager::CreateService("), 1);
    for (const Operation& operation : Operations()) {
        if (operation.managerOperation == "CreateService" || operation.managerOperation == "DestroyService") {
            continue;
        }
        SCOPED_TRACE(operation.declaration);
        simulator::ClearLog();
        operation.call(app.handle);
        const std::vector<TraceLine> trace = TraceLines();
        EXPECT_EQ(Count(trace, "lyn::CServiceManager::GetInstance("), 1);
        EXPECT_EQ(Count(trace, "lyn::CServiceManager::" + operation.managerOperation + "("), 1);
        EXPECT_EQ(Count(trace, "lyn::CServiceManager::_GetService("), 1);
    }
    simulator::ClearLog();
    app.Destroy();
    EXPECT_EQ(Count(TraceLines(), "lyn::CServiceManager::DestroyService("), 1);
}

TEST_F(ApiTrace, BracketsEveryOperationOfTheBuilder)
{
    const std::vector<std::pair<std::string, std::string>> services = {{"dummy", "BuildDummyService"},
                                                                       {"mirroring", "BuildMirroringService"},
                                                                       {"nodlink", "BuildNodLinkService"},
                                                                       {"kov", "BuildKovService"}};
    for (const auto& [name, operation] : services) {
        SCOPED_TRACE(name);
        simulator::ClearLog();
        const App app(name);
        const std::vector<TraceLine> trace = TraceLines();
        for (const std::string& expected : {std::string("BuildService"), std::string("InitServiceBuilderMap"),
                                            std::string("GetServiceBuilder"), operation}) {
            EXPECT_EQ(Count(trace, "lyn::CServiceBuilder::" + expected + "("), 1) << expected;
        }
    }
}

TEST_F(ApiTrace, NestsInAWholeSessionAndLeavesFoundPhonesOut)
{
    simulator::Phone phone = simulator::MirroringPhone(PHONE, "Kitchen", "0123456789abcdefghijkl");
    phone.services[0].characteristics[0].answers = {simulator::Answer{.text = "Success"}};
    simulator::AddPhone(phone);
    App app("mirroring");
    ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);

    const std::size_t before = TraceLines().size();
    ASSERT_TRUE(simulator::RunUntil([&] { return app.phones.size() >= 2; }));
    EXPECT_EQ(TraceLines().size(), before) << "an advertisement was traced";

    ASSERT_EQ(app.Request(PHONE), LYN_ERROR_NONE);
    ASSERT_TRUE(app.WaitForResult());
    simulator::Settle();
    ASSERT_EQ(app.Destroy(), LYN_ERROR_NONE);
    EXPECT_GT(TraceLines().size(), 30U);
    ExpectNested(TraceLines());
}

}  // namespace
}  // namespace lyn::test
