// SPDX-License-Identifier: Apache-2.0
//
// Requests through the C interface: the library above this platform's Bluetooth. What is not Bluetooth comes from
// the simulated TV, because this program's own functions of the seam come before those of the simulator's library.
#include <algorithm>
#include <cstdio>

#include "GattRoom.h"
#include "Mishaps.h"
#include "support/App.h"
#include "support/Clock.h"

namespace lyn::linux_tests {
namespace {

class LinuxService : public GattRoom {
protected:
    /// A request that is answered.
    lyn_request_initiating_result_e Request()
    {
        UseLongLimits();
        Ask();
        return ResultWhen([&] { return !app.results.empty(); });
    }

    /// A request that may fail, and lets the time for an answer pass when the phone says nothing for long.
    lyn_request_initiating_result_e RequestThatMayFail()
    {
        UseShortLimits();
        Ask();
        gint64 elapse = 0;
        return ResultWhen([&] {
            const gint64 now = g_get_monotonic_time();
            if (elapse == 0 && !test::ArmedTimeouts().empty()) {
                elapse = now + gint64{600'000};
            } else if (elapse != 0 && now > elapse) {
                test::ElapseTimeout();
            }
            return !app.results.empty();
        });
    }

    void Ask()
    {
        app.results.clear();
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    }

    lyn_request_initiating_result_e ResultWhen(const std::function<bool()>& there)
    {
        RunUntil(there);
        RunQuietly(30);
        EXPECT_EQ(app.results.size(), 1U) << "a request has one result";
        return app.results.empty() ? LYN_REQUEST_INITIATING_RESULT_RESERVED : app.results.front();
    }

    void Recover()
    {
        bluez->TreatWell();
        bluez->Return();
        WaitForAdapter(true);
    }

    test::App app{"mirroring"};
};

TEST_F(LinuxService, ARequestIsAnsweredByThePhone)
{
    EXPECT_EQ(Request(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    ASSERT_EQ(bluez->Written().size(), 1U);
    EXPECT_NE(bluez->Written()[0].find("\"type\":\"mirroring\""), std::string::npos) << bluez->Written()[0];
}

TEST_F(LinuxService, ARequestMayBeMadeInsideTheResultOfAnother)
{
    app.onResult = [&](lyn_request_initiating_result_e) {
        if (app.results.size() < 5) {
            EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        }
    };
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_TRUE(RunUntil([&] { return app.results.size() == 5; }));
    EXPECT_EQ(app.results, std::vector<lyn_request_initiating_result_e>(5, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
}

TEST_F(LinuxService, APhoneThatIsGoneIsTriedOnce)
{
    bluez->ChangePhone({.inReach = false});
    EXPECT_EQ(RequestThatMayFail(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(bluez->Count("Device1.Connect"), 1);
}

TEST_F(LinuxService, AConnectThatFailsIsTriedSixTimes)
{
    bluez->Treat("Device1.Connect", 0,
                 Treatment::Fails("org.bluez.Error.Failed", "le-connection-abort-by-remote"));
    EXPECT_EQ(RequestThatMayFail(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(bluez->Count("Device1.Connect"), 6);
}

TEST_F(LinuxService, ARequestHasOneResultWhateverAnswerGoesWrong)
{
    bluez->Forget();
    ASSERT_EQ(Request(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    RunQuietly(50);
    const auto steps = StepsOf(bluez->Calls());
    int runs = 0;
    for (const Step& step : steps) {
        for (const Mishap& mishap : Mishaps()) {
            SCOPED_TRACE(step.method + " no. " + std::to_string(step.nth) + " " + mishap.name);
            bluez->Treat(step.method, step.nth, mishap.treatment);
            RequestThatMayFail();
            Recover();
            EXPECT_EQ(Request(), LYN_REQUEST_INITIATING_RESULT_SUCCESS) << "the next request";
            ++runs;
            ASSERT_FALSE(HasFailure());
        }
    }
    std::printf("%d requests with a mishap, each followed by one without\n", runs);
}

}  // namespace
}  // namespace lyn::linux_tests
