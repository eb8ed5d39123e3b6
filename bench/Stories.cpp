// SPDX-License-Identifier: Apache-2.0
#include "Stories.h"

#include <array>

#include "support/Clock.h"

namespace lyn::bench {
namespace {

using simulator::Answer;
using simulator::Phone;

constexpr auto kSuccess = LYN_REQUEST_INITIATING_RESULT_SUCCESS;
constexpr auto kGattFail = LYN_REQUEST_INITIATING_RESULT_GATT_FAIL;
constexpr auto kNotSupported = LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED;

void AnswerWith(Phone& phone, const Answer& answer)
{
    CharacteristicOf(phone).answers = {answer};
}

struct Story {
    const char* name = "";
    void (*change)(Phone& phone) = nullptr;
    lyn_request_initiating_result_e result = kSuccess;
    bool isCutShort = false;  ///< the service is destroyed before the result
};

constexpr std::array<Story, 9> kStories = {{
    {"agrees", [](Phone&) {}, kSuccess},
    {"refuses", [](Phone& phone) { AnswerWith(phone, {.text = "NotSupported"}); }, kNotSupported},
    {"connects at the third attempt",
     [](Phone& phone) {
         phone.connects = {{133, 0}, {133, 0}, {0, 0}};
     },
     kSuccess},
    {"never connects",
     [](Phone& phone) {
         phone.connects = {{133, 0}};
     },
     kGattFail},
    {"never answers", [](Phone& phone) { CharacteristicOf(phone).answers.clear(); }, kGattFail},
    {"hangs up", [](Phone& phone) { AnswerWith(phone, {.kind = Answer::Kind::disconnect, .text = {}}); },
     kGattFail},
    {"fails the write",
     [](Phone& phone) { AnswerWith(phone, {.kind = Answer::Kind::writeError, .text = {}, .code = 133}); },
     kGattFail},
    {"does not offer the service", [](Phone& phone) { phone.services.clear(); }, kGattFail},
    {"is left in mid-request", [](Phone& phone) { CharacteristicOf(phone).answers.clear(); }, kGattFail, true},
}};

// "dummy" hears of no phone, and its own always agrees.
lyn_request_initiating_result_e ResultFor(const std::string& service, const Story& story)
{
    return service == "dummy" ? kSuccess : story.result;
}

void WaitForResult(const App& app)
{
    simulator::Settle();
    while (app.results == 0 && test::ElapseTimeout()) {
        simulator::Settle();
    }
}

}  // namespace

long StoryCount()
{
    return static_cast<long>(kStories.size());
}

void Narrator::Next()
{
    const auto& services = AllServices();
    const auto turn = static_cast<std::size_t>(m_cycles / m_cyclesPerService);
    if (m_cycles % m_cyclesPerService == 0) {
        EndService();
    }
    Tell(services[turn % services.size()], m_cycles);
    ++m_cycles;
}

void Narrator::Tell(const std::string& service, long number)
{
    const Story& story = kStories[static_cast<std::size_t>(number % StoryCount())];
    const std::string what = service + ", a phone that " + story.name + ": ";
    Phone phone = PhoneFor(service, number % 2 == 0 || service != "nodlink" ? 1 : 2);
    story.change(phone);
    simulator::AddPhone(phone);
    if (m_app == nullptr) {
        m_app = std::make_unique<App>(service);
    }
    m_app->phones = 0;
    m_app->results = 0;

    m_app->StartScan();
    simulator::Settle();
    Require(m_app->phones > 0, what + "it is found");
    m_app->Request();
    if (story.isCutShort) {
        EndService();
        return;
    }
    WaitForResult(*m_app);
    Require(m_app->results == 1, what + "there is one result");
    Require(m_app->lastResult == ResultFor(service, story), what + "the result is the right one");
}

void Narrator::ComeToRest()
{
    EndService();
    Tell(AllServices().front(), 0);
    EndService();
}

void Narrator::EndService()
{
    m_app.reset();
    simulator::Settle();
}

}  // namespace lyn::bench
