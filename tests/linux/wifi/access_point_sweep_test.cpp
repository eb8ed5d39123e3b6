// SPDX-License-Identifier: Apache-2.0
//
// The connected access point, with each answer of wpa_supplicant in turn going wrong in each way.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "FakeSupplicant.h"
#include "OpenFiles.h"
#include "PrivateBus.h"
#include "SupplicantMishaps.h"
#include "lyn_platform/wifi.h"

namespace lyn::linux_tests {
namespace {

constexpr const char* kGetAll = "Properties.GetAll";
/// The root, the interface of Wi-Fi Direct, the one that is connected, its access point.
constexpr int kCalls = 4;
constexpr int kDirectInterface = 2;

class AccessPointSweep : public ::testing::Test {
protected:
    AccessPointSweep() { PrivateBus::Instance(); }
    ~AccessPointSweep() override { wifi_deinitialize(); }
    void SetUp() override { ASSERT_EQ(wifi_initialize(), 0); }

    /// Whether it is found, with the right values; a failure leaves its argument alone.
    static bool Finds()
    {
        int untouched = 0;
        wifi_ap_h ap = &untouched;
        if (wifi_get_connected_ap(&ap) != 0) {
            EXPECT_EQ(ap, &untouched);
            return false;
        }
        char* bssid = nullptr;
        int frequency = 0;
        EXPECT_EQ(wifi_ap_get_bssid(ap, &bssid), 0);
        EXPECT_EQ(wifi_ap_get_frequency(ap, &frequency), 0);
        EXPECT_STREQ(bssid, FakeSupplicant::kBssid);
        EXPECT_EQ(frequency, FakeSupplicant::kFrequency);
        std::free(bssid);
        return true;
    }

    void FindWith(int call, const BusMishap& mishap)
    {
        supplicant.Treat(kGetAll, call, mishap.treatment);
        const bool found = Finds();
        // Of two interfaces the one that says nothing may have used up the time of the other.
        if (call != kDirectInterface || mishap.harmless) {
            EXPECT_EQ(found, mishap.harmless);
        }
        supplicant.TreatWell();
        supplicant.Return();
        EXPECT_TRUE(Finds()) << "the next time";
    }

    FakeSupplicant supplicant;
};

TEST_F(AccessPointSweep, IsFoundOrNotWhateverAnswerGoesWrongAndFoundTheNextTime)
{
    ASSERT_TRUE(Finds());
    ASSERT_EQ(supplicant.Count(kGetAll), kCalls);
    for (int call = 1; call <= kCalls; ++call) {
        for (const BusMishap& mishap : BusMishaps()) {
            SCOPED_TRACE("call no. " + std::to_string(call) + " " + mishap.name);
            FindWith(call, mishap);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(AccessPointSweep, OneInterfaceThatFailsDoesNotHideAnother)
{
    for (const BusMishap& mishap : BusMishaps()) {
        if (mishap.treatment.done || !mishap.treatment.error.empty() || !mishap.treatment.values.empty()) {
            supplicant.TreatWell();
            supplicant.Treat(kGetAll, kDirectInterface, mishap.treatment);
            EXPECT_TRUE(Finds()) << mishap.name;
        }
    }
}

TEST_F(AccessPointSweep, AnAnswerThatComesTooLateIsNotTakenForTheNextOne)
{
    supplicant.Treat(kGetAll, kCalls, Treatment::Late(2100));
    EXPECT_FALSE(Finds());
    supplicant.TreatWell();
    EXPECT_TRUE(Finds());
    RunQuietly(200);
    EXPECT_TRUE(Finds());
}

TEST_F(AccessPointSweep, ManyInterfacesThatDoNotAnswerAreGivenUpInTime)
{
    std::string paths;
    for (int i = 0; i < 5000; ++i) {
        paths += (i == 0 ? "" : ", ") + std::string("'/x/") + std::to_string(i) + "'";
    }
    supplicant.Treat(kGetAll, 0, Treatment::Ignored());
    supplicant.Treat(kGetAll, 1, Treatment::Answers("({'Interfaces': <[objectpath " + paths + "]>},)"));
    const gint64 begun = g_get_monotonic_time();
    EXPECT_FALSE(Finds());
    EXPECT_LT(g_get_monotonic_time() - begun, gint64{20} * G_USEC_PER_SEC);
    EXPECT_LE(supplicant.Count(kGetAll), 3) << "nobody is asked when the time is over";
}

TEST_F(AccessPointSweep, LeavesNoDescriptorOpen)
{
    ASSERT_TRUE(Finds());
    RunQuietly(50);
    const auto before = OpenFiles();
    for (const BusMishap& mishap : BusMishaps()) {
        if (!mishap.treatment.dies && (mishap.treatment.done || mishap.treatment.answers > 0)) {
            supplicant.Treat(kGetAll, 1, mishap.treatment);
            Finds();
            supplicant.TreatWell();
        }
    }
    EXPECT_TRUE(RunUntil([&] { return OpenFiles() <= before; })) << "a descriptor is left open";
}

}  // namespace
}  // namespace lyn::linux_tests
