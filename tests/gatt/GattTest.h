// SPDX-License-Identifier: Apache-2.0
//
// Fixture: a simulated phone with two services, and its handles as a platform hands them out.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/GattClient/CGattClient.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";
inline constexpr const char* kOtherPhone = "AA:BB:CC:DD:EE:02";
inline constexpr const char* kServiceA = "00000000-0000-0000-0000-00000000000a";
inline constexpr const char* kServiceB = "00000000-0000-0000-0000-00000000000b";
inline constexpr const char* kCharacteristicA1 = "00000000-0000-0000-0000-0000000000a1";
inline constexpr const char* kCharacteristicA2 = "00000000-0000-0000-0000-0000000000a2";
inline constexpr const char* kCharacteristicB1 = "00000000-0000-0000-0000-0000000000b1";
inline constexpr const char* kUnknown = "00000000-0000-0000-0000-0000000000ff";

using Texts = std::vector<std::string>;

class GattTest : public SimulatedTv {
protected:
    GattTest();

    simulator::Phone phone;
    /// What keeps a characteristic or a service while a callback runs.
    std::shared_ptr<int> keeper = std::make_shared<int>();
};

/// A platform client of the connected phone, without the library's own.
class PlatformClient : public GattTest {
protected:
    PlatformClient();
    ~PlatformClient() override;

    bt_gatt_h Service(const char* uuid) const;
    bt_gatt_h Characteristic(const char* serviceUuid, const char* uuid) const;

    bt_gatt_client_h client = nullptr;
};

/// What a client reports, as "connected 0 AA:..", "disconnected 0 AA:..", "value text" in its order.
class ClientTest : public GattTest {
protected:
    using ClientPtr = std::shared_ptr<CGattClient>;

    /// A client held as its owner holds it, without services and callbacks.
    static ClientPtr MakeBareClient();
    /// A client with both services that keeps its reports in `reports`.
    ClientPtr MakeClient();
    ClientPtr MakeClient(const GattUuidMap& uuidMap);
    /// MakeClient(), connected to the phone; journal and log begin here.
    ClientPtr MakeConnectedClient();

    Texts reports;
    std::vector<int> writes;
};

}  // namespace lyn::test
