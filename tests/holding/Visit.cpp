// SPDX-License-Identifier: Apache-2.0
#include "holding/Visit.h"

#include <algorithm>
#include <utility>

#include "lifetime/Phones.h"
#include "lyn_simulator/simulator.h"

namespace lyn::test {
namespace {

constexpr std::uint32_t kSuspend = 0x40000000;
constexpr const char* kOtherPhone = "AA:BB:CC:DD:EE:02";
constexpr const char* kListenChannel = "memory/menu/network/screenmirroring/p2p_listen_channel";

const Deeds::Answers& Forwarded()
{
    static const Deeds::Answers answers = {"0", "3", "5", "6"};
    return answers;
}

const Deeds::Answers& OfNodLink()
{
    static const Deeds::Answers answers = {"0", "5", "8"};
    return answers;
}

void Turn(bt_adapter_state_e state)
{
    simulator::SetAdapterState(state);
    simulator::Settle();
}

}  // namespace

std::string Visit::Plan::Text() const
{
    if (order == Order::callsFirst) {
        return ", calls before deliveries";
    }
    return moving > 0 ? ", what moves the state: number " + std::to_string(moving) : "";
}

Visit::Visit(const Point& point, Plan plan, std::chrono::milliseconds limit, Tally& tally)
    : m_point(point),
      m_plan(plan),
      m_tally(tally),
      m_host(point.service),
      m_rival(point.service),
      m_heir(point.service),
      m_deeds(point, limit)
{
}

std::vector<std::string> Visit::Pay()
{
    Prepare(*m_point.scene, m_host);
    for (std::size_t step = 0; step < m_point.step; ++step) {
        m_point.scene->steps[step].work(m_host);
    }
    m_deeds.Tell(m_host);
    if (m_deeds.AwaitHeld()) {
        Look();
        PutInOrder();
        DoEverything();
        m_deeds.Note(m_tally);
    } else {
        Complain("the story did not come by this time");
    }
    LetGo();
    for (const std::string& wrong : m_deeds.WrongAnswers(MayHaveFoundNext())) {
        Complain(wrong);
    }
    CheckNext();
    EndAll();
    CheckReports();
    CheckTv();
    return m_problems;
}

std::vector<Visit::Plan> Visit::FurtherPlans() const
{
    std::vector<Plan> plans;
    if (m_point.HeldStep().isOnLoop) {
        return plans;
    }
    if (m_point.place.reportsState) {
        const auto& deliveries = AnswerFirst();
        const auto moving = std::count_if(deliveries.begin(), deliveries.end(),
                                          [](const Delivery& delivery) { return delivery.movesState; });
        for (std::size_t i = 1; i < static_cast<std::size_t>(moving) && m_hasDeviceReports; ++i) {
            plans.push_back({Order::deliveriesFirst, i});
        }
    } else if (m_hasExchange) {
        plans.push_back({Order::callsFirst, 0});
    }
    return plans;
}

void Visit::Look()
{
    m_host.OnlyListen();
    m_hasExchange = simulator::ConnectionRegistration().callback != nullptr;
    m_hasDeviceReports = simulator::AdapterRegistration().callback != nullptr;
}

/// What the next service, and the one after it, find is a TV on which everything works.
void Visit::PutInOrder() const
{
    simulator::ClearFaults();
    simulator::SetAdapterState(BT_ADAPTER_ENABLED, false);
    simulator::SetSetting(kListenChannel, 0);
    simulator::AddPhone(AgreeingPhone(m_point.service, kOtherPhone));
}

bool Visit::DoEverything()
{
    if (m_plan.order == Order::callsFirst) {
        return CallAll() && DeliverAll() && DestroyHost() && CreateNext() && UseNext();
    }
    return DeliverAll() && CallAll() && DestroyHost() && CreateNext() && UseNext();
}

/// One after the other, as there is one main loop. One that waits keeps the rest from coming: it is the last.
bool Visit::DeliverAll()
{
    if (m_point.HeldStep().isOnLoop) {
        return true;
    }
    std::vector<const Delivery*> moving;
    for (const Delivery& delivery : m_plan.order == Order::callsFirst ? TimeoutFirst() : AnswerFirst()) {
        const Work work = delivery.movesState ? Work::movingReport : Work::otherReport;
        if (MayWait(m_point.place, work, false)) {
            moving.push_back(&delivery);
        } else if (!Deliver(delivery, work)) {
            return false;
        }
    }
    return m_plan.moving >= moving.size() || Deliver(*moving[m_plan.moving], Work::movingReport);
}

bool Visit::Deliver(const Delivery& delivery, Work work)
{
    const std::function<void()> deliver = delivery.due();
    if (!deliver) {
        return true;
    }
    m_deeds.Start(delivery.name, work, false, [deliver] { return deliver(), std::string(); }, {});
    return AllCameBack();
}

bool Visit::CallAll()
{
    Call("start scan", Work::startOrStop, m_host, &Guest::StartScan, Forwarded());
    Call("start scan for JSON", Work::startOrStop, m_host, &Guest::StartScanForJson, Forwarded());
    Call("stop scan", Work::startOrStop, m_host, &Guest::StopScan, Forwarded());
    Call("create", Work::otherCall, m_rival, &Guest::Create, {"0", "7"});
    CallShort(m_host);
    if (!AllCameBack()) {
        return false;
    }
    Ask(m_host, kPhone, Forwarded());
    AskWithExtraData(m_host, kPhone, Forwarded());
    return AllCameBack();
}

/// The functions that never wait, but for create and destroy.
void Visit::CallShort(Guest& guest)
{
    Call("start advertise", Work::otherCall, guest, &Guest::Advertise, Forwarded());
    Call("stop advertise", Work::otherCall, guest, &Guest::EndAdvertise, Forwarded());
    Call("set version", Work::otherCall, guest, &Guest::SetVersion, OfNodLink());
    Call("ask type", Work::otherCall, guest, &Guest::AskType, OfNodLink());
    const auto askName = [&guest] { return guest.AskName(); };
    m_deeds.Start("ask name", Work::otherCall, &guest == m_pNext, askName, {"NotTap", "UnknownErr"});
}

bool Visit::DestroyHost()
{
    if (m_rival.IsAlive() && m_rival.Handle() == m_host.Handle()) {
        return true;  // A held destruction was far enough, and it would be the wrong one.
    }
    Call("destroy", Work::otherCall, m_host, &Guest::Destroy, {"0", "4"});
    return AllCameBack();
}

/// A held creation may have taken the one place; there is no next service then.
bool Visit::CreateNext()
{
    if (m_rival.IsAlive()) {
        m_pNext = &m_rival;
        return true;
    }
    m_pNext = &m_heir;
    Call("create", Work::otherCall, m_heir, &Guest::Create,
         m_point.IsInCreate() ? Deeds::Answers{"0", "7"} : Deeds::Answers{"0"});
    const bool isBack = AllCameBack();
    m_pNext = m_heir.IsAlive() ? &m_heir : nullptr;
    return isBack && m_pNext != nullptr;
}

/// Leaves it scanning, or asking where the held thread is about an exchange: the one must not lose its scan, the
/// other not its link.
bool Visit::UseNext()
{
    CallShort(*m_pNext);
    Call("start scan", Work::startOrStop, *m_pNext, &Guest::StartScan, {"0"});
    if (!AllCameBack()) {
        return false;
    }
    Call("stop scan", Work::startOrStop, *m_pNext, &Guest::StopScan, {"0"});
    if (!AllCameBack()) {
        return false;
    }
    Call("start scan for JSON", Work::startOrStop, *m_pNext, &Guest::StartScanForJson, {"0"});
    if (!AllCameBack()) {
        return false;
    }
    if (m_hasExchange) {
        Ask(*m_pNext, kOtherPhone, {"0"});
    }
    return AllCameBack();
}

bool Visit::AllCameBack()
{
    const std::string waiting = m_deeds.AwaitReturns();
    if (!waiting.empty()) {
        Complain("did not come back: " + waiting);
    }
    return waiting.empty();
}

void Visit::Call(const std::string& name, Work work, Guest& guest, lyn_error_e (Guest::*function)(),
                 Deeds::Answers answers)
{
    const auto call = [&guest, function] { return std::to_string((guest.*function)()); };
    m_deeds.Start(name, work, &guest == m_pNext, call, std::move(answers));
}

void Visit::Ask(Guest& guest, const char* address, Deeds::Answers answers)
{
    const auto ask = [&guest, address] { return std::to_string(guest.Request(address)); };
    m_deeds.Start("request", Work::request, &guest == m_pNext, ask, std::move(answers));
}

void Visit::AskWithExtraData(Guest& guest, const char* address, Deeds::Answers answers)
{
    const auto ask = [&guest, address] { return std::to_string(guest.RequestWith(address, "{}")); };
    m_deeds.Start("request with extra data", Work::request, &guest == m_pNext, ask, std::move(answers));
}

void Visit::LetGo()
{
    m_deeds.LetGo();
}

/// A handle is an address, and a new service may get that of an old one: a call that was held before it looked
/// for its service has then found the new one.
bool Visit::MayHaveFoundNext() const
{
    return m_pNext != nullptr && m_pNext->Handle() == m_host.Handle() && m_point.place.isInCall;
}

bool Visit::MayLookAtNext() const
{
    return m_pNext != nullptr && m_pNext->IsAlive() && !MayHaveFoundNext() && m_problems.empty();
}

void Visit::CheckNext()
{
    if (!MayLookAtNext()) {
        return;
    }
    if (m_hasExchange) {
        CheckRequestOf(*m_pNext);
    } else if (m_point.service != "dummy") {
        CheckScanOf(*m_pNext);
    }
    if (m_point.service == "nodlink") {
        CheckDeviceOf(*m_pNext);
    }
}

void Visit::CheckRequestOf(const Guest& next)
{
    LetAllCome();
    if (next.Results() != 1 || next.LastResult() != LYN_REQUEST_INITIATING_RESULT_SUCCESS) {
        Complain("the next service's request has had " + std::to_string(next.Results()) + " results, the last " +
                 std::to_string(next.LastResult()));
    }
}

void Visit::CheckScanOf(const Guest& next)
{
    const int phones = next.Phones();
    simulator::AddPhone(AgreeingPhone(m_point.service, kOtherPhone));
    simulator::Settle();
    if (next.Phones() == phones) {
        Complain("the next service does not hear phones any more");
    }
}

void Visit::CheckDeviceOf(const Guest& next)
{
    Turn(BT_ADAPTER_DISABLED);
    if (next.LastState() != LYN_STATE_NOT_READY) {
        Complain("the next service does not hear that Bluetooth is off");
    }
    Turn(BT_ADAPTER_ENABLED);
    simulator::PowerOff(kSuspend);
    simulator::Settle();
    if (next.LastState() != LYN_STATE_NOT_READY) {
        Complain("the next service does not hear that the TV is suspended");
    }
    Turn(BT_ADAPTER_ENABLED);
    simulator::AmbientPowerOff();
    simulator::Settle();
    if (next.LastState() != LYN_STATE_NOT_READY) {
        Complain("the next service does not hear of ambient off");
    }
    Turn(BT_ADAPTER_ENABLED);
}

void Visit::EndAll()
{
    for (Guest* guest : {&m_host, &m_rival, &m_heir}) {
        if (guest->IsAlive() && guest->Destroy() != LYN_ERROR_NONE && !MayHaveFoundNext()) {
            Complain("a service was gone that nobody had destroyed");
        }
    }
    simulator::RemovePhone(kOtherPhone);
    LetAllCome();
}

void Visit::CheckReports()
{
    const int begun = IsCallbackBeginning(m_point.place) ? 1 : 0;
    const int late = (MayHaveFoundNext() ? 0 : std::max(0, m_host.LateReports() - begun)) + m_rival.LateReports() +
                     m_heir.LateReports();
    if (late > 0) {
        Complain("reported to a destroyed service: " + std::to_string(late) + " times");
    }
}

void Visit::CheckTv()
{
    if (!TellPlainStory(m_point.service)) {
        Complain("afterwards, a plain story goes wrong");
    }
    const simulator::Counts alive = simulator::Alive();
    if (alive.clients + alive.links + alive.registrations + alive.productInits + alive.wifiDirectInits > 0 ||
        alive.scanning || alive.boosted) {
        Complain("left on the TV: " + std::to_string(alive.clients) + " clients, " + std::to_string(alive.links) +
                 " links, " + std::to_string(alive.registrations) + " registrations, " +
                 std::to_string(alive.productInits) + " Bluetooth initialisations" +
                 (alive.scanning ? ", a scan" : "") + (alive.boosted ? ", the boost" : ""));
    }
}

}  // namespace lyn::test
