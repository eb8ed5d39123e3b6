// SPDX-License-Identifier: Apache-2.0
//
// What leaves the interface as an exception: null texts and versions that no phone speaks.
#include <stdexcept>

#include "interface/Functions.h"
#include "support/App.h"

namespace lyn::test {
namespace {

class InterfaceExceptions : public SimulatedTv {
protected:
    // The text that lyn_set_nodlink_version() throws for it; "nothing" when it throws none.
    static std::string VersionThrown(lyn_service_h handle, const std::string& version)
    {
        try {
            lyn_set_nodlink_version(handle, version.c_str());
        } catch (const char* text) {
            return text;
        }
        return "nothing";
    }

    static void ExpectQuiet()
    {
        EXPECT_FALSE(AskedTheManager());
        EXPECT_TRUE(Messages(ERROR).empty());
        EXPECT_TRUE(simulator::JournalText().empty());
    }
};

TEST_F(InterfaceExceptions, LeaveForANullVersionWhateverTheHandle)
{
    App app("nodlink");
    int other = 0;
    for (lyn_service_h handle :
         {app.handle, static_cast<lyn_service_h>(nullptr), static_cast<lyn_service_h>(&other)}) {
        simulator::ClearLog();
        simulator::ClearJournal();
        EXPECT_THROW(lyn_set_nodlink_version(handle, nullptr), std::logic_error);
        ExpectQuiet();
    }
}

TEST_F(InterfaceExceptions, LeaveForNullExtraDataWhateverTheHandle)
{
    App app("nodlink");
    int other = 0;
    for (lyn_service_h handle :
         {app.handle, static_cast<lyn_service_h>(nullptr), static_cast<lyn_service_h>(&other)}) {
        simulator::ClearLog();
        simulator::ClearJournal();
        EXPECT_THROW(lyn_request_initiating_with_extra_data(handle, kPhone, nullptr, nullptr, nullptr),
                     std::logic_error);
        ExpectQuiet();
    }
    EXPECT_TRUE(app.states.empty());
}

TEST_F(InterfaceExceptions, LeaveAsTheVersionItselfWhereItIsNotSupported)
{
    App app("nodlink");
    for (const std::string version : {"4.0", "", "2", "2.00", "2.0 ", " 3.0", "3.1", "v3.0", "%s%n"}) {
        SCOPED_TRACE(version);
        simulator::ClearLog();
        EXPECT_EQ(VersionThrown(app.handle, version), version);
        EXPECT_EQ(Messages(ERROR),
                  Texts({"not supported version, input : " + version + ", supported : \"2.0\", \"3.0\""}));
    }
}

TEST_F(InterfaceExceptions, AreTheCallersOwnVersion)
{
    App app("nodlink");
    for (const std::string& version : {std::string("4.0"), std::string(1000, 'x')}) {
        try {
            lyn_set_nodlink_version(app.handle, version.c_str());
            ADD_FAILURE() << "nothing was thrown";
        } catch (const char* text) {
            EXPECT_EQ(static_cast<const void*>(text), version.c_str());
        }
    }
}

TEST_F(InterfaceExceptions, DoNotLeaveForASupportedVersion)
{
    App app("nodlink");
    EXPECT_EQ(lyn_set_nodlink_version(app.handle, "2.0"), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_set_nodlink_version(app.handle, "3.0"), LYN_ERROR_NONE);
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(InterfaceExceptions, DoNotLeaveFromServicesThatKnowNoVersions)
{
    for (const char* name : {"dummy", "mirroring", "kov"}) {
        App app(name);
        for (const std::string version : {"2.0", "3.0", "4.0", ""}) {
            simulator::ClearLog();
            EXPECT_EQ(lyn_set_nodlink_version(app.handle, version.c_str()), LYN_ERROR_NOT_SUPPORTED);
            EXPECT_EQ(Messages(ERROR), Texts({"Not supported api for this service",
                                              "exception: Not supported api for this service"}));
        }
        nod_link_type type = 77;
        EXPECT_EQ(lyn_get_nodlink_type(app.handle, &type), LYN_ERROR_NOT_SUPPORTED);
        EXPECT_EQ(type, 77);
    }
}

TEST_F(InterfaceExceptions, LeaveTheServiceAsItWas)
{
    App app("nodlink");
    EXPECT_EQ(VersionThrown(app.handle, "4.0"), "4.0");
    EXPECT_THROW(lyn_set_nodlink_version(app.handle, nullptr), std::logic_error);
    EXPECT_TRUE(app.states.empty());
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
}

}  // namespace
}  // namespace lyn::test
