// SPDX-License-Identifier: Apache-2.0
//
// The builder knows four names and gives each its service, initialised once.
#include <memory>
#include <typeinfo>

#include "Common/LynException.h"
#include "Service/CDummyService.h"
#include "Service/CKovService.h"
#include "Service/CNodLinkService.h"
#include "Service/CScreenMirroringService.h"
#include "Service/ServiceBuilder.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using Texts = std::vector<std::string>;
using BuildFunction = IService* (CServiceBuilder::*)(const StateChangedCb&);

struct Entry {
    const char* name;
    const std::type_info& type;
    BuildFunction build;
};

const Entry kEntries[] = {{"dummy", typeid(CDummyService), &CServiceBuilder::BuildDummyService},
                          {"mirroring", typeid(CScreenMirroringService), &CServiceBuilder::BuildMirroringService},
                          {"nodlink", typeid(CNodLinkService), &CServiceBuilder::BuildNodLinkService},
                          {"kov", typeid(CKovService), &CServiceBuilder::BuildKovService}};

class ServiceBuilder : public SimulatedTv {
protected:
    StateChangedCb KeepStates()
    {
        return [this](lyn_state_e state) { m_states.push_back(state); };
    }

    // Fails the test unless this is the entry's service, initialised once and wired to KeepStates().
    void ExpectService(const Entry& entry, const std::shared_ptr<IService>& service)
    {
        ASSERT_NE(service, nullptr);
        const IService& object = *service;
        EXPECT_TRUE(typeid(object) == entry.type) << typeid(object).name();
        EXPECT_EQ(service->GetServiceName(), entry.name);
        EXPECT_EQ(CountCalls("bt_product_init"), 1);
        EXPECT_TRUE(m_states.empty());
        EXPECT_TRUE(Messages(ERROR).empty());
        service->StopScan();
        EXPECT_EQ(m_states, std::vector({LYN_STATE_READY}));
    }

    void Forget()
    {
        simulator::ClearJournal();
        simulator::ClearLog();
        m_states.clear();
    }

    // Holds the service as its manager does.
    static std::shared_ptr<IService> Hold(IService* service)
    {
        const std::shared_ptr<IService> held(service, [](IService* doomed) {
            doomed->Deinit();
            delete doomed;
        });
        held->Open();
        return held;
    }

    CServiceBuilder m_builder;
    std::vector<lyn_state_e> m_states;
};

TEST_F(ServiceBuilder, BuildsEachServiceByItsName)
{
    for (const Entry& entry : kEntries) {
        SCOPED_TRACE(entry.name);
        Forget();
        ExpectService(entry, Hold(m_builder.BuildService(entry.name, KeepStates())));
    }
}

TEST_F(ServiceBuilder, BuildsEachServiceByItsOwnOperation)
{
    for (const Entry& entry : kEntries) {
        SCOPED_TRACE(entry.name);
        Forget();
        ExpectService(entry, Hold((m_builder.*entry.build)(KeepStates())));
    }
}

TEST_F(ServiceBuilder, FindsTheBuilderOfEachName)
{
    m_builder.InitServiceBuilderMap();
    for (const Entry& entry : kEntries) {
        SCOPED_TRACE(entry.name);
        Forget();
        const CServiceBuilder::ServiceBuilderFunc build = m_builder.GetServiceBuilder(entry.name);
        ASSERT_TRUE(build);
        EXPECT_EQ(CountCalls("bt_product_init"), 0);
        ExpectService(entry, Hold(build(KeepStates())));
    }
}

TEST_F(ServiceBuilder, RefusesEveryOtherName)
{
    for (const std::string& name :
         {std::string(), std::string("Dummy"), std::string("DUMMY"), std::string("dummy "), std::string(" dummy"),
          std::string("dumm"), std::string("dummyy"), std::string("Mirroring"), std::string("NodLink"),
          std::string("nod_link"), std::string("KOV"), std::string("screen"), std::string("%s%n"),
          std::string("kov\0", 4)}) {
        SCOPED_TRACE(name);
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { m_builder.BuildService(name, KeepStates()); }),
                  "not defined service");
        EXPECT_EQ(Messages(ERROR), Texts({std::string(name.c_str()) + " is not defined service"}));
    }
    EXPECT_TRUE(simulator::JournalText().empty());
}

TEST_F(ServiceBuilder, KnowsNoNameBeforeItsMapIsFilled)
{
    EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { m_builder.GetServiceBuilder("dummy"); }),
              "not defined service");
    EXPECT_TRUE(HasLog(ERROR, "dummy is not defined service"));
}

TEST_F(ServiceBuilder, MayFillItsMapAgain)
{
    m_builder.InitServiceBuilderMap();
    m_builder.InitServiceBuilderMap();
    Hold(m_builder.BuildService("dummy", nullptr));
    Hold(m_builder.BuildService("kov", nullptr));
}

TEST_F(ServiceBuilder, ReturnsAServiceWhoseInitHasReportedACode)
{
    for (const Entry& entry : kEntries) {
        SCOPED_TRACE(entry.name);
        simulator::FailCall("bt_product_init", -7);
        IService* const service = m_builder.BuildService(entry.name, KeepStates());
        ASSERT_NE(service, nullptr);
        EXPECT_EQ(service->GetServiceName(), entry.name);
        EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->StopScan(); }), "m_pFsm is NULL");
        delete service;
    }
}

TEST_F(ServiceBuilder, ReturnsNothingWhenInitThrowsAndLeavesNothingBehind)
{
    simulator::SetAdapterState(BT_ADAPTER_DISABLED, false);
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { m_builder.BuildService("nodlink", KeepStates()); }),
              "m_StateChangedCb is nullptr");
    EXPECT_EQ(simulator::Alive().productInits, 0);
    EXPECT_EQ(simulator::Alive().registrations, 0);
    EXPECT_TRUE(m_states.empty());
}

TEST_F(ServiceBuilder, CanBeUsedThroughItsInterface)
{
    const std::unique_ptr<IServiceBuilder> builder = std::make_unique<CServiceBuilder>();
    EXPECT_EQ(Hold(builder->BuildService("mirroring", nullptr))->GetServiceName(), "mirroring");
}

}  // namespace
}  // namespace lyn::test
