// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace lyn::linux_platform {

/// How long the steps of links and exchanges may take, in milliseconds.
struct Limits {
    /// From the beginning of a connect to "connected", with all that is between: a phone that BlueZ has forgotten
    /// is looked for, and its services are resolved. BlueZ itself gives up after 40 s only.
    int connect = 15'000;
    /// How long a link that is up before we have connected is watched. bluetoothd takes a link down two seconds
    /// after it was asked to, and lets everybody join it meanwhile: it would be lost in the middle of a request.
    int strangersLink = 2'500;
    /// For a link to go down, and for what a failed connect has left behind.
    int takeDown = 5'000;
    /// After which a phone that shows no service at all is looked at once more.
    int secondLook = 100;
    int startNotify = 10'000;
    /// What the Attribute Protocol gives a phone to answer.
    int write = 30'000;
    int readMtu = 2'000;
};

/// The limits in force. Written by tests only, while nothing runs; read on the main context.
inline Limits& TimeLimits()
{
    static Limits limits;
    return limits;
}

}  // namespace lyn::linux_platform
