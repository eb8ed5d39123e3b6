// SPDX-License-Identifier: Apache-2.0
#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

using Events = std::vector<std::string>;
using Texts = std::vector<std::string>;

class Exchange : public SimulatorTest {
protected:
    /// What a listening client gets for one message to a phone with this answer.
    static Events EventsOf(const Answer& answer)
    {
        AddPhone(AnsweringPhone({answer}));
        Peer peer;
        EXPECT_EQ(peer.Listen(), 0);
        EXPECT_EQ(peer.Write("hello"), 0);
        Settle();
        return peer.events;
    }
};

TEST_F(Exchange, AMessageArrivesAndIsAnswered)
{
    EXPECT_EQ(EventsOf(Text("Success")), (Events{"written 0", "value Success"}));
    EXPECT_EQ(MessagesTo(kPhone), Texts{"hello"});
}

TEST_F(Exchange, AnAnswerMayComeBeforeTheCompletion)
{
    Answer answer = Text("Success");
    answer.beforeCompletion = true;
    answer.delayMs = 1;
    EXPECT_EQ(EventsOf(answer), (Events{"value Success", "written 0"}));
}

TEST_F(Exchange, AnAnswerMayBeLateAndRepeated)
{
    Answer answer = Text("again");
    answer.delayMs = 2;
    answer.repeat = 3;
    EXPECT_EQ(EventsOf(answer), (Events{"written 0", "value again", "value again", "value again"}));
}

TEST_F(Exchange, AnAnswerMayBeAnyBytes)
{
    const std::string bytes("a\0\xFFz", 4);
    EXPECT_EQ(EventsOf(Text(bytes)), (Events{"written 0", "value " + bytes}));
}

TEST_F(Exchange, AnAnswerMayBeEmpty)
{
    EXPECT_EQ(EventsOf(Text("")), (Events{"written 0", "value "}));
}

TEST_F(Exchange, ASilentPhoneTakesTheMessageOnly)
{
    Answer answer;
    answer.kind = Answer::Kind::silent;
    EXPECT_EQ(EventsOf(answer), Events{"written 0"});
    EXPECT_EQ(MessagesTo(kPhone), Texts{"hello"});
}

TEST_F(Exchange, APhoneWithoutAnswersIsSilent)
{
    AddPhone(AnsweringPhone({}));
    Peer peer;
    peer.Listen();
    peer.Write("hello");
    Settle();
    EXPECT_EQ(peer.events, Events{"written 0"});
}

TEST_F(Exchange, AWriteMayFail)
{
    Answer answer;
    answer.kind = Answer::Kind::writeError;
    answer.code = 14;
    answer.delayMs = 1;
    EXPECT_EQ(EventsOf(answer), Events{"written 14"});
}

TEST_F(Exchange, APhoneMayHangUpInsteadOfAnswering)
{
    Answer answer;
    answer.kind = Answer::Kind::disconnect;
    answer.code = kLinkLost;
    AddPhone(AnsweringPhone({answer}));
    Peer peer;
    peer.Listen();
    peer.Write("hello");
    Settle();
    EXPECT_EQ(peer.events, Events{"written 0"});
    ASSERT_EQ(peer.link.reports.size(), 2U);
    EXPECT_EQ(peer.link.reports[1], (LinkUser::Report{kLinkLost, false, kPhone}));
}

TEST_F(Exchange, AWriteFailsWhenThePhoneHangsUpBeforeItsCompletion)
{
    Answer answer;
    answer.kind = Answer::Kind::disconnect;
    answer.beforeCompletion = true;
    AddPhone(AnsweringPhone({answer}));
    Peer peer;
    std::size_t reportsBefore = 0;
    peer.onWritten = [&] { reportsBefore = peer.link.reports.size(); };
    peer.Write("hello");
    Settle();
    ASSERT_EQ(peer.completions.size(), 1U);
    EXPECT_NE(peer.completions[0], 0);
    EXPECT_EQ(reportsBefore, 2U) << "the loss is reported first";
}

TEST_F(Exchange, AnswersComeInOrderAndTheLastStays)
{
    AddPhone(AnsweringPhone({Text("one"), Text("two")}));
    Peer peer;
    peer.Listen();
    for (int i = 0; i < 3; ++i) {
        peer.Write("hello");
        Settle();
    }
    EXPECT_EQ(peer.values, (Texts{"one", "two", "two"}));
}

TEST_F(Exchange, AnswersGoOnFromLinkToLinkUnlessEachLinkBeginsAnew)
{
    const auto firstValueOfTheSecondLink = [](bool perLink) {
        Phone phone = AnsweringPhone({Text("one"), Text("two")});
        phone.services[0].characteristics[0].answersPerLink = perLink;
        AddPhone(phone);
        std::string last;
        for (int i = 0; i < 2; ++i) {
            Peer peer;
            peer.Listen();
            peer.Write("hello");
            Settle();
            last = peer.values.at(0);
            bt_gatt_disconnect(kPhone);
            Settle();
        }
        return last;
    };
    EXPECT_EQ(firstValueOfTheSecondLink(false), "two");
    EXPECT_EQ(firstValueOfTheSecondLink(true), "one");
}

TEST_F(Exchange, AMessageLongerThanTheMtuArrivesWhole)
{
    AddPhone(AnsweringPhone({}));
    Peer peer;
    const std::string message(512, 'm');
    EXPECT_EQ(peer.Write(message), 0);
    Settle();
    EXPECT_EQ(MessagesTo(kPhone), Texts{message});
}

TEST_F(Exchange, AValueOfMoreThan512BytesIsRefused)
{
    AddPhone(AnsweringPhone({}));
    const Peer peer;
    const std::string message(513, 'm');
    EXPECT_NE(bt_gatt_set_value(peer.characteristic, message.data(), 513), 0);
    EXPECT_NE(bt_gatt_set_value(peer.characteristic, nullptr, 1), 0);
    EXPECT_NE(bt_gatt_set_value(peer.characteristic, message.data(), -1), 0);
    EXPECT_EQ(bt_gatt_set_value(peer.characteristic, message.data(), 0), 0);
}

TEST_F(Exchange, WhatIsWrittenIsTheValueAtTheTimeOfWriting)
{
    AddPhone(AnsweringPhone({}));
    Peer peer;
    peer.Write("first");
    bt_gatt_set_value(peer.characteristic, "second", 6);
    Settle();
    EXPECT_EQ(MessagesTo(kPhone), Texts{"first"});
}

TEST_F(Exchange, NobodyIsToldWhoHasNotAsked)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    peer.Write("hello");
    Settle();
    EXPECT_EQ(peer.events, Events{"written 0"});
}

TEST_F(Exchange, EveryListeningClientOfTheLinkIsTold)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    bt_gatt_client_h second = nullptr;
    bt_gatt_h service = nullptr;
    bt_gatt_h characteristic = nullptr;
    ASSERT_EQ(bt_gatt_client_create(kPhone, &second), 0);
    ASSERT_EQ(bt_gatt_client_get_service(second, kService, &service), 0);
    ASSERT_EQ(bt_gatt_service_get_characteristic(service, kCharacteristic, &characteristic), 0);
    std::string value;
    const auto keep = [](bt_gatt_h, char* text, int length, void* out) {
        static_cast<std::string*>(out)->assign(text, static_cast<std::size_t>(length));
    };
    ASSERT_EQ(bt_gatt_client_set_characteristic_value_changed_cb(characteristic, keep, &value), 0);
    peer.Listen();
    peer.Write("hello");
    Settle();
    EXPECT_EQ(peer.values, Texts{"Success"});
    EXPECT_EQ(value, "Success");
    bt_gatt_client_destroy(second);
}

TEST_F(Exchange, APhoneMayRefuseToNotifyOrToBeWritten)
{
    Phone phone = AnsweringPhone({Text("Success")});
    phone.services[0].characteristics[0].notifies = false;
    phone.services[0].characteristics[0].writable = false;
    AddPhone(phone);
    Peer peer;
    EXPECT_NE(peer.Listen(), 0);
    EXPECT_NE(peer.Write("hello"), 0);
    Settle();
    EXPECT_TRUE(peer.events.empty());
    EXPECT_TRUE(MessagesTo(kPhone).empty());
}

TEST_F(Exchange, TheMtuIsWhatBothSidesCan)
{
    Phone phone = AnsweringPhone({});
    phone.maxMtu = 185;
    AddPhone(phone);
    Peer peer;
    ASSERT_EQ(peer.RequestMtu(256), 0);
    ASSERT_EQ(peer.RequestMtu(100), 0);
    EXPECT_TRUE(peer.mtus.empty());
    Settle();
    EXPECT_EQ(peer.mtus, (std::vector<unsigned>{185, 100}));
}

TEST_F(Exchange, AnMtuThatDoesNotChangeIsReportedToo)
{
    Phone phone = AnsweringPhone({});
    phone.mtuStatus = 5;
    phone.mtuDelayMs = 1;
    AddPhone(phone);
    Peer peer;
    ASSERT_EQ(peer.RequestMtu(256), 0);
    Settle();
    EXPECT_EQ(peer.mtus, std::vector<unsigned>{23});
    EXPECT_EQ(peer.mtuStatuses, std::vector<unsigned>{5});
}

TEST_F(Exchange, AnMtuRequestIsReportedAlsoWhenTheLinkIsLostMeanwhile)
{
    Phone phone = AnsweringPhone({});
    phone.mtuDelayMs = 5;
    AddPhone(phone);
    Peer peer;
    ASSERT_EQ(peer.RequestMtu(256), 0);
    RemovePhone(kPhone);
    Settle();
    EXPECT_EQ(peer.mtus, std::vector<unsigned>{23});
    ASSERT_EQ(peer.mtuStatuses.size(), 1U);
    EXPECT_NE(peer.mtuStatuses[0], 0U);
}

TEST_F(Exchange, AnMtuOutOfRangeIsRefused)
{
    AddPhone(AnsweringPhone({}));
    Peer peer;
    EXPECT_NE(peer.RequestMtu(22), 0);
    EXPECT_NE(peer.RequestMtu(518), 0);
    EXPECT_EQ(peer.RequestMtu(23), 0);
    EXPECT_EQ(peer.RequestMtu(517), 0);
    Settle();
    EXPECT_EQ(peer.mtus.size(), 2U);
}

TEST_F(Exchange, NothingIsNotifiedOnceTheLinkGoesDown)
{
    Answer answer = Text("late");
    answer.delayMs = 2;
    Phone phone = AnsweringPhone({answer});
    phone.disconnectDelayMs = 10;
    AddPhone(phone);
    Peer peer;
    peer.Listen();
    peer.Write("hello");
    ASSERT_TRUE(RunUntil([&] { return !peer.completions.empty(); }));
    bt_gatt_disconnect(kPhone);
    Settle();
    EXPECT_TRUE(peer.values.empty());
}

TEST_F(Exchange, AWriteOnALinkThatIsLostBeforeItArrivesFails)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    peer.Listen();
    ASSERT_EQ(peer.Write("hello"), 0);
    RemovePhone(kPhone);
    Settle();
    ASSERT_EQ(peer.completions.size(), 1U);
    EXPECT_NE(peer.completions[0], 0);
    EXPECT_TRUE(MessagesTo(kPhone).empty());
}

TEST_F(Exchange, MessagesOutliveTheirPhoneUntilTheReset)
{
    AddPhone(AnsweringPhone({}));
    {
        Peer peer;
        peer.Write("hello");
        Settle();
    }
    RemovePhone(kPhone);
    EXPECT_EQ(MessagesTo("aa:bb:cc:dd:ee:01"), Texts{"hello"});
    Reset();
    EXPECT_TRUE(MessagesTo(kPhone).empty());
}

TEST_F(Exchange, OfManyMessagesTheLatestThousandAreKept)
{
    AddPhone(AnsweringPhone({}));
    Peer peer;
    for (int i = 0; i <= 1000; ++i) {
        ASSERT_EQ(peer.Write(std::to_string(i)), 0);
        Settle();
    }
    const Texts messages = MessagesTo(kPhone);
    ASSERT_EQ(messages.size(), 1000U);
    EXPECT_EQ(messages.front(), "1");
    EXPECT_EQ(messages.back(), "1000");
}

}  // namespace
}  // namespace lyn::simulator::test
