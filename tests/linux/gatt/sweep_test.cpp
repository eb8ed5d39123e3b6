// SPDX-License-Identifier: Apache-2.0
//
// A whole request, in which each answer in turn goes wrong in each way.
#include <cstdio>

#include "GattRoom.h"
#include "Mishaps.h"
#include "Request.h"

namespace lyn::linux_tests {
namespace {

constexpr int kAnswerMs = 800;  // Longer than each of the short limits.
constexpr int kPatienceMs = 20'000;

class LinuxSweep : public GattRoom {
protected:
    std::vector<Step> StepsOfARequest(bool forgotten)
    {
        bluez->Forget();
        RunOne(forgotten, "Success");
        RunQuietly(50);
        std::vector<Step> steps;
        for (const std::string& method : bluez->Calls()) {
            const auto before =
                std::count_if(steps.begin(), steps.end(), [&](const Step& step) { return step.method == method; });
            steps.push_back({method, static_cast<int>(before) + 1});
        }
        return steps;
    }

    void RunOne(bool forgotten, const std::string& expected)
    {
        if (forgotten) {
            bluez->ForgetPhone(kPhone);
        }
        expected.empty() ? UseShortLimits() : UseLongLimits();
        Request request;
        const std::string result = request.Run(expected.empty() ? kAnswerMs : kPatienceMs);
        if (!expected.empty()) {
            EXPECT_EQ(result, expected);
        }
        EXPECT_EQ(request.connectReports, 1);
        EXPECT_LE(request.endReports, 1);
        EXPECT_LE(request.completions, 1);
        EXPECT_LE(request.mtuReports, 1);
    }

    void Recover()
    {
        bluez->TreatWell();
        bluez->Return();
        WaitForAdapter(true);
        RunUntil([&] { return !bluez->IsConnected(kPhone) || bt_gatt_disconnect(kPhone) != 0; });
    }

    void Sweep(bool forgotten)
    {
        const auto steps = StepsOfARequest(forgotten);
        ASSERT_GE(steps.size(), 7U);
        int runs = 0;
        for (const Step& step : steps) {
            for (const Mishap& mishap : Mishaps()) {
                SCOPED_TRACE(step.method + " no. " + std::to_string(step.nth) + " " + mishap.name);
                bluez->Treat(step.method, step.nth, mishap.treatment);
                RunOne(forgotten, "");
                Recover();
                RunOne(false, "Success");
                ++runs;
                ASSERT_FALSE(HasFailure());
            }
        }
        std::printf("%d requests with a mishap, each followed by one without\n", runs);
    }
};

TEST_F(LinuxSweep, ARequestHasOneEndWhateverAnswerGoesWrong)
{
    Sweep(false);
}

TEST_F(LinuxSweep, ARequestToAForgottenPhoneHasOneEndWhateverAnswerGoesWrong)
{
    Sweep(true);
}

}  // namespace
}  // namespace lyn::linux_tests
