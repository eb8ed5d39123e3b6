// SPDX-License-Identifier: Apache-2.0
//
// What may become of an answer of wpa_supplicant.
#pragma once

#include <string>
#include <vector>

#include "FakeDaemon.h"

namespace lyn::linux_tests {

struct BusMishap {
    const char* name;
    Treatment treatment;
    bool harmless;  ///< the answer is there in the end
};

inline std::vector<BusMishap> BusMishaps()
{
    return {
        {"fails", Treatment::Fails("fi.w1.wpa_supplicant1.UnknownError"), false},
        {"is unknown", Treatment::Fails("org.freedesktop.DBus.Error.UnknownObject"), false},
        {"is late", Treatment::Late(60), true},
        {"comes twice", Treatment::Twice(), true},
        {"is never sent", Treatment::Ignored(), false},
        {"has no values", Treatment::Answers("()"), false},
        {"has other values", Treatment::Answers("(5, 'text')"), false},
        {"has other properties", Treatment::Answers("({'Interfaces': <'x'>, 'CurrentBSS': <5>, 'BSSID': <5>},)"),
         false},
        {"is far too long", Treatment::Answers("({'Ssid': <'" + std::string(200'000, 'x') + "'>},)"), false},
        {"kills wpa_supplicant", Treatment::Dies(), false},
    };
}

struct SocketMishap {
    const char* name;
    std::vector<std::string> datagrams;
    int delayMs;
    bool dies;
    bool harmless;
};

inline std::vector<SocketMishap> SocketMishaps(const std::string& status, const std::string& address)
{
    const std::string key = "p2p_device_address=";
    return {
        {"is late", {status}, 60, false, true},
        {"comes twice", {status, status}, 0, false, true},
        {"is followed by something else", {status, "FAIL\n"}, 0, false, true},
        {"is never sent", {}, 0, false, false},
        {"is empty", {""}, 0, false, false},
        {"fails", {"FAIL\n"}, 0, false, false},
        {"is unknown", {"UNKNOWN COMMAND\n"}, 0, false, false},
        {"is no text", {std::string(64, '\0') + "\xff\xfe\n"}, 0, false, false},
        {"has an empty address", {key + "\n"}, 0, false, false},
        {"has a short address", {key + "02:00:00:00:01\n"}, 0, false, false},
        {"has a long address", {key + address + ":00\n"}, 0, false, false},
        {"has an address of other letters", {key + "02:00:00:00:01:0g\n"}, 0, false, false},
        {"has an address with a NUL", {key + std::string("02:00:00:00:01:0\0", 17) + "\n"}, 0, false, false},
        {"has an address of blanks", {key + std::string(17, ' ') + "\n"}, 0, false, false},
        {"has a whole message for an address", {key + std::string(500, 'a') + "\n"}, 0, false, false},
        {"is cut in its address",
         {"x=" + std::string(4096 - 30, 'x') + "\n" + status.substr(20)},
         0,
         false,
         false},
        {"is far too long", {std::string(60'000, 'x') + "\n" + status}, 0, false, false},
        {"is far too long behind the address", {status + std::string(60'000, 'x')}, 0, false, true},
        {"kills wpa_supplicant", {}, 0, true, false},
    };
}

}  // namespace lyn::linux_tests
