// SPDX-License-Identifier: Apache-2.0
//
// Cost of one advertisement, from the platform's callback on: foreign ones, which are nearly all, and
// accepted ones, up to the application's callback.
#include <cstdlib>

#include "Advert.h"
#include "Cases.h"

namespace lyn::bench {
namespace {

constexpr std::uint16_t kCompany = 117;
constexpr std::uint16_t kOtherCompany = 76;

struct Kind {
    const char* name;
    Bytes advertising;
};

Bytes Packet(std::uint16_t company, const Bytes& data)
{
    Bytes packet = simulator::AdStructure(0x01, {0x06});
    const Bytes structure = simulator::ManufacturerData(company, data);
    packet.insert(packet.end(), structure.begin(), structure.end());
    return packet;
}

std::vector<Kind> ForeignKinds()
{
    Bytes marked(24, 0x30);
    marked[1] = 99;
    return {{"other_company", Packet(kOtherCompany, marked)},
            {"other_marker", Packet(kCompany, marked)},
            {"short_data", Packet(kCompany, {0x42, 25, 0x30})},
            {"company_only", Packet(kOtherCompany, {})},
            {"no_manufacturer_data", simulator::AdStructure(0x01, {0x06})}};
}

void LoopOverAdvert(benchmark::State& state, const std::string& service, Advert& advert, bool accepted)
{
    PrepareTv();
    App app(service);
    app.StartScan();
    const auto scan = simulator::ScanRegistration();
    while (state.KeepRunning()) {
        advert.Deliver(scan);
    }
    Require(app.phones == (accepted ? state.iterations() : 0), "each of our phones is reported, and no other");
    app.StopScan();
}

void LoopOverJson(benchmark::State& state, const std::string& service, Advert& advert)
{
    PrepareTv();
    App app(service);
    Require(lyn_start_scan_with_serialization(app.handle, App::CountJson, &app) == LYN_ERROR_NONE,
            "a scan starts");
    const auto scan = simulator::ScanRegistration();
    while (state.KeepRunning()) {
        advert.Deliver(scan);
    }
    Require(app.phones == state.iterations(), "each phone is reported");
    app.StopScan();
}

void AddAccepted(const std::string& name, const std::string& service, const simulator::Phone& phone)
{
    AddCase("accepted/" + name, [=](benchmark::State& state) {
        Advert advert(phone);
        LoopOverAdvert(state, service, advert, true);
    });
    AddCase("accepted_as_json/" + name, [=](benchmark::State& state) {
        Advert advert(phone);
        LoopOverJson(state, service, advert);
    });
}

// What the simulated platform takes of each advertisement, alone.
void AddPlatformLook(const std::string& name, const Bytes& advertising)
{
    AddCase("platform/manufacturer_data/" + name, [=](benchmark::State& state) {
        PrepareTv();
        const Advert advert(advertising);
        while (state.KeepRunning()) {
            int company = 0;
            int length = 0;
            char* data = nullptr;
            bt_adapter_le_get_scan_result_manufacturer_data(advert.Info(), BT_ADAPTER_LE_PACKET_ADVERTISING,
                                                            &company, &data, &length);
            benchmark::DoNotOptimize(data);
            std::free(data);
        }
    });
}

}  // namespace

void AddForeignAdverts()
{
    for (const char* service : {"mirroring", "nodlink", "kov"}) {
        for (const Kind& kind : ForeignKinds()) {
            const std::string name = std::string("foreign/") + service + "/" + kind.name;
            AddCase(name, [service, advertising = kind.advertising](benchmark::State& state) {
                Advert advert(advertising);
                LoopOverAdvert(state, service, advert, false);
            });
        }
    }
    AddPlatformLook("present", ForeignKinds()[0].advertising);
    AddPlatformLook("absent", ForeignKinds()[4].advertising);
}

void AddAcceptedAdverts()
{
    for (const char* service : {"mirroring", "nodlink", "kov"}) {
        AddAccepted(service, service, PhoneFor(service));
    }
    AddAccepted("nodlink_av", "nodlink", simulator::NodLinkAvDevice(kPhone));
}

}  // namespace lyn::bench
