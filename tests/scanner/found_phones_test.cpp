// SPDX-License-Identifier: Apache-2.0
//
// From the bytes on the air to the application's callback: what holds for every service that scans.
#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "scanner/Advertisements.h"
#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* GET_DATA = "bt_adapter_le_get_scan_result_manufacturer_data";
const std::string EXTRA_DATA = R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":1})";

class FoundPhone : public SimulatedTv, public testing::WithParamInterface<std::string> {
protected:
    FoundPhone()
    {
        app = std::make_unique<App>(GetParam());
        EXPECT_EQ(app->StartScan(), LYN_ERROR_NONE);
        simulator::ClearJournal();
        simulator::ClearLog();
        m_kernelLines = simulator::KernelLog().size();
    }

    static bool IsNodLink() { return GetParam() == "nodlink"; }

    static Bytes GoodAdvertising()
    {
        if (IsNodLink()) {
            return Advertising(NodLinkData());
        }
        return Advertising(Marked(GetParam() == "kov" ? KOV_MARKER : MIRRORING_MARKER, UNIQUE_ID));
    }

    static std::optional<Bytes> GoodResponse()
    {
        return IsNodLink() ? std::nullopt : std::optional<Bytes>(NameResponse("Kitchen"));
    }

    static test::FoundPhone Good(int rssi = -50)
    {
        return IsNodLink() ? test::FoundPhone{false, "", ADDRESS, "", EXTRA_DATA, rssi}
                           : test::FoundPhone{true, "Kitchen", ADDRESS, UNIQUE_ID, "", rssi};
    }

    static void DeliverGood(int rssi = -50)
    {
        simulator::DeliverAdvertisement(ADDRESS, rssi, GoodAdvertising(), GoodResponse());
    }

    // Calls back as the platform does, with anything.
    static void Call(int result, bt_adapter_le_device_scan_result_info_s* info)
    {
        const auto scan = simulator::ScanRegistration();
        ASSERT_NE(scan.callback, nullptr);
        scan.callback(result, info, scan.userData);
    }

    void ExpectDroppedWith(const std::vector<std::string>& errors) const
    {
        EXPECT_THAT(app->phones, IsEmpty());
        EXPECT_THAT(Messages(ERROR), testing::ElementsAreArray(errors));
        EXPECT_EQ(simulator::KernelLog().size(), m_kernelLines);
    }

    std::unique_ptr<App> app;
    std::size_t m_kernelLines = 0;
};

INSTANTIATE_TEST_SUITE_P(Of, FoundPhone, testing::Values("mirroring", "nodlink", "kov"),
                         [](const auto& param) { return param.param; });

TEST_P(FoundPhone, IsReportedWithWhatItsPacketsSay)
{
    DeliverGood(-61);
    EXPECT_THAT(app->phones, ElementsAre(Good(-61)));
    EXPECT_THAT(Messages(ERROR), IsEmpty());
    EXPECT_THAT(Messages(WARN), IsEmpty());
}

TEST_P(FoundPhone, IsReadFromTheAdvertisingPacketFirstAndFromTheScanResponseSecond)
{
    DeliverGood();
    if (IsNodLink()) {
        EXPECT_THAT(simulator::JournalText(), ElementsAre(std::string(GET_DATA) + "(0 -> 117, 14)"));
    } else {
        EXPECT_THAT(simulator::JournalText(), ElementsAre(std::string(GET_DATA) + "(0 -> 117, 24)",
                                                          std::string(GET_DATA) + "(1 -> 117, 9)"));
    }
}

TEST_P(FoundPhone, IsLoggedOnItsWay)
{
    DeliverGood(-61);
    const std::string address = ADDRESS;
    const std::string id = UNIQUE_ID;
    if (IsNodLink()) {
        EXPECT_THAT(Messages(INFO), ElementsAre("name : (null), address : " + address +
                                                    ", unique_id : , rssi : -61, extra_data : " + EXTRA_DATA,
                                                "Device Found : (null), " + address + ", "));
    } else {
        EXPECT_THAT(Messages(INFO), ElementsAre("42 00 4b 69 74 63 68 65 6e / Kitchen / 9",
                                                "name : Kitchen, address : " + address + ", unique_id : " + id +
                                                    ", rssi : -61, extra_data : ",
                                                "Device Found : Kitchen, " + address + ", " + id));
    }
}

TEST_P(FoundPhone, IsReportedAgainForEachAdvertisement)
{
    DeliverGood(-50);
    DeliverGood(-70);
    DeliverGood(-70);
    EXPECT_THAT(app->phones, ElementsAre(Good(-50), Good(-70), Good(-70)));
}

TEST_P(FoundPhone, IsReportedFromTheSimulatedAirToo)
{
    simulator::Phone phone;
    phone.address = ADDRESS;
    phone.rssi = -44;
    phone.advertising = GoodAdvertising();
    phone.scanResponse = GoodResponse();
    phone.intervalMs = 1;
    simulator::AddPhone(phone);
    ASSERT_TRUE(simulator::RunUntil([&] { return app->phones.size() >= 3; }));
    EXPECT_EQ(app->phones[0], Good(-44));
    EXPECT_EQ(app->phones[2], Good(-44));
}

TEST_P(FoundPhone, IsReportedWhateverTheResultOfTheScanReportIs)
{
    for (const int result : {0, -1, 1}) {
        SCOPED_TRACE(result);
        app->phones.clear();
        ScanResult scan(GoodAdvertising(), GoodResponse());
        Call(result, scan.Info());
        EXPECT_THAT(app->phones, ElementsAre(Good(-50)));
    }
}

TEST_P(FoundPhone, WithoutAScanResultIsDroppedWithALine)
{
    Call(0, nullptr);
    Call(-1, nullptr);
    ExpectDroppedWith({"discInfo is NULL", "discInfo is NULL"});
    EXPECT_THAT(FunctionsThatSay("discInfo"), ElementsAre("OnLeScanResult"));
}

TEST_P(FoundPhone, WithoutAnAddressIsDroppedWithALine)
{
    ScanResult scan(GoodAdvertising(), GoodResponse());
    scan.Info()->remote_address = nullptr;
    Call(0, scan.Info());
    ExpectDroppedWith({"disc_info->remote_address"});
    EXPECT_THAT(FunctionsThatSay("disc_info"), ElementsAre("OnLeScanResult"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TEST_P(FoundPhone, WithoutUserDataIsDroppedWithALine)
{
    ScanResult scan(GoodAdvertising(), GoodResponse());
    simulator::ScanRegistration().callback(0, scan.Info(), nullptr);
    ExpectDroppedWith({"userData is nullptr"});
}

TEST_P(FoundPhone, WithoutAnAdvertisingPacketIsDroppedWithALine)
{
    simulator::DeliverAdvertisement(ADDRESS, -50, std::nullopt, NameResponse("Kitchen"));
    ExpectDroppedWith({"adv data is nullptr"});
    EXPECT_THAT(FunctionsThatSay("adv data is nullptr"),
                ElementsAre(IsNodLink() ? "BuildExtraData" : "GetDeviceId"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TEST_P(FoundPhone, WhoseManufacturerDataCannotBeReadIsDroppedWithTheCode)
{
    simulator::FailCall(GET_DATA, -74);
    DeliverGood();
    ExpectDroppedWith({std::string(GET_DATA) + " api failed [0xffffffb6]"});
    EXPECT_THAT(FunctionsThatSay("api failed"), ElementsAre("GetManufDataFromScanResult"));
    EXPECT_EQ(CountCalls(GET_DATA), 1) << "the scan response is not read any more";
}

TEST_P(FoundPhone, WhoseManufacturerDataIsNullIsDroppedWithALine)
{
    simulator::NullText(GET_DATA);
    DeliverGood();
    ExpectDroppedWith({"exception manufacturer data is null"});
    EXPECT_THAT(FunctionsThatSay("manufacturer data is null"), ElementsAre("OnLeScanResult"));
}

TEST_P(FoundPhone, WhoseManufacturerDataIsEmptyIsDroppedWithALine)
{
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising({}), GoodResponse());
    ExpectDroppedWith({"exception lenth is less then 1"});
}

TEST_P(FoundPhone, OfAnotherCompanyOrKindIsDroppedInSilence)
{
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising({0x10, 0x05, 0x01}, 76), std::nullopt);
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(Marked(99, UNIQUE_ID)), NameResponse("Kitchen"));
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising({0x42}), NameResponse("Kitchen"));
    EXPECT_THAT(LogLines(), IsEmpty());
    ExpectDroppedWith({});
    EXPECT_EQ(CountCalls(GET_DATA), 3) << "nothing but the advertising packet is read";
}

TEST_P(FoundPhone, OfAnotherServiceIsDroppedInSilence)
{
    const auto deliver = [](const simulator::Phone& phone) {
        simulator::DeliverAdvertisement(phone.address, -50, phone.advertising, phone.scanResponse);
    };
    if (GetParam() != "mirroring") {
        deliver(simulator::MirroringPhone(ADDRESS, "Kitchen", UNIQUE_ID));
    }
    if (GetParam() != "kov") {
        deliver(simulator::KovPhone(ADDRESS, "Kitchen", UNIQUE_ID));
    }
    if (!IsNodLink()) {
        deliver(simulator::NodLinkPhone(ADDRESS, true, true));
        deliver(simulator::NodLinkAvDevice(ADDRESS));
    }
    EXPECT_THAT(LogLines(), IsEmpty());
    ExpectDroppedWith({});
}

TEST_P(FoundPhone, LeavesTheScanWholeWhenTheApplicationThrows)
{
    app->onPhone = [](const test::FoundPhone&) { throw std::runtime_error("100 %s"); };
    EXPECT_NO_THROW(DeliverGood());
    EXPECT_THAT(Messages(ERROR), ElementsAre("exception 100 %s"));
    app->onPhone = nullptr;
    DeliverGood();
    EXPECT_EQ(app->phones.size(), 2U);
}

TEST_P(FoundPhone, LeavesTheScanWholeWhenTheApplicationThrowsWhatIsNoException)
{
    app->onPhone = [](const test::FoundPhone&) { throw 7; };
    EXPECT_NO_THROW(DeliverGood());
    EXPECT_EQ(Messages(ERROR).size(), 1U);
    app->onPhone = nullptr;
    DeliverGood();
    EXPECT_EQ(app->phones.size(), 2U);
}

TEST_P(FoundPhone, MayEndTheScanInItsReport)
{
    app->onPhone = [&](const test::FoundPhone&) { EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE); };
    DeliverGood();
    DeliverGood();
    EXPECT_EQ(app->phones.size(), 1U);
}

TEST_P(FoundPhone, MayEndTheServiceInItsReport)
{
    const auto scan = simulator::ScanRegistration();
    app->onPhone = [&](const test::FoundPhone&) { EXPECT_EQ(app->Destroy(), LYN_ERROR_NONE); };
    DeliverGood();
    EXPECT_EQ(app->phones.size(), 1U);
    EXPECT_EQ(app->handle, nullptr);

    simulator::ClearLog();
    ScanResult late(GoodAdvertising(), GoodResponse());
    scan.callback(0, late.Info(), scan.userData);
    EXPECT_EQ(app->phones.size(), 1U);
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_P(FoundPhone, IsNotReportedToTheNextServiceByTheScanOfTheLast)
{
    const auto scan = simulator::ScanRegistration();
    ASSERT_EQ(app->Destroy(), LYN_ERROR_NONE);
    App next(GetParam());
    ScanResult late(GoodAdvertising(), GoodResponse());
    scan.callback(0, late.Info(), scan.userData);
    EXPECT_THAT(next.phones, IsEmpty());
    EXPECT_THAT(app->phones, IsEmpty());
}

TEST_P(FoundPhone, IsReportedAsJsonWhenTheApplicationWantsIt)
{
    app->StopScan();
    ASSERT_EQ(app->StartScanWithSerialization(), LYN_ERROR_NONE);
    DeliverGood(-61);
    const std::string expected =
        IsNodLink() ? R"({"Address":"AA:BB:CC:DD:EE:01","ExtraData":"{\"device_type\":\"mobile\",)"
                      R"(\"nodlink_version\":\"3.0\",\"sm_available\":1}","Name":"","RSSI":-61,"UniqueID":""})"
                    : R"({"Address":"AA:BB:CC:DD:EE:01","ExtraData":"","Name":"Kitchen","RSSI":-61,)"
                      R"("UniqueID":"0123456789abcdefghijkl"})";
    EXPECT_THAT(app->jsons, ElementsAre(expected));
}

}  // namespace
}  // namespace lyn::test
