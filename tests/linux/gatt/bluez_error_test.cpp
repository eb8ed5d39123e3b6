// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "Codes.h"
#include "bluez/Bluez.h"

namespace lyn::linux_tests {
namespace {

using namespace lyn::linux_platform;

struct Row {
    const char* name;
    const char* message;
    int code;
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name << ": " << row.message;
}

class BluezError : public ::testing::TestWithParam<Row> {};

TEST_P(BluezError, HasItsCode)
{
    EXPECT_EQ(CodeOf({GetParam().name, GetParam().message}), GetParam().code);
}

constexpr const char* kAnything = "some text";
constexpr const char* kFailedName = "org.bluez.Error.Failed";

// None means "gave up waiting, do not try again": a link's own limit is shorter than BlueZ's.
INSTANTIATE_TEST_SUITE_P(
    Table, BluezError,
    ::testing::Values(
        Row{"org.bluez.Error.NotReady", "Resource Not Ready", kAdapterOff},
        Row{"org.bluez.Error.NotAvailable", kAnything, kAdapterOff},
        Row{"org.bluez.Error.NoSuchAdapter", kAnything, kAdapterOff},
        Row{"org.bluez.Error.Blocked", kAnything, kAdapterOff},
        Row{"org.bluez.Error.AlreadyConnected", "Already Connected", kConnectedAlready},
        Row{"org.bluez.Error.NotConnected", "Not Connected", kNotConnected},
        Row{"org.bluez.Error.InProgress", "Operation already in progress", kBusy},
        Row{"org.bluez.Error.Busy", kAnything, kBusy}, Row{"org.bluez.Error.Canceled", kAnything, kCanceled},
        Row{"org.bluez.Error.DoesNotExist", kAnything, kNotFound},
        Row{"org.bluez.Error.NotPermitted", "Write not permitted", kRefused},
        Row{"org.bluez.Error.NotAuthorized", kAnything, kRefused},
        Row{"org.bluez.Error.Rejected", kAnything, kRefused},
        Row{"org.bluez.Error.NotSupported", kAnything, kNotSupported},
        Row{"org.bluez.Error.InvalidValueLength", kAnything, kTooLong},
        Row{"org.bluez.Error.InvalidArguments", "Invalid Length", kTooLong},
        Row{"org.bluez.Error.InvalidArguments", "Invalid offset", kInvalidArgument},
        Row{"org.bluez.Error.InvalidArguments", kAnything, kInvalidArgument},
        Row{kFailedName, "No discovery started", kScanNotRunning},
        Row{kFailedName, "le-connection-abort-by-local", kFailed},
        Row{kFailedName, "le-connection-timeout", kNoAnswer},
        Row{kFailedName, "le-connection-canceled", kCanceled},
        Row{kFailedName, "br-connection-canceled", kCanceled},
        Row{kFailedName, "le-connection-adapter-not-powered", kAdapterOff},
        Row{kFailedName, "br-connection-adapter-not-powered", kAdapterOff},
        Row{kFailedName, "le-connection-already-connected", kConnectedAlready},
        Row{kFailedName, "le-connection-busy", kBusy}, Row{kFailedName, "le-connection-refused", kRefused},
        Row{kFailedName, "le-connection-not-supported", kNotSupported},
        Row{kFailedName, "le-connection-memory-allocation", kOutOfMemory},
        Row{kFailedName, "le-connection-abort-by-remote", kFailed},
        Row{kFailedName, "Not connected", kNotConnected}, Row{kFailedName, "Operation already in progress", kBusy},
        Row{kFailedName, "Operation failed with ATT error: 0x0e", kFailed}, Row{kFailedName, kAnything, kFailed},
        Row{"org.freedesktop.DBus.Error.UnknownObject", kAnything, kNotFound},
        Row{"org.freedesktop.DBus.Error.UnknownMethod", kAnything, kNotFound},
        Row{"org.freedesktop.DBus.Error.UnknownInterface", kAnything, kNotFound},
        Row{"org.freedesktop.DBus.Error.ServiceUnknown", kAnything, kAdapterOff},
        Row{"org.freedesktop.DBus.Error.NameHasNoOwner", kAnything, kAdapterOff},
        Row{"org.freedesktop.DBus.Error.Disconnected", kAnything, kAdapterOff},
        Row{"org.freedesktop.DBus.Error.AccessDenied", kAnything, kRefused},
        Row{"org.freedesktop.DBus.Error.NoMemory", kAnything, kOutOfMemory},
        Row{"org.freedesktop.DBus.Error.NoReply", kAnything, kNoAnswer},
        Row{"org.freedesktop.DBus.Error.Timeout", kAnything, kNoAnswer},
        Row{"org.freedesktop.DBus.Error.TimedOut", kAnything, kNoAnswer},
        Row{"org.example.Error.Unheard", kAnything, kFailed}));

}  // namespace
}  // namespace lyn::linux_tests
