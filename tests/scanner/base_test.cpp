// SPDX-License-Identifier: Apache-2.0
//
// What all scanners share, at the class itself.
#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Common/LynException.h"
#include "Scanner/CScanner.h"
#include "scanner/Advertisements.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* KEY = "memory/some/trigger";

class ScannerBase : public SimulatedTv {
protected:
    static std::vector<std::string> Writes() { return Calls("vconf_set_int"); }

    static std::string Write(int interval)
    {
        return "vconf_set_int(\"" + std::string(KEY) + "\", " + std::to_string(interval) + ")";
    }
};

TEST_F(ScannerBase, StartsAndStopsByDoingNothing)
{
    CScanner scanner(nullptr, nullptr, KEY);
    EXPECT_TRUE(scanner.StartScan());
    EXPECT_TRUE(scanner.StopScan());
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TEST_F(ScannerBase, NeitherStopsTheScanNorTheAdvertisementWhenItEnds)
{
    {
        CScanner scanner(nullptr, nullptr, KEY);
        scanner.StartAdvertisement(50);
        simulator::ClearJournal();
    }
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

// ---- Reports -----------------------------------------------------------------------------------------

TEST_F(ScannerBase, ReportsAPhoneWithItsFiveValues)
{
    int calls = 0;
    CScanner scanner(
        [&](const lyn_device_info_t& info) {
            ++calls;
            EXPECT_STREQ(info.name, "Kitchen");
            EXPECT_STREQ(info.address, ADDRESS);
            EXPECT_STREQ(info.unique_id, "id");
            EXPECT_STREQ(info.extra_data, "{}");
            EXPECT_EQ(info.rssi, -71);
            EXPECT_THAT(Messages(INFO), ElementsAre("name : Kitchen, address : AA:BB:CC:DD:EE:01, unique_id : id, "
                                                    "rssi : -71, extra_data : {}"))
                << "the line comes before the call";
        },
        nullptr, KEY);
    scanner.NotifyDeviceFound("Kitchen", ADDRESS, "id", -71, "{}");
    EXPECT_EQ(calls, 1);
}

TEST_F(ScannerBase, ReportsAnEmptyNameAsAbsentAndOtherEmptyTextsAsEmpty)
{
    int calls = 0;
    CScanner scanner(
        [&](const lyn_device_info_t& info) {
            ++calls;
            EXPECT_EQ(info.name, nullptr);
            EXPECT_STREQ(info.address, "");
            EXPECT_STREQ(info.unique_id, "");
            EXPECT_STREQ(info.extra_data, "");
            EXPECT_EQ(info.rssi, 0);
        },
        nullptr, KEY);
    scanner.NotifyDeviceFound("", "", "", 0, "");
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(Messages(INFO), ElementsAre("name : (null), address : , unique_id : , rssi : 0, extra_data : "));
}

TEST_F(ScannerBase, LogsAPhoneThatNobodyListensTo)
{
    CScanner scanner(nullptr, nullptr, KEY);
    scanner.NotifyDeviceFound("Kitchen", ADDRESS, "id", -71, "{}");
    EXPECT_THAT(Messages(ERROR), ElementsAre("m_DeviceFoundCallback is NULL"));
    EXPECT_THAT(Messages(INFO), IsEmpty());
}

TEST_F(ScannerBase, PassesExceptionsOfTheListenerOn)
{
    CScanner scanner([](const lyn_device_info_t&) { throw std::runtime_error("not now"); }, nullptr, KEY);
    EXPECT_EQ(ThrownBy<std::runtime_error>([&] { scanner.NotifyDeviceFound("", "", "", 0, ""); }), "not now");
    CScanner another([](const lyn_device_info_t&) { throw LynExceptionNotValidDevice("not mine"); }, nullptr, KEY);
    EXPECT_EQ(ThrownBy<LynExceptionNotValidDevice>([&] { another.NotifyDeviceFound("", "", "", 0, ""); }),
              "not mine");
}

TEST_F(ScannerBase, ReportsTheStateOfTheScan)
{
    EXPECT_EQ(static_cast<int>(SCAN_STATE_STOPPED), 0);
    EXPECT_EQ(static_cast<int>(SCAN_STATE_STARTED), 1);
    std::vector<ScanState> states;
    CScanner scanner(
        nullptr, [&](ScanState state) { states.push_back(state); }, KEY);
    scanner.NotifyScanStateChanged(SCAN_STATE_STARTED);
    scanner.NotifyScanStateChanged(SCAN_STATE_STOPPED);
    EXPECT_THAT(states, ElementsAre(SCAN_STATE_STARTED, SCAN_STATE_STOPPED));
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(ScannerBase, LogsAStateThatNobodyListensTo)
{
    CScanner scanner(nullptr, nullptr, KEY);
    scanner.NotifyScanStateChanged(SCAN_STATE_STARTED);
    EXPECT_THAT(Messages(ERROR), ElementsAre("m_ScanStateChangedCallback is NULL"));
}

TEST_F(ScannerBase, KeepsItsOwnCopiesOfTheCallables)
{
    const auto count = std::make_shared<int>(0);
    DeviceFoundCb found = [count](const lyn_device_info_t&) { ++*count; };
    ScanStateChangedCb state = [count](ScanState) { *count += 10; };
    {
        CScanner scanner(found, state, KEY);
        found = nullptr;
        state = nullptr;
        scanner.NotifyDeviceFound("", "", "", 0, "");
        scanner.NotifyScanStateChanged(SCAN_STATE_STOPPED);
    }
    EXPECT_EQ(*count, 11);
    EXPECT_EQ(count.use_count(), 1) << "released with the scanner";
}

// ---- The TV's advertisement --------------------------------------------------------------------------

TEST_F(ScannerBase, WritesTheIntervalAndThenZeroOnce)
{
    CScanner scanner(nullptr, nullptr, KEY);
    scanner.StartAdvertisement(5);
    EXPECT_THAT(Writes(), ElementsAre(Write(5)));
    scanner.StopAdvertisement();
    EXPECT_THAT(Writes(), ElementsAre(Write(5), Write(0)));
    scanner.StopAdvertisement();
    EXPECT_THAT(Writes(), ElementsAre(Write(5), Write(0)));
    EXPECT_THAT(Messages(INFO), ElementsAre("Interval : 5", "Interval : 0"));
}

TEST_F(ScannerBase, WritesAnyIntervalUnchanged)
{
    CScanner scanner(nullptr, nullptr, KEY);
    for (const int interval : {300, 0, -1, 2147483647}) {
        simulator::ClearJournal();
        scanner.StartAdvertisement(interval);
        EXPECT_THAT(Writes(), ElementsAre(Write(interval)));
    }
}

TEST_F(ScannerBase, WritesEachNewIntervalWhileItAdvertises)
{
    CScanner scanner(nullptr, nullptr, KEY);
    scanner.StartAdvertisement(50);
    scanner.StartAdvertisement(100);
    scanner.StopAdvertisement();
    EXPECT_THAT(Writes(), ElementsAre(Write(50), Write(100), Write(0)));
}

TEST_F(ScannerBase, WritesNothingToStopAnAdvertisementThatWasNeverStarted)
{
    CScanner scanner(nullptr, nullptr, KEY);
    scanner.StopAdvertisement();
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
    EXPECT_THAT(Messages(INFO), IsEmpty());
}

TEST_F(ScannerBase, FailsWhenTheIntervalCannotBeWritten)
{
    CScanner scanner(nullptr, nullptr, KEY);
    for (const int code : {-1, 1}) {
        SCOPED_TRACE(code);
        simulator::ClearLog();
        simulator::FailCall("vconf_set_int", code);
        lyn_error_e error = LYN_ERROR_NONE;
        try {
            scanner.SetBleAdvertisementInterval(50);
        } catch (const LynExceptionOperationFailed& e) {
            error = e.GetCode();
            EXPECT_STREQ(e.what(), "Failed to set ble adv interval");
        }
        EXPECT_EQ(error, LYN_ERROR_OPERATION_FAILED);
        EXPECT_THAT(Messages(INFO), ElementsAre("Interval : 50"));
        EXPECT_THAT(Messages(ERROR), ElementsAre("vconf_set_int failed for key : memory/some/trigger"));
    }
}

TEST_F(ScannerBase, HasNothingToStopAfterAStartThatFailed)
{
    CScanner scanner(nullptr, nullptr, KEY);
    simulator::FailCall("vconf_set_int", -1);
    EXPECT_THROW(scanner.StartAdvertisement(50), LynExceptionOperationFailed);
    simulator::ClearJournal();
    scanner.StopAdvertisement();
    EXPECT_THAT(Writes(), IsEmpty());
}

TEST_F(ScannerBase, StillHasItsFirstAdvertisementToStopWhenASecondStartFailed)
{
    CScanner scanner(nullptr, nullptr, KEY);
    scanner.StartAdvertisement(50);
    simulator::FailCall("vconf_set_int", -1);
    EXPECT_THROW(scanner.StartAdvertisement(100), LynExceptionOperationFailed);
    simulator::ClearJournal();
    scanner.StopAdvertisement();
    EXPECT_THAT(Writes(), ElementsAre(Write(0)));
}

TEST_F(ScannerBase, TriesAgainToStopWhenTheFirstStopFailed)
{
    CScanner scanner(nullptr, nullptr, KEY);
    scanner.StartAdvertisement(50);
    simulator::ClearJournal();
    simulator::FailCall("vconf_set_int", -1);
    EXPECT_THROW(scanner.StopAdvertisement(), LynExceptionOperationFailed);
    scanner.StopAdvertisement();
    EXPECT_THAT(Writes(), ElementsAre(Write(0), Write(0)));
    scanner.StopAdvertisement();
    EXPECT_THAT(Writes(), ElementsAre(Write(0), Write(0)));
}

// ---- Manufacturer data -------------------------------------------------------------------------------

constexpr const char* GET_DATA = "bt_adapter_le_get_scan_result_manufacturer_data";

class ManufacturerDataOfAPacket : public SimulatedTv {
protected:
    // What came back, as text; "empty" for an empty pointer.
    std::string Read(ScanResult& result, bt_adapter_le_packet_type_e packet)
    {
        const std::shared_ptr<char> data =
            CScanner::GetManufDataFromScanResult(result.Info(), packet, company, length);
        return data ? std::string(data.get(), static_cast<std::size_t>(length)) : "empty";
    }

    int company = 0;
    int length = 0;
};

TEST_F(ManufacturerDataOfAPacket, IsTakenFromThePacketThatIsAskedFor)
{
    ScanResult result(Advertising(BytesOf("advertised"), 117), Advertising(BytesOf("answered"), 300));
    EXPECT_EQ(Read(result, BT_ADAPTER_LE_PACKET_ADVERTISING), "advertised");
    EXPECT_EQ(company, 117);
    EXPECT_EQ(length, 10);
    EXPECT_EQ(Read(result, BT_ADAPTER_LE_PACKET_SCAN_RESPONSE), "answered");
    EXPECT_EQ(company, 300);
    EXPECT_EQ(length, 8);
    EXPECT_THAT(simulator::JournalText(),
                ElementsAre(std::string(GET_DATA) + "(0 -> 117, 10)", std::string(GET_DATA) + "(1 -> 300, 8)"));
}

TEST_F(ManufacturerDataOfAPacket, IsNotTakenFromTheOtherPacketInstead)
{
    ScanResult noResponse(Advertising(BytesOf("advertised")));
    EXPECT_EQ(Read(noResponse, BT_ADAPTER_LE_PACKET_SCAN_RESPONSE), "empty");
    ScanResult noAdvertising(std::nullopt, Advertising(BytesOf("answered")));
    EXPECT_EQ(Read(noAdvertising, BT_ADAPTER_LE_PACKET_ADVERTISING), "empty");
}

TEST_F(ManufacturerDataOfAPacket, HasEveryByteOfIt)
{
    const std::string bytes("\0\xFF\0a\0", 5);
    ScanResult result(Advertising(BytesOf(bytes)));
    EXPECT_EQ(Read(result, BT_ADAPTER_LE_PACKET_ADVERTISING), bytes);
}

TEST_F(ManufacturerDataOfAPacket, ThatThePlatformFailsToReadIsEmptyAndLoggedWithTheCode)
{
    ScanResult result(Advertising(BytesOf("advertised")));
    const std::vector<std::pair<int, std::string>> codes = {
        {-1, "0xffffffff"}, {1, "0x0001"}, {0x12345, "0x12345"}, {-29359867, "0xfe400105"}};
    for (const auto& [code, text] : codes) {
        SCOPED_TRACE(text);
        simulator::ClearLog();
        company = 11;
        length = 22;
        simulator::FailCall(GET_DATA, code);
        EXPECT_EQ(Read(result, BT_ADAPTER_LE_PACKET_ADVERTISING), "empty");
        EXPECT_EQ(company, 11);
        EXPECT_EQ(length, 22);
        EXPECT_THAT(Messages(ERROR), ElementsAre(std::string(GET_DATA) + " api failed [" + text + "]"));
    }
}

TEST_F(ManufacturerDataOfAPacket, ThatIsNullIsAnInvalidParameterWithoutALine)
{
    ScanResult result(Advertising(BytesOf("advertised")));
    simulator::NullText(GET_DATA);
    EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { Read(result, BT_ADAPTER_LE_PACKET_ADVERTISING); }),
              "manufacturer data is null");
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(ManufacturerDataOfAPacket, ThatIsEmptyIsAnInvalidParameterWithoutALine)
{
    ScanResult result(Advertising({}));
    EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { Read(result, BT_ADAPTER_LE_PACKET_ADVERTISING); }),
              "lenth is less then 1");
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(ManufacturerDataOfAPacket, OfOneByteIsEnough)
{
    ScanResult result(Advertising({0x7F}));
    EXPECT_EQ(Read(result, BT_ADAPTER_LE_PACKET_ADVERTISING), "\x7F");
}

}  // namespace
}  // namespace lyn::test
