// SPDX-License-Identifier: Apache-2.0
//
// Fixture: an application with one service, and one simulated phone that it asks. The TV's name, addresses
// and settings are those of the constants below, so that messages can be compared as they are on the air.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "support/App.h"
#include "support/Clock.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";
inline constexpr const char* kOtherPhone = "AA:BB:CC:DD:EE:02";

inline constexpr const char* kKeyTvName = "db/menu/network/devicename/tv_name";
inline constexpr const char* kKeyListenChannel = "memory/menu/network/screenmirroring/p2p_listen_channel";
inline constexpr const char* kKeyMirroringMode = "memory/lyn/nodlink/mirroring_mode";
inline constexpr const char* kDeviceType = "com.calyxon/featureconf/devicename.device_type_index";
inline constexpr const char* kDeviceIcon = "com.calyxon/featureconf/devicename.icon_index";

inline constexpr int kReportedAsSuccess = static_cast<int>(0xFE400103);
inline constexpr int kHciDisconnection = static_cast<int>(0xFE400104);
inline constexpr int kConnectTimedOut = static_cast<int>(0xC0000001);

/// What makes the services differ on the air.
struct Feature {
    const char* service;
    const char* serviceUuid;
    const char* characteristicUuid;
    const char* type;
};
inline constexpr Feature kMirroring = {"mirroring", "f7608236-13bd-4a99-bbcd-9426bccb6c24",
                                       "9be85432-b1db-416c-9e1c-d6d381305337", "mirroring"};
inline constexpr Feature kNodLink = {"nodlink", "95e60810-8ad0-11e6-bdf4-4b1e122d00d0",
                                     "7909f901-904c-11e6-bdf4-9bbdfdaad9d9", "nodLink"};
inline constexpr Feature kKov = {"kov", "1e5ed7a3-9e92-41c1-af60-6a15643dfb34",
                                 "fc4e4003-dd1f-4896-bc77-35a759445f69", "kov"};

using Texts = std::vector<std::string>;

Texts Join(std::initializer_list<Texts> parts);

simulator::Answer Says(const std::string& text);
simulator::Answer StaysSilent();
simulator::Answer Drops(int code);
simulator::Answer RefusesWrite(int code);

/// A phone that offers the feature and gives these answers.
simulator::Phone PhoneWith(const Feature& feature, const std::vector<simulator::Answer>& answers);

/// The values that the control messages are compared with.
void SetUpTv();

class RequestTest : public SimulatedTv {
protected:
    explicit RequestTest(const Feature& theFeature);

    /// The phone gives these answers from now on.
    void PhoneAnswers(const std::vector<simulator::Answer>& answers);
    /// Asks the phone and lets everything happen that happens by itself.
    void Ask();
    void Ask(const std::string& extraData);
    /// Ask() with a journal and a log of the request alone, the stop of the scan left out.
    void AskFromHere();
    /// Ten seconds go by.
    static void LetTimeOut();
    /// Runs the main loop until a further platform call of this function has been made.
    static bool RunUntilCalled(const std::string& function);

    lyn_request_initiating_result_e Result() const;
    static Texts MessagesToPhone();

    // Platform calls of the steps of an exchange, as in the journal.
    static Texts BoostOn();
    static Texts BoostOff();
    static Texts Connect();
    Texts SetUpLink() const;
    static Texts Disconnect();
    static Texts ReleaseAfterDisconnection();
    static Texts Write(const std::string& message);

    Feature feature;
    simulator::Phone phone;
    App app;
};

class MirroringRequest : public RequestTest {
protected:
    MirroringRequest() : RequestTest(kMirroring) {}
};

class NodLinkRequest : public RequestTest {
protected:
    NodLinkRequest() : RequestTest(kNodLink) {}
};

class KovRequest : public RequestTest {
protected:
    KovRequest() : RequestTest(kKov) {}
};

/// Instantiated for the three features in exchange_test.cpp.
class FeatureRequest : public RequestTest, public ::testing::WithParamInterface<Feature> {
protected:
    FeatureRequest() : RequestTest(GetParam()) {}
};

}  // namespace lyn::test
