// SPDX-License-Identifier: Apache-2.0
#include "FakeSupplicant.h"

namespace lyn::linux_tests {

namespace {

constexpr const char* kName = "fi.w1.wpa_supplicant1";
constexpr const char* kInterface = "fi.w1.wpa_supplicant1.Interface";
constexpr const char* kRoot = "/fi/w1/wpa_supplicant1";
constexpr const char* kDirect = "/fi/w1/wpa_supplicant1/Interfaces/0";
constexpr const char* kWlan = "/fi/w1/wpa_supplicant1/Interfaces/1";
constexpr const char* kBss = "/fi/w1/wpa_supplicant1/Interfaces/1/BSSs/3";

}  // namespace

FakeSupplicant::FakeSupplicant() : FakeDaemon(kName)
{
    const std::vector<const char*> interfaces = {kDirect, kWlan};
    Add(kRoot, kName, {{"Interfaces", g_variant_new_objv(interfaces.data(), 2)}});
    Add(kDirect, kInterface, {{"CurrentBSS", g_variant_new_object_path("/")}});
    Add(kWlan, kInterface, {{"CurrentBSS", g_variant_new_object_path(kBss)}});
    Add(kBss, "fi.w1.wpa_supplicant1.BSS",
        {{"BSSID", g_variant_new_parsed("[byte 0x02, 0x00, 0x00, 0xab, 0x00, 0xfe]")},
         {"Frequency", g_variant_new_uint16(kFrequency)}});
    Return();
}

FakeSupplicant::~FakeSupplicant()
{
    FakeDaemon::Die();
}

}  // namespace lyn::linux_tests
