// SPDX-License-Identifier: Apache-2.0
//
// The version that the application sets, the type that it is told, and the two that other services refuse.
#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

class NodLinkVersion : public NodLinkRequest {
protected:
    lyn_error_e Set(const char* version) { return lyn_set_nodlink_version(app.handle, version); }

    /// What is thrown for a version; empty for none.
    std::string Thrown(const char* version)
    {
        try {
            Set(version);
        } catch (const char* text) {
            return text;
        }
        return "";
    }

    std::string SentType()
    {
        Ask();
        const std::string key = "\"type\":\"";
        const Texts messages = MessagesToPhone();
        const std::string message = messages.empty() ? "" : messages.back();
        const std::size_t start = message.find(key);
        return start == std::string::npos ? "" : message.substr(start + key.size());
    }
};

TEST_F(NodLinkVersion, IsNotNamedUnlessItIsThree)
{
    EXPECT_EQ(SentType(), "nodLink\"}");
    EXPECT_EQ(Set("2.0"), LYN_ERROR_NONE);
    EXPECT_EQ(SentType(), "nodLink\"}");
    EXPECT_EQ(Set("3.0"), LYN_ERROR_NONE);
    EXPECT_EQ(SentType(), "nodLink3.0\"}");
    EXPECT_EQ(SentType(), "nodLink3.0\"}") << "it stays";
    EXPECT_EQ(Set("2.0"), LYN_ERROR_NONE);
    EXPECT_EQ(SentType(), "nodLink\"}");
}

TEST_F(NodLinkVersion, ThreeIsNamedInTheMessage)
{
    EXPECT_EQ(Set("3.0"), LYN_ERROR_NONE);
    EXPECT_EQ(SentType(), "nodLink3.0\"}");
}

TEST_F(NodLinkVersion, TwoIsNotNamedInTheMessage)
{
    EXPECT_EQ(Set("2.0"), LYN_ERROR_NONE);
    EXPECT_EQ(SentType(), "nodLink\"}");
}

TEST_F(NodLinkVersion, IsNotNamedInTheMessageWhenNoneIsSet)
{
    EXPECT_EQ(SentType(), "nodLink\"}");
}

TEST_F(NodLinkVersion, IsThrownBackAsTextWhenItIsNotSupported)
{
    for (const char* version : {"4.0", "", "3", "3.0 ", " 3.0", "3.00", "2.0\n", "2,0", "two"}) {
        SCOPED_TRACE(version);
        bool thrown = false;
        try {
            Set(version);
        } catch (const char* text) {
            thrown = true;
            EXPECT_STREQ(text, version);
        }
        EXPECT_TRUE(thrown);
    }
}

TEST_F(NodLinkVersion, StaysAfterAnUnsupportedOne)
{
    EXPECT_EQ(Set("3.0"), LYN_ERROR_NONE);
    EXPECT_EQ(Thrown("4.0"), "4.0");
    EXPECT_EQ(SentType(), "nodLink3.0\"}");
}

TEST_F(NodLinkVersion, StaysUnsetAfterAnUnsupportedOne)
{
    EXPECT_EQ(Thrown("4.0"), "4.0");
    EXPECT_EQ(SentType(), "nodLink\"}");
}

TEST_F(NodLinkVersion, IsThrownAsTheTextThatWasGiven)
{
    const std::string version(1000, '4');
    const char* thrown = nullptr;
    try {
        Set(version.c_str());
    } catch (const char* text) {
        thrown = text;
    }
    EXPECT_EQ(static_cast<const void*>(thrown), version.c_str());
}

TEST_F(NodLinkVersion, CanBeSetWhileAPhoneIsAsked)
{
    phone.connects = {{0, 30}};
    simulator::AddPhone(phone);
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(Set("3.0"), LYN_ERROR_NONE);
    simulator::Settle();
    ASSERT_EQ(MessagesToPhone().size(), 1U);
    EXPECT_NE(MessagesToPhone()[0].find("nodLink3.0"), std::string::npos);
}

TEST_F(NodLinkVersion, GoesWithTheService)
{
    EXPECT_EQ(Set("3.0"), LYN_ERROR_NONE);
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    EXPECT_EQ(app.Create("nodlink"), LYN_ERROR_NONE);
    EXPECT_EQ(SentType(), "nodLink\"}");
}

class WithoutNodLink : public SimulatedTv, public ::testing::WithParamInterface<const char*> {};

TEST_P(WithoutNodLink, RefusesVersionAndType)
{
    App app(GetParam());
    simulator::ClearLog();
    EXPECT_EQ(lyn_set_nodlink_version(app.handle, "3.0"), LYN_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(lyn_set_nodlink_version(app.handle, "4.0"), LYN_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(CountLog(ERROR, "Not supported api for this service"), 2);
    EXPECT_EQ(CountLog(ERROR, "exception: Not supported api for this service"), 2);
    nod_link_type type = 42;
    EXPECT_EQ(lyn_get_nodlink_type(app.handle, &type), LYN_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(type, 42);
}

INSTANTIATE_TEST_SUITE_P(Services, WithoutNodLink, ::testing::Values("mirroring", "kov", "dummy"));

}  // namespace
}  // namespace lyn::test
