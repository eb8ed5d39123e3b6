// SPDX-License-Identifier: Apache-2.0
//
// What the four variants do in Init() and Deinit(), and what they plug in.
#include <memory>

#include "Common/LynException.h"
#include "Service/CDummyService.h"
#include "Service/CKovService.h"
#include "Service/CNodLinkService.h"
#include "Service/CScreenMirroringService.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using Texts = std::vector<std::string>;

// A variant by its two constructors.
struct Variant {
    const char* name;
    std::shared_ptr<CService> (*make)(const std::string& name, const StateChangedCb& cb);
    std::shared_ptr<CService> (*makeDefault)();
    bool watchesTheDevice;
};

template <typename Service>
Variant VariantOf(const char* name, bool watchesTheDevice = false)
{
    return {name,
            [](const std::string& given, const StateChangedCb& cb) -> std::shared_ptr<CService> {
                return std::make_shared<Service>(given, cb);
            },
            []() -> std::shared_ptr<CService> { return std::make_shared<Service>(); }, watchesTheDevice};
}

const Variant kVariants[] = {VariantOf<CDummyService>("dummy"), VariantOf<CScreenMirroringService>("mirroring"),
                             VariantOf<CNodLinkService>("nodlink", true), VariantOf<CKovService>("kov")};

Texts InitCalls(const Variant& variant)
{
    if (!variant.watchesTheDevice) {
        return {"bt_product_init()"};
    }
    return {"bt_product_init()",
            "device_power_get_state()",
            "bt_adapter_get_state(-> 1)",
            "device_power_subscribe_poweroff_event()",
            "device_power_subscribe_ambient_poweroff()",
            "bt_adapter_set_state_changed_cb()"};
}

class ServiceVariants : public SimulatedTv, public ::testing::WithParamInterface<Variant> {
protected:
    std::shared_ptr<CService> Make()
    {
        return Open(GetParam().make("a name", [this](lyn_state_e state) { m_states.push_back(state); }));
    }

    static std::shared_ptr<CService> Open(std::shared_ptr<CService> service)
    {
        service->Open();
        return service;
    }

    std::vector<lyn_state_e> m_states;
};

TEST_P(ServiceVariants, DoNothingOnThePlatformBeforeInit)
{
    const auto service = Make();
    EXPECT_EQ(service->GetServiceName(), "a name");
    EXPECT_TRUE(simulator::JournalText().empty());
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->StopScan(); }), "m_pFsm is NULL");
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->OnStopScan(); }), "m_pScanner is NULL");
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->GetNodlinkType(); }), "m_pRequester is NULL");
}

TEST_P(ServiceVariants, ReportTheResultOfInitAndNoState)
{
    const auto service = Make();
    EXPECT_EQ(service->Init(), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::JournalText(), InitCalls(GetParam()));
    EXPECT_TRUE(m_states.empty());
    service->StopScan();
    EXPECT_EQ(m_states, std::vector({LYN_STATE_READY}));
    service->Deinit();
}

TEST_P(ServiceVariants, MakeNothingWhenTheBluetoothProductFails)
{
    for (const int code : {1, -1, -7, 0x7FFFFFFF}) {
        SCOPED_TRACE(code);
        simulator::ClearJournal();
        simulator::FailCall("bt_product_init", code);
        const auto service = Make();
        EXPECT_EQ(service->Init(), LYN_ERROR_INTERNAL);
        EXPECT_EQ(simulator::JournalText(), Texts({"bt_product_init()"}));
        EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->StopScan(); }), "m_pFsm is NULL");
        EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->OnStopScan(); }), "m_pScanner is NULL");
        EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->GetNodlinkType(); }), "m_pRequester is NULL");
    }
}

TEST_P(ServiceVariants, DeinitialiseTheBluetoothProductOncePerDeinitAndKeepTheirParts)
{
    const auto service = Make();
    service->Init();
    simulator::ClearJournal();
    EXPECT_EQ(service->Deinit(), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::JournalText(), Texts({"bt_product_deinit()"}));
    EXPECT_NO_THROW(service->StopScan());
    EXPECT_EQ(m_states, std::vector({LYN_STATE_READY}));
    EXPECT_EQ(service->Deinit(), LYN_ERROR_NONE);
    EXPECT_EQ(CountCalls("bt_product_deinit"), 2);
}

TEST_P(ServiceVariants, IgnoreAFailureOfTheBluetoothProductInDeinit)
{
    const auto service = Make();
    service->Init();
    simulator::FailCall("bt_product_deinit", -7);
    EXPECT_EQ(service->Deinit(), LYN_ERROR_NONE);
    EXPECT_EQ(service->Deinit(), LYN_ERROR_NONE);
}

TEST_P(ServiceVariants, CanBeMadeWithoutNameAndCallback)
{
    const auto service = Open(GetParam().makeDefault());
    EXPECT_EQ(service->GetServiceName(), "");
    EXPECT_EQ(service->Init(), LYN_ERROR_NONE);
    EXPECT_NO_THROW(service->StopScan());
    EXPECT_TRUE(HasLog(ERROR, "m_StateChangeCb is null"));
    service->Deinit();
}

TEST_P(ServiceVariants, WatchTheDeviceOnlyWhereTheyAreNodLink)
{
    const auto service = GetParam().make("a name", [this](lyn_state_e state) { m_states.push_back(state); });
    service->Init();
    service->Open();
    EXPECT_EQ(simulator::Alive().registrations, GetParam().watchesTheDevice ? 3 : 0);
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    simulator::Settle();
    using States = std::vector<lyn_state_e>;
    EXPECT_EQ(m_states, GetParam().watchesTheDevice ? States({LYN_STATE_NOT_READY}) : States());
    service->Deinit();
}

TEST_P(ServiceVariants, AreReachedByNoReportBeforeTheyAreOpen)
{
    const auto service = GetParam().make("a name", [this](lyn_state_e state) { m_states.push_back(state); });
    service->Init();
    service->StopScan();
    EXPECT_TRUE(m_states.empty());
    service->Open();
    service->StopScan();
    EXPECT_EQ(m_states, std::vector({LYN_STATE_READY}));
    service->Deinit();
}

/// Notes which of the service's own operations a report of a part comes through.
class ListeningService : public CDummyService {
public:
    explicit ListeningService(Texts& calls) : CDummyService("dummy", [](lyn_state_e) {}), m_calls(calls) {}

    void OnStateChanged(lyn_state_e state) override
    {
        m_calls.push_back("OnStateChanged " + std::to_string(state));
        CDummyService::OnStateChanged(state);
    }
    void OnDeviceFound(const lyn_device_info_t& info) override
    {
        m_calls.push_back("OnDeviceFound " + std::string(info.address));
        CDummyService::OnDeviceFound(info);
    }
    void OnRequestResult(lyn_request_initiating_result_e result) override
    {
        m_calls.push_back("OnRequestResult " + std::to_string(result));
        CDummyService::OnRequestResult(result);
    }

private:
    Texts& m_calls;
};

class ReportsOfTheParts : public SimulatedTv {
protected:
    ReportsOfTheParts() : service(std::make_shared<ListeningService>(calls))
    {
        service->Init();
        service->Open();
    }
    ~ReportsOfTheParts() override { service->Deinit(); }

    Texts calls;
    std::shared_ptr<ListeningService> service;
};

TEST_F(ReportsOfTheParts, ComeThroughTheServicesOwnOperations)
{
    service->StartScan([this](const lyn_device_info_t&) { calls.emplace_back("told"); });
    service->RequestInitiating([this](lyn_request_initiating_result_e) { calls.emplace_back("told"); }, "id", "");
    simulator::Settle();
    EXPECT_EQ(calls,
              Texts({"OnDeviceFound 11:22:33:44:55:66", "told", "OnStateChanged 1", "OnStateChanged 0",
                     "OnStateChanged 0", "OnStateChanged 2", "OnRequestResult 0", "OnStateChanged 0", "told"}));
}

TEST_F(ReportsOfTheParts, EndWithTheService)
{
    service->RequestInitiating([this](lyn_request_initiating_result_e) { calls.emplace_back("told"); }, "id", "");
    calls.clear();
    service->Retire();
    simulator::Settle();
    EXPECT_EQ(calls, Texts());
}

INSTANTIATE_TEST_SUITE_P(Each, ServiceVariants, ::testing::ValuesIn(kVariants),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace lyn::test
