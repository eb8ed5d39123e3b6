// SPDX-License-Identifier: Apache-2.0
//
// The exported functions over a service manager that throws what a test asks for: each class of the
// family becomes its code, everything else passes.
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "Common/LynException.h"
#include "Service/ServiceManager.h"
#include "lyn_service.h"
#include "support/LogLines.h"
#include "support/SimulatedTv.h"

namespace {

std::function<void()> g_work;

}  // namespace

// Takes the place of the manager in the library.
namespace lyn {

CServiceManager::CServiceManager() = default;
CServiceManager::~CServiceManager() = default;

CServiceManager& CServiceManager::GetInstance()
{
    static CServiceManager instance;
    return instance;
}

void* CServiceManager::CreateService(const std::string& /*name*/, const StateChangedCb& /*cb*/)
{
    g_work();
    return this;
}

void CServiceManager::DestroyService(lyn_service_h /*handle*/)
{
    g_work();
}

void CServiceManager::StartScan(lyn_service_h /*handle*/, const DeviceFoundCb& /*cb*/)
{
    g_work();
}

void CServiceManager::StopScan(lyn_service_h /*handle*/)
{
    g_work();
}

void CServiceManager::RequestInitiating(lyn_service_h /*handle*/, const std::string& /*deviceId*/,
                                        const std::string& /*extraData*/, const RequestInitiatingResultCb& /*cb*/)
{
    g_work();
}

void CServiceManager::StartAdvertisement(lyn_service_h /*handle*/, int /*interval*/)
{
    g_work();
}

void CServiceManager::StopAdvertisement(lyn_service_h /*handle*/)
{
    g_work();
}

void CServiceManager::SetNodlinkVersion(lyn_service_h /*handle*/, const std::string& /*version*/)
{
    g_work();
}

int CServiceManager::GetNodlinkType(lyn_service_h /*handle*/)
{
    g_work();
    return 2;
}

std::string CServiceManager::GetRequestIntiatingErrorString(lyn_service_h /*handle*/,
                                                            lyn_request_initiating_result_e /*result*/)
{
    g_work();
    return "Success";
}

}  // namespace lyn

namespace lyn::test {
namespace {

struct Function {
    std::string name;
    std::function<int()> call;
};

int g_service = 0;

std::vector<Function> FunctionsWithACode()
{
    void* const service = &g_service;
    return {
        {"lyn_create_service",
         [] {
             void* created = nullptr;
             const lyn_error_e error = lyn_create_service(&created, "mirroring", nullptr, nullptr);
             EXPECT_EQ(created == nullptr, error != LYN_ERROR_NONE);
             return error;
         }},
        {"lyn_destroy_service", [=] { return lyn_destroy_service(service); }},
        {"lyn_start_scan", [=] { return lyn_start_scan(service, nullptr, nullptr); }},
        {"lyn_start_scan_with_serialization",
         [=] { return lyn_start_scan_with_serialization(service, nullptr, nullptr); }},
        {"lyn_stop_scan", [=] { return lyn_stop_scan(service); }},
        {"lyn_request_initiating", [=] { return lyn_request_initiating(service, "id", nullptr, nullptr); }},
        {"lyn_request_initiating_with_extra_data",
         [=] { return lyn_request_initiating_with_extra_data(service, "id", "", nullptr, nullptr); }},
        {"lyn_start_advertise", [=] { return lyn_start_advertise(service, LYN_ADV_INTERVAL_50); }},
        {"lyn_stop_advertise", [=] { return lyn_stop_advertise(service); }},
        {"lyn_set_nodlink_version", [=] { return lyn_set_nodlink_version(service, "2.0"); }},
        {"lyn_get_nodlink_type",
         [=] {
             nod_link_type type = 77;
             const lyn_error_e error = lyn_get_nodlink_type(service, &type);
             EXPECT_EQ(type, error == LYN_ERROR_NONE ? 2 : 77);
             return error;
         }},
    };
}

std::string ErrorText()
{
    return lyn_get_request_initiating_error_string(&g_service, LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

struct Thrown {
    std::string name;
    int code;
    std::string message;
    std::function<void()> raise;
};

template <typename E>
Thrown Throwing(const std::string& name, int code)
{
    const std::string message = "the message of " + name;
    return {name, code, message, [message] { throw E(message); }};
}

std::vector<Thrown> TheFamily()
{
    return {
        Throwing<LynExceptionInternal>("Internal", 2),
        Throwing<LynExceptionAlreadyDone>("AlreadyDone", 7),
        Throwing<LynExceptionInvalidHandle>("InvalidHandle", 4),
        Throwing<LynExceptionInvalidParam>("InvalidParam", 5),
        Throwing<LynExceptionRetry>("Retry", 2),
        Throwing<LynExceptionJsonParsing>("JsonParsing", 5),
        Throwing<LynExceptionOperationFailed>("OperationFailed", 6),
        Throwing<LynExceptionNotValidDevice>("NotValidDevice", 2),
        Throwing<LynExceptionInvalidState>("InvalidState", 3),
        Throwing<LynExceptionNotSupported>("NotSupported", 8),
        {"InvalidParam without a message", 5, "Invalid Parameter exception",
         [] { throw LynExceptionInvalidParam(); }},
        {"a message like a format", 2, "%s %d %n 100 %", [] { throw LynExceptionInternal("%s %d %n 100 %"); }}};
}

class ErrorBoundary : public SimulatedTv {
protected:
    ErrorBoundary()
    {
        g_work = [] {};
    }

    static void ExpectOneExceptionLine(const std::string& function, const std::string& message)
    {
        std::vector<Line> errors;
        for (const Line& line : LogLines()) {
            if (line.priority == ERROR) {
                errors.push_back(line);
            }
        }
        ASSERT_EQ(errors.size(), 1U);
        EXPECT_EQ(errors[0].file, "lyn_service.cpp");
        EXPECT_EQ(errors[0].function, function);
        EXPECT_EQ(errors[0].message, "exception: " + message);
    }
};

TEST_F(ErrorBoundary, ReturnsNoneWithoutAnErrorLineWhenNothingIsThrown)
{
    for (const Function& function : FunctionsWithACode()) {
        SCOPED_TRACE(function.name);
        EXPECT_EQ(function.call(), LYN_ERROR_NONE);
        EXPECT_TRUE(Messages(ERROR).empty());
    }
    EXPECT_EQ(ErrorText(), "Success");
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ErrorBoundary, TurnsEachClassOfTheFamilyIntoItsCodeAndLogsTheMessage)
{
    for (const Thrown& thrown : TheFamily()) {
        g_work = thrown.raise;
        for (const Function& function : FunctionsWithACode()) {
            SCOPED_TRACE(thrown.name + " out of " + function.name);
            simulator::ClearLog();
            EXPECT_EQ(function.call(), thrown.code);
            ExpectOneExceptionLine(function.name, thrown.message);
        }
    }
}

TEST_F(ErrorBoundary, ReturnsUnknownErrAsTheTextOfAResultForEachClassOfTheFamily)
{
    for (const Thrown& thrown : TheFamily()) {
        SCOPED_TRACE(thrown.name);
        g_work = thrown.raise;
        simulator::ClearLog();
        EXPECT_EQ(ErrorText(), "UnknownErr");
        ExpectOneExceptionLine("lyn_get_request_initiating_error_string", thrown.message);
        EXPECT_FALSE(HasLogWith(INFO, "errorString"));
    }
}

TEST_F(ErrorBoundary, YieldsTheCodeOfAnInternalFailureForARetry)
{
    g_work = [] { throw LynExceptionRetry("133 error, try again"); };
    EXPECT_EQ(lyn_stop_scan(&g_service), LYN_ERROR_INTERNAL);
    EXPECT_TRUE(HasLog(ERROR, "exception: 133 error, try again"));
}

template <typename E>
void ExpectPassing(const std::function<void()>& raise)
{
    g_work = raise;
    for (const Function& function : FunctionsWithACode()) {
        SCOPED_TRACE(function.name);
        EXPECT_THROW(function.call(), E);
    }
    EXPECT_THROW(ErrorText(), E);
    EXPECT_TRUE(Messages(ERROR).empty()) << "an exception that is not of the family was logged";
}

TEST_F(ErrorBoundary, LetsAFailedAllocationPass)
{
    ExpectPassing<std::bad_alloc>([] { throw std::bad_alloc(); });
}

TEST_F(ErrorBoundary, LetsAFailedLockPass)
{
    ExpectPassing<std::system_error>(
        [] { throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur)); });
}

TEST_F(ErrorBoundary, LetsTheCallOfAnEmptyFunctionPass)
{
    ExpectPassing<std::bad_function_call>([] { throw std::bad_function_call(); });
}

TEST_F(ErrorBoundary, LetsABareTextPass)
{
    ExpectPassing<const char*>([] { throw "1.0"; });
}

TEST_F(ErrorBoundary, TracesTheWayOutOfAnExceptionThatPasses)
{
    g_work = [] { throw std::bad_alloc(); };
    EXPECT_THROW(lyn_stop_scan(&g_service), std::bad_alloc);
    const std::vector<std::string> trace = Messages(DEBUG);
    ASSERT_EQ(trace.size(), 2U);
    EXPECT_EQ(trace[0].rfind("IN >> [lyn_error_e lyn_stop_scan(", 0), 0U) << trace[0];
    EXPECT_EQ(trace[1].rfind("OUT << [lyn_error_e lyn_stop_scan(", 0), 0U) << trace[1];
}

}  // namespace
}  // namespace lyn::test
