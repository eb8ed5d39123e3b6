// SPDX-License-Identifier: Apache-2.0
//
// The names of results, forth and back.
#include <climits>

#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

struct Name {
    const char* text;
    int value;
};

constexpr Name kNames[] = {{"Success", 0},
                           {"GattFail", 1},
                           {"NotRegisteredDevice", 2},
                           {"UnknownErr", 3},
                           {"CommandErr", 4},
                           {"NotSupported", 5},
                           {"Connected", 6},
                           {"NotTap", 8},
                           {"NotStartedKov", 9},
                           {"NotStartedMirroring", 10},
                           {"GattDisconnected", 11}};

using ResultNames = ServiceTest;

TEST_F(ResultNames, AreTheAnswersOfPhones)
{
    for (const Name& name : kNames) {
        SCOPED_TRACE(name.text);
        simulator::ClearLog();
        EXPECT_EQ(service->ConvertResultToErrCode(name.text), name.value);
        EXPECT_TRUE(HasLogWith(INFO, name.text));
        EXPECT_TRUE(Messages(ERROR).empty());
    }
}

TEST_F(ResultNames, AreTheTextsOfResults)
{
    for (const Name& name : kNames) {
        const auto value = static_cast<lyn_request_initiating_result_e>(name.value);
        EXPECT_EQ(service->GetRequestIntiatingErrorString(value), name.text);
    }
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ResultNames, AreComparedExactly)
{
    const Texts others = {"",
                          "success",
                          "SUCCESS",
                          " Success",
                          "Success ",
                          "Success\n",
                          "Succes",
                          "Successs",
                          "Reserved",
                          "Not_Tap",
                          "gattFail",
                          "NotStarted",
                          "{\"a\":1}",
                          "7",
                          "Connected\t",
                          std::string("Success\0", 8),
                          std::string("\0", 1),
                          std::string(100000, 'S')};
    for (const std::string& other : others) {
        SCOPED_TRACE(other.substr(0, 20));
        simulator::ClearLog();
        EXPECT_EQ(service->ConvertResultToErrCode(other), LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR);
        EXPECT_EQ(Messages(ERROR), Texts({"Not defined error code. Return Unknown."}));
    }
}

TEST_F(ResultNames, DoNotExistForOtherValues)
{
    for (const int value : {7, 12, 13, 1000, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(value);
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] {
                      service->GetRequestIntiatingErrorString(static_cast<lyn_request_initiating_result_e>(value));
                  }),
                  "Not mached errorCode");
        EXPECT_EQ(Messages(ERROR), Texts({"Not mached errorCode"}));
    }
}

TEST_F(ResultNames, NeedNoParts)
{
    EXPECT_EQ(service->GetRequestIntiatingErrorString(LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_KOV),
              "NotStartedKov");
    EXPECT_EQ(service->ConvertResultToErrCode("Connected"), LYN_REQUEST_INITIATING_RESULT_CONNECTED);
}

}  // namespace
}  // namespace lyn::test
