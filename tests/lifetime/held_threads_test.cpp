// SPDX-License-Identifier: Apache-2.0
//
// One thread is held at a line of the log, or at the end of a platform call, while another one does what would
// have to wait, or what the first one must not undo when it goes on.
#include <future>
#include <string>
#include <thread>

#include "lifetime/Lives.h"
#include "support/Clock.h"

namespace lyn::test {
namespace {

/// The first thread that comes to a line with this text, or to the end of the platform call of this name, stands
/// there until it is let go.
class Hold {
public:
    explicit Hold(std::string text) : m_text(std::move(text))
    {
        simulator::SetCallListener([this](const simulator::CallMoment& moment) {
            const bool isEnd = moment.function == m_text && moment.phase == simulator::CallMoment::Phase::after;
            if ((isEnd || moment.text.find(m_text) != std::string::npos) && !m_isUsed.exchange(true)) {
                m_isThere.set_value();
                m_goOn.get_future().wait();
            }
        });
    }
    ~Hold() { simulator::SetCallListener({}); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    void WaitUntilThere() { m_isThere.get_future().wait(); }
    void LetGo() { m_goOn.set_value(); }

private:
    const std::string m_text;
    std::atomic<bool> m_isUsed{false};
    std::promise<void> m_isThere;
    std::promise<void> m_goOn;
};

class HeldThreads : public Lives {
protected:
    static void AddPhone(const std::string& service, const std::vector<std::string>& answers)
    {
        simulator::Phone phone = PhoneFor(service);
        CharacteristicOf(phone).answers.clear();
        for (const std::string& text : answers) {
            simulator::Answer answer;
            answer.text = text;
            CharacteristicOf(phone).answers.push_back(answer);
        }
        simulator::AddPhone(phone);
    }

    static void KeepResult(lyn_request_initiating_result_e result, void* userData)
    {
        static_cast<std::vector<lyn_request_initiating_result_e>*>(userData)->push_back(result);
    }
};

using ResultList = std::vector<lyn_request_initiating_result_e>;

TEST_F(HeldThreads, ARequestThatComesTooEarlyForTheMachineAndInTimeForTheStateLeavesTheLastResultToItsOwner)
{
    AddPhone("mirroring", {"NotTap", "Success"});
    App& app = Begin("mirroring");
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_TRUE(simulator::RunUntil([] { return CountCalls("bt_gatt_disconnect") == 1; }));

    ResultList second;
    Hold hold("Already stoppted");
    std::thread worker(
        [&] { EXPECT_EQ(lyn_request_initiating(app.handle, kPhone, KeepResult, &second), LYN_ERROR_NONE); });
    hold.WaitUntilThere();
    EXPECT_TRUE(app.WaitForResult());
    hold.LetGo();
    worker.join();
    EXPECT_TRUE(simulator::RunUntil([&] { return !second.empty(); }));
    ExpectNothingLeft();
    EXPECT_EQ(app.results, ResultList{LYN_REQUEST_INITIATING_RESULT_NOT_TAP});
    EXPECT_EQ(second, ResultList{LYN_REQUEST_INITIATING_RESULT_SUCCESS});
}

// The step of a destroyed service stands in the middle of its answer.
TEST_F(HeldThreads, AStepThatADestructionOvertakesLeavesTheNextServiceItsLink)
{
    AddPhone("kov", {"NotTap", "Success"});
    App& first = Begin("kov");
    ASSERT_EQ(first.Request(kPhone), LYN_ERROR_NONE);
    Hold hold("value : NotTap");
    App* next = nullptr;
    std::thread worker([&] {
        hold.WaitUntilThere();
        EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
        next = &Begin("kov");
        EXPECT_EQ(next->Request(kPhone), LYN_ERROR_NONE);
        hold.LetGo();
    });
    EXPECT_TRUE(simulator::RunUntil([&] { return next != nullptr && !next->results.empty(); }));
    worker.join();
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->results, ResultList{LYN_REQUEST_INITIATING_RESULT_SUCCESS});
    EXPECT_TRUE(first.results.empty());
    ExpectNothingLeft();
}

TEST_F(HeldThreads, AStopOfTheAdvertisementDoesNotForgetTheOneThatIsStartedBesideIt)
{
    constexpr const char* trigger = "memory/org.nuvex.bleapp/mirroring_trigger";
    App& app = Begin("mirroring");
    ASSERT_EQ(lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50), LYN_ERROR_NONE);
    Hold hold("vconf_set_int");
    std::thread worker([&] { EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE); });
    hold.WaitUntilThere();
    EXPECT_EQ(lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_100), LYN_ERROR_NONE);
    hold.LetGo();
    worker.join();
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::IntSetting(trigger), 0);
    ExpectNothingLeft();
}

TEST_F(HeldThreads, AnOvertakenStartLeavesTheNextServiceItsScanAndItsBoost)
{
    AddPhone("mirroring", {"Success"});
    App& first = Begin("mirroring");
    Hold hold("IN >> [virtual bool lyn::CPhoneScanner::StartScan");
    std::thread worker([&] { EXPECT_EQ(first.StartScan(), LYN_ERROR_NONE); });
    hold.WaitUntilThere();
    EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
    App& next = Begin("mirroring");
    EXPECT_EQ(next.StartScan(), LYN_ERROR_NONE);
    hold.LetGo();
    worker.join();
    EXPECT_TRUE(simulator::Alive().boosted);
    EXPECT_TRUE(simulator::RunUntil([&] { return !next.phones.empty(); }));
    EXPECT_EQ(next.StopScan(), LYN_ERROR_NONE);
    EXPECT_FALSE(simulator::Alive().scanning);
    ExpectNothingLeft();
}

}  // namespace
}  // namespace lyn::test
