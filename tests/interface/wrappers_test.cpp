// SPDX-License-Identifier: Apache-2.0
//
// What the library says when it calls an application's callback, and what the callback is given.
#include "interface/Functions.h"
#include "support/App.h"

namespace lyn::test {
namespace {

// What a callback finds in the log when it is called.
struct Witness {
    int calls = 0;
    Line lastInfo;

    void Note()
    {
        ++calls;
        for (const Line& line : LogLines()) {
            lastInfo = line.priority == INFO ? line : lastInfo;
        }
    }

    // Called after this line of the wrapper, which was the last one.
    void ExpectCalledAfter(const std::string& message) const
    {
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(lastInfo.message, message);
        EXPECT_EQ(lastInfo.file, "lyn_service.cpp");
        EXPECT_EQ(lastInfo.function, "operator()");
    }

    static void State(lyn_state_e, void* self) { static_cast<Witness*>(self)->Note(); }
    static void Device(const lyn_device_info_t*, void* self) { static_cast<Witness*>(self)->Note(); }
    static void Json(const char*, void* self) { static_cast<Witness*>(self)->Note(); }
    static void Result(lyn_request_initiating_result_e, void* self) { static_cast<Witness*>(self)->Note(); }
};

class CallbackWrappers : public SimulatedTv {
protected:
    void Create(lyn_state_changed_cb cb, void* userData)
    {
        ASSERT_EQ(lyn_create_service(&m_handle, "dummy", cb, userData), LYN_ERROR_NONE);
    }

    ~CallbackWrappers() override { EXPECT_EQ(lyn_destroy_service(m_handle), LYN_ERROR_NONE); }

    lyn_service_h m_handle = nullptr;
    Witness m_witness;
};

TEST_F(CallbackWrappers, SayTheStateBeforeTheyReportIt)
{
    Create(Witness::State, &m_witness);
    EXPECT_EQ(lyn_start_scan(m_handle, nullptr, nullptr), LYN_ERROR_NONE);
    m_witness.ExpectCalledAfter("state : 1");
}

TEST_F(CallbackWrappers, SayAPhoneBeforeTheyReportIt)
{
    Create(nullptr, nullptr);
    lyn_start_scan(m_handle, Witness::Device, &m_witness);
    m_witness.ExpectCalledAfter("Device Found : myDevice, 11:22:33:44:55:66, q1w2e3r4t5y6");
}

TEST_F(CallbackWrappers, SayAPhoneBeforeTheyReportItAsJson)
{
    Create(nullptr, nullptr);
    lyn_start_scan_with_serialization(m_handle, Witness::Json, &m_witness);
    m_witness.ExpectCalledAfter("Device Found : myDevice, 11:22:33:44:55:66, q1w2e3r4t5y6");
}

TEST_F(CallbackWrappers, SayAResultBeforeTheyReportIt)
{
    Create(nullptr, nullptr);
    lyn_request_initiating(m_handle, "id", Witness::Result, &m_witness);
    simulator::Settle();
    m_witness.ExpectCalledAfter("Request result : 0");
}

TEST_F(CallbackWrappers, SayNothingForTheResultOfARequestWithExtraData)
{
    Create(nullptr, nullptr);
    lyn_request_initiating_with_extra_data(m_handle, "id", "{}", Witness::Result, &m_witness);
    simulator::Settle();
    EXPECT_EQ(m_witness.calls, 1);
    EXPECT_FALSE(HasLogWith(INFO, "Request result"));
}

TEST_F(CallbackWrappers, HandTheUserDataOnUnread)
{
    struct Given {
        static void State(lyn_state_e, void* data) { Seen().push_back(data); }
        static void Device(const lyn_device_info_t*, void* data) { Seen().push_back(data); }
        static void Json(const char*, void* data) { Seen().push_back(data); }
        static void Result(lyn_request_initiating_result_e, void* data) { Seen().push_back(data); }
        static std::vector<void*>& Seen()
        {
            static std::vector<void*> seen;
            return seen;
        }
    };
    const auto mark = [](std::uintptr_t number) { return reinterpret_cast<void*>(number); };
    Create(Given::State, mark(1));
    lyn_start_scan(m_handle, Given::Device, mark(2));
    lyn_stop_scan(m_handle);
    lyn_start_scan_with_serialization(m_handle, Given::Json, mark(3));
    lyn_request_initiating(m_handle, "id", Given::Result, mark(4));
    simulator::Settle();
    lyn_request_initiating_with_extra_data(m_handle, "id", "", Given::Result, nullptr);
    simulator::Settle();
    // The dummy phone comes before its scan, and a stop of its scan reports READY twice.
    const std::vector<void*> expected = {mark(2), mark(1), mark(1), mark(1), mark(3), mark(1), mark(1), mark(1),
                                         mark(1), mark(1), mark(4), mark(1), mark(1), mark(1), nullptr};
    EXPECT_EQ(Given::Seen(), expected);
}

TEST_F(CallbackWrappers, ReportADeviceAsOneLineOfJson)
{
    std::string json;
    const auto keep = [](const char* text, void* data) { *static_cast<std::string*>(data) = text; };
    Create(nullptr, nullptr);
    ASSERT_EQ(lyn_start_scan_with_serialization(m_handle, keep, &json), LYN_ERROR_NONE);
    EXPECT_EQ(json, R"({"Address":"11:22:33:44:55:66","ExtraData":"{\"appid\":\"music\"}","Name":"myDevice",)"
                    R"("RSSI":-48,"UniqueID":"q1w2e3r4t5y6"})");
}

TEST_F(CallbackWrappers, ReportEachPhoneOfARadioAsOneLineOfJson)
{
    const lyn_device_found_with_serialization_cb keep = [](const char* text, void* data) {
        static_cast<Texts*>(data)->emplace_back(text);
    };
    simulator::Phone phone = simulator::MirroringPhone(kPhone,
                                                       "K\xC3\xBC"
                                                       "che",
                                                       "0123456789abcdefghijkl");
    phone.rssi = -61;
    simulator::AddPhone(phone);
    ASSERT_EQ(lyn_create_service(&m_handle, "mirroring", nullptr, nullptr), LYN_ERROR_NONE);
    Texts jsons;
    ASSERT_EQ(lyn_start_scan_with_serialization(m_handle, keep, &jsons), LYN_ERROR_NONE);
    ASSERT_TRUE(simulator::RunUntil([&] { return !jsons.empty(); }));
    EXPECT_EQ(jsons[0].rfind("{\"Address\":\"AA:BB:CC:DD:EE:01\",\"ExtraData\":\"", 0), 0U) << jsons[0];
    EXPECT_NE(jsons[0].find("\"Name\":\"K\\u00fcche\",\"RSSI\":-61,\"UniqueID\":\""), std::string::npos)
        << jsons[0];
    EXPECT_EQ(jsons[0].find('\n'), std::string::npos);
}

TEST_F(CallbackWrappers, ReportANodlinkPhoneWithAnEmptyNameAsJson)
{
    const lyn_device_found_with_serialization_cb keep = [](const char* text, void* data) {
        static_cast<Texts*>(data)->emplace_back(text);
    };
    simulator::AddPhone(simulator::NodLinkPhone(kPhone, true, true));
    ASSERT_EQ(lyn_create_service(&m_handle, "nodlink", nullptr, nullptr), LYN_ERROR_NONE);
    Texts jsons;
    ASSERT_EQ(lyn_start_scan_with_serialization(m_handle, keep, &jsons), LYN_ERROR_NONE);
    ASSERT_TRUE(simulator::RunUntil([&] { return !jsons.empty(); }));
    EXPECT_NE(jsons[0].find("\"Name\":\"\","), std::string::npos) << jsons[0];
    EXPECT_NE(jsons[0].find(R"(\"nodlink_version\":\"3.0\")"), std::string::npos) << jsons[0];
    EXPECT_TRUE(HasLog(INFO, std::string("Device Found : (null), ") + kPhone + ", "));
}

}  // namespace
}  // namespace lyn::test
