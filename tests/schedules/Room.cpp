// SPDX-License-Identifier: Apache-2.0
#include "schedules/Room.h"

#include <string>

#include "lyn_simulator/simulator.h"
#include "schedules/TvFolder.h"
#include "support/Clock.h"

namespace lyn::schedules {
namespace {

using simulator::Answer;

constexpr const char* kUniqueId = "0123456789abcdefghijkl";
constexpr const char* kChannelSetting = "memory/menu/network/screenmirroring/p2p_listen_channel";
constexpr int kNothingCaptured = 7;
constexpr int kFault = -1;
constexpr std::uint32_t kSuspend = 0x40000000;
constexpr int kRefused = 133;
constexpr int kLinkLost = static_cast<int>(0xFE400104);

struct OwnAnswer {
    const char* text;
    lyn_request_initiating_result_e result;
};
constexpr std::array<OwnAnswer, kPhones> kAnswers = {
    {{"Success", LYN_REQUEST_INITIATING_RESULT_SUCCESS},
     {"NotTap", LYN_REQUEST_INITIATING_RESULT_NOT_TAP},
     {"Connected", LYN_REQUEST_INITIATING_RESULT_CONNECTED},
     {"NotSupported", LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED}}};

enum Behaviour : int {
    good = 0,
    silent,
    refusing,
    late,  ///< connects at the third attempt
    dropping,
    early,  ///< answers before the write's completion is reported
    hangingUp,
    refusingWrites,
    repeating,
    asking,  ///< first says which application is shown
    badGoodbye,
    withoutService
};

std::vector<Answer> AnswersOf(int phone, int behaviour)
{
    const std::string own = kAnswers.at(static_cast<std::size_t>(phone)).text;
    switch (behaviour) {
    case silent:
        return {};
    case early:
        return {{.text = own, .beforeCompletion = true}};
    case hangingUp:
        return {{.kind = Answer::Kind::disconnect, .text = ""}};
    case refusingWrites:
        return {{.kind = Answer::Kind::writeError, .text = "", .code = kRefused}};
    case repeating:
        return {{.text = own, .repeat = 3}};
    case asking:
        return {{.text = R"({"type":"fgApp","packageName":"video"})"}, {.text = own}};
    default:
        return {{.text = own}};
    }
}

void Bend(simulator::Phone& phone, int behaviour)
{
    switch (behaviour) {
    case refusing:
        phone.connects = {{kRefused}};
        break;
    case late:
        phone.connects = {{kRefused}, {kRefused}, {0}};
        break;
    case dropping:
        phone.dropAfterConnectMs = 0;
        phone.dropCode = kLinkLost;
        break;
    case badGoodbye:
        phone.disconnectCode = kRefused;
        break;
    case withoutService:
        phone.services.clear();
        break;
    default:
        break;
    }
}

bool Answers(int behaviour)
{
    switch (behaviour) {
    case good:
    case late:
    case early:
    case repeating:
    case asking:
    case badGoodbye:
        return true;
    default:
        return false;
    }
}

// Asks for one service, and offers all.
simulator::Phone MakePhone(int number, int behaviour)
{
    const std::string address = AddressOf(number);
    simulator::Phone phone = simulator::MirroringPhone(address, "Phone", kUniqueId);
    const simulator::Phone kov = simulator::KovPhone(address, "Phone", kUniqueId);
    const simulator::Phone nodLink = simulator::NodLinkPhone(address, true, true);
    if (number % 3 == 1) {
        phone.advertising = nodLink.advertising;
    } else if (number % 3 == 2) {
        phone.advertising = kov.advertising;
    }
    phone.services.push_back(kov.services.at(0));
    phone.services.push_back(nodLink.services.at(0));
    for (simulator::Service& service : phone.services) {
        service.characteristics.at(0).answers = AnswersOf(number, behaviour);
        service.characteristics.at(0).answersPerLink = true;
    }
    phone.intervalMs = 0;
    phone.limit = 2;
    Bend(phone, behaviour);
    return phone;
}

}  // namespace

const char* AddressOf(int phone)
{
    static constexpr std::array addresses = {"AA:00:00:00:00:00", "AA:00:00:00:00:01", "AA:00:00:00:00:02",
                                             "AA:00:00:00:00:03", "AA:00:00:00:00:04", "no address"};
    return addresses.at(static_cast<std::size_t>(phone));
}

int PhoneOf(const std::string& service)
{
    return service == "nodlink" ? 1 : service == "kov" ? 2 : 0;
}

lyn_request_initiating_result_e AnswerOf(int phone)
{
    return kAnswers.at(static_cast<std::size_t>(phone)).result;
}

void Room::Begin(const std::vector<int>& behaviours)
{
    simulator::Reset();
    simulator::SetFilePrefix(TvFolder::Path());
    simulator::SetLogCapture(kNothingCaptured);
    simulator::SetJournal(false);
    simulator::SetKernelLogMode(simulator::KernelLogMode::discard);
    simulator::SetConnectDeadline(0);
    *this = {};
    m_behaviours = behaviours;
    m_behaviours.resize(kPhones);
    for (int phone = 0; phone < kPhones; ++phone) {
        simulator::AddPhone(MakePhone(phone, m_behaviours[static_cast<std::size_t>(phone)]));
    }
}

void Room::Happen(const Move& move)
{
    switch (move.what) {
    case What::bluetoothOff:
        simulator::SetAdapterState(BT_ADAPTER_DISABLED);
        m_isBluetoothOn = false;
        m_hasBluetoothBeenOff = true;
        break;
    case What::bluetoothOn:
        simulator::SetAdapterState(BT_ADAPTER_ENABLED);
        m_isBluetoothOn = true;
        m_hasBluetoothGoneOn = true;
        break;
    case What::suspend:
        simulator::PowerOff(kSuspend);
        break;
    case What::ambient:
        simulator::AmbientPowerOff();
        break;
    case What::elapse:
        test::ElapseTimeout();
        break;
    case What::loseLink: {
        const int phone = move.number % kPhones;
        simulator::RemovePhone(AddressOf(phone));
        simulator::AddPhone(MakePhone(phone, m_behaviours[static_cast<std::size_t>(phone)]));
        break;
    }
    case What::channel:
        simulator::SetSetting(kChannelSetting, move.number);
        break;
    default:
        simulator::FailCall(FallibleFunctions().at(static_cast<std::size_t>(move.number)), kFault);
        m_hasFaults = true;
        break;
    }
    m_isDisturbed = true;
}

void Room::Calm()
{
    simulator::ClearFaults();
    simulator::SetSetting(kChannelSetting, 0);
    if (m_isDisturbed) {
        Happen({'T', What::bluetoothOn});
    }
}

void Room::Advertise(const std::string& service)
{
    constexpr int rssi = -50;
    const simulator::Phone phone = MakePhone(PhoneOf(service), good);
    simulator::DeliverAdvertisement(phone.address, rssi, phone.advertising, phone.scanResponse);
}

void Room::Mend()
{
    for (int phone = 0; phone < kPhones; ++phone) {
        simulator::RemovePhone(AddressOf(phone));
        simulator::AddPhone(MakePhone(phone, good));
    }
}

bool Room::MayAnswer(int phone, const std::string& service, lyn_request_initiating_result_e result) const
{
    if (service == "dummy") {
        return result == LYN_REQUEST_INITIATING_RESULT_SUCCESS;
    }
    if (phone >= kPhones) {
        return result == LYN_REQUEST_INITIATING_RESULT_GATT_FAIL;
    }
    const int behaviour = m_behaviours[static_cast<std::size_t>(phone)];
    if (result == LYN_REQUEST_INITIATING_RESULT_GATT_FAIL) {
        return m_isDisturbed || !Answers(behaviour);
    }
    // No answer for any other service; its second one comes to who takes over a link that was left.
    if (behaviour == asking && service != "nodlink" && result == LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR) {
        return true;
    }
    return Answers(behaviour) && result == AnswerOf(phone);
}

}  // namespace lyn::schedules
