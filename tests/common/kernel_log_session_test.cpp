// SPDX-License-Identifier: Apache-2.0
//
// What whole sessions leave in the kernel log.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* PHONE = "AA:BB:CC:DD:EE:01";

class KernelLogOfASession : public SimulatedTv {
protected:
    static simulator::Phone PhoneOf(const std::string& service)
    {
        simulator::Phone phone = simulator::MirroringPhone(PHONE, "Kitchen", "0123456789abcdefghijkl");
        if (service == "kov") {
            phone = simulator::KovPhone(PHONE, "Kitchen", "0123456789abcdefghijkl");
        } else if (service == "nodlink") {
            phone = simulator::NodLinkPhone(PHONE, true, true);
        }
        phone.limit = 1;
        phone.services[0].characteristics[0].answers = {simulator::Answer{.text = "Success"}};
        return phone;
    }

    // Finds the phone and asks it.
    static void LiveThrough(const std::string& service)
    {
        simulator::AddPhone(PhoneOf(service));
        App app(service);
        ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);
        ASSERT_TRUE(simulator::RunUntil([&] { return !app.phones.empty(); }));
        ASSERT_EQ(app.Request(PHONE), LYN_ERROR_NONE);
        ASSERT_TRUE(app.WaitForResult());
        EXPECT_THAT(app.results, ElementsAre(LYN_REQUEST_INITIATING_RESULT_SUCCESS));
        simulator::Settle();
    }

    // The function that each line names, behind the tag.
    static std::vector<std::string> Functions()
    {
        const std::string tag = "[LYN_SERVICE][";
        std::vector<std::string> functions;
        for (const std::string& line : simulator::KernelLog()) {
            EXPECT_EQ(line.rfind(tag, 0), 0U) << line;
            EXPECT_NE(line.find("][Current time : "), std::string::npos) << line;
            functions.push_back(line.substr(tag.size(), line.find(']', tag.size()) - tag.size()));
        }
        return functions;
    }
};

TEST_F(KernelLogOfASession, NamesEachStepOfNodLink)
{
    LiveThrough("nodlink");
    EXPECT_THAT(Functions(), ElementsAre("StartScan", "OnLeScanResult", "StopScan", "RequestInitiating",
                                         "OnMtuChanged", "NotifyRequestResult"));
}

TEST_F(KernelLogOfASession, IsEmptyForEveryOtherService)
{
    for (const std::string service : {"dummy", "mirroring", "kov"}) {
        SCOPED_TRACE(service);
        LiveThrough(service);
        EXPECT_THAT(simulator::KernelLog(), IsEmpty());
    }
}

TEST_F(KernelLogOfASession, ThatCannotBeOpenedChangesAndPrintsNothing)
{
    simulator::SetKernelLogMode(simulator::KernelLogMode::refuseOpen);
    testing::internal::CaptureStdout();
    LiveThrough("nodlink");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(KernelLogOfASession, ThatCannotBeWrittenChangesNothing)
{
    simulator::SetKernelLogMode(simulator::KernelLogMode::failWrite);
    testing::internal::CaptureStdout();
    LiveThrough("nodlink");
    EXPECT_NE(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
}  // namespace lyn::test
