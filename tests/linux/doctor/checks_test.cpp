// SPDX-License-Identifier: Apache-2.0
//
// What is said of a machine, and what mends it.
#include "checks.h"

#include <algorithm>
#include <ostream>

#include "PlayedMachine.h"

namespace lynctl {

bool operator==(const Check& left, const Check& right)
{
    return left.name == right.name && left.level == right.level && left.found == right.found &&
           left.mend == right.mend;
}

std::ostream& operator<<(std::ostream& out, const Check& check)
{
    return out << check.name << ' ' << static_cast<int>(check.level) << " '" << check.found << "' -> '"
               << check.mend << "'";
}

}  // namespace lynctl

namespace lyn::linux_tests {
namespace {

using lynctl::Check;
using lynctl::Level;

constexpr const char* kObjects = "ObjectManager.GetManagedObjects";

class Checks : public PlayedMachine {
protected:
    Checks()
    {
        places.mainConf = folder.Path() / "main.conf";
        places.switches = folder.Path() / "rfkill";
        places.process = folder.Path() / "status";
        Put("status", "Name:\tx\nCapInh:\t0000000000000000\nCapEff:\t0000000000002000\n");
        Put("main.conf", "[General]\nName = TV\n");
    }

    /// The check of a name; one without a name when it was not made.
    Check The(const std::string& name) const
    {
        for (const Check& check : lynctl::CheckMachine(places)) {
            if (check.name == name) {
                return check;
            }
        }
        return {};
    }

    void PutSwitch(const std::string& type, const std::string& soft, const std::string& hard) const
    {
        const std::string name = "rfkill/rfkill" + type + "/";
        Put(name + "type", type + "\n");
        Put(name + "soft", soft + "\n");
        Put(name + "hard", hard + "\n");
    }

    lynctl::Places places;
};

TEST_F(Checks, AMachineOnWhichAllIsWell)
{
    const std::vector<Check> good = {
        {"system bus", Level::good, "answers", ""},
        {"bluetoothd", Level::good, "runs", ""},
        {"adapter", Level::good, "hci0, 02:00:00:00:00:10", ""},
        {"power", Level::good, "the adapter is on", ""},
        {"rights", Level::good, "may listen to advertisements (CAP_NET_RAW)", ""},
        {"MTU", Level::good, "bluetoothd's own (517)", ""},
        {"access point", Level::good, "02:00:00:ab:00:fe, 5180 MHz", ""},
        {"Wi-Fi Direct", Level::good, "02:00:00:00:01:00", ""},
        {"settings", Level::good, state.string() + ", " + run.string(), ""},
    };
    EXPECT_EQ(lynctl::CheckMachine(places), good);
    EXPECT_TRUE(std::filesystem::is_empty(state)) << "nothing is changed";
    EXPECT_TRUE(std::filesystem::is_empty(run)) << "nothing is changed";
}

TEST_F(Checks, BluetoothdThatDoesNotRunIsStarted)
{
    bluez->Die();
    const Check wanted{"bluetoothd", Level::problem, "does not run", "sudo systemctl start bluetooth"};
    EXPECT_EQ(The("bluetoothd"), wanted);
    EXPECT_EQ(The("adapter").name, "") << "nobody knows of adapters";
    EXPECT_EQ(The("power").name, "");
    EXPECT_EQ(The("settings").level, Level::good) << "the others are checked all the same";
}

TEST_F(Checks, BluetoothdThatDoesNotServeThisUserIsNoMissingAdapter)
{
    bluez->Treat(kObjects, 0,
                 Treatment::Fails("org.freedesktop.DBus.Error.AccessDenied", "Rejected send message"));
    const Check wanted{"bluetoothd", Level::problem, "does not let this user in",
                       "sudo usermod -aG bluetooth $USER, and log in again; or run as a system service"};
    EXPECT_EQ(The("bluetoothd"), wanted);
    EXPECT_EQ(The("adapter").name, "");
}

TEST_F(Checks, BluetoothdThatDoesNotAnswerIsRestarted)
{
    bluez->Treat(kObjects, 0, Treatment::Ignored());
    const Check wanted{"bluetoothd", Level::problem, "does not answer", "sudo systemctl restart bluetooth"};
    EXPECT_EQ(The("bluetoothd"), wanted);
    EXPECT_EQ(The("adapter").name, "");
}

TEST_F(Checks, AnAdapterIsMissing)
{
    bluez->RemoveAdapter("hci0");
    const Check wanted{"adapter", Level::problem, "there is none",
                       "plug in a Bluetooth adapter that does Low Energy"};
    EXPECT_EQ(The("adapter"), wanted);
    EXPECT_EQ(The("power").name, "");
}

TEST_F(Checks, AnAdapterWithoutLowEnergyIsOfNoUse)
{
    const auto withRoles = [&](GVariant* roles) {
        bluez->Set("/org/bluez/hci0", "org.bluez.Adapter1", "Roles", roles);
        return The("adapter");
    };
    const char* const roles[] = {"central", "peripheral"};
    EXPECT_EQ(withRoles(g_variant_new_strv(roles, 2)).level, Level::good);
    const Check wanted{"adapter", Level::problem, "hci0, 02:00:00:00:00:10, does no Low Energy",
                       "plug in a Bluetooth adapter that does Low Energy"};
    EXPECT_EQ(withRoles(g_variant_new_strv(roles, 0)), wanted);
    EXPECT_EQ(withRoles(g_variant_new_int32(5)).level, Level::good) << "a bluetoothd that does not say so";
}

TEST_F(Checks, TheAdapterThatIsAskedForIsMissing)
{
    ::setenv("LYN_BT_ADAPTER", "hci7", 1);
    const Check wanted{"adapter", Level::problem, "LYN_BT_ADAPTER asks for hci7, which is not there",
                       "unset LYN_BT_ADAPTER"};
    EXPECT_EQ(The("adapter"), wanted);
    ::setenv("LYN_BT_ADAPTER", "02:00:00:00:00:10", 1);
    EXPECT_EQ(The("adapter").level, Level::good);
}

TEST_F(Checks, AnAdapterThatIsOffIsSwitchedOn)
{
    bluez->SetPowered("hci0", false);
    const Check off{"power", Level::problem, "the adapter is off", "bluetoothctl power on"};
    EXPECT_EQ(The("adapter").level, Level::good);
    EXPECT_EQ(The("power"), off);
    PutSwitch("wlan", "1", "1");
    PutSwitch("bluetooth", "0", "0");
    EXPECT_EQ(The("power"), off) << "no switch of Bluetooth";
}

TEST_F(Checks, AnAdapterThatIsBlockedIsUnblocked)
{
    bluez->SetPowered("hci0", false);
    PutSwitch("wlan", "0", "0");
    PutSwitch("bluetooth", "1", "0");
    const Check soft{"power", Level::problem, "Bluetooth is blocked", "rfkill unblock bluetooth"};
    EXPECT_EQ(The("power"), soft);
    PutSwitch("bluetooth", "1", "1");
    const Check hard{"power", Level::problem, "a switch of the machine keeps Bluetooth off",
                     "turn that switch on"};
    EXPECT_EQ(The("power"), hard);
    bluez->SetPowered("hci0", true);
    EXPECT_EQ(The("power").level, Level::good);
}

TEST_F(Checks, WithoutThePrivilegeAProgramOnlyHearsLess)
{
    for (const char* const status :
         {"CapEff:\t0000000000001000\n", "CapEff:\tffffffffffffdfff\n", "CapEff:\n", ""}) {
        Put("status", std::string("CapPrm:\tffffffffffffffff\n") + status);
        const Check found = The("rights");
        EXPECT_EQ(found.level, Level::note) << status;
        EXPECT_EQ(found.found, "without CAP_NET_RAW names and markers of phones arrive mixed");
        EXPECT_EQ(found.mend,
                  "sudo setcap cap_net_raw+ep " + std::filesystem::read_symlink("/proc/self/exe").string());
    }
    Put("status", "CapEff:\t000001ffffffffff\n");
    EXPECT_EQ(The("rights").level, Level::good);
}

TEST_F(Checks, AnMtuThatIsTooSmallIsToldWithItsFile)
{
    const std::string file = places.mainConf.string();
    const Check own{"MTU", Level::good, "bluetoothd's own (517)", ""};
    for (const char* const content :
         {"", "[GATT]\n", "[GATT]\nExchangeMTU = none\n", "ExchangeMTU = 23\n", "[General]\nExchangeMTU = 23\n",
          "[GATT]\n#ExchangeMTU = 23\n", "\xff\xfe"}) {
        Put("main.conf", content);
        EXPECT_EQ(The("MTU"), own) << content;
    }
    std::filesystem::remove(places.mainConf);
    EXPECT_EQ(The("MTU"), own);
    for (const char* const mtu : {"23", "255"}) {
        Put("main.conf", std::string("[GATT]\nExchangeMTU = ") + mtu + "\n");
        const Check small{"MTU", Level::note,
                          file + " says ExchangeMTU = " + mtu + ": messages take several writes",
                          "set ExchangeMTU = 256 in the section [GATT] and restart bluetoothd"};
        EXPECT_EQ(The("MTU"), small);
    }
    for (const char* const mtu : {"256", "517"}) {
        Put("main.conf", std::string("[GATT]\nExchangeMTU = ") + mtu + "\n");
        EXPECT_EQ(The("MTU"), (Check{"MTU", Level::good, file + " says ExchangeMTU = " + mtu, ""}));
    }
}

TEST_F(Checks, WithoutWpaSupplicantNoMessageCanBeBuilt)
{
    supplicant->Die();
    control.reset();
    const Check point{"access point", Level::note, "wpa_supplicant tells of no connection: channel 1 is offered",
                      "sudo systemctl start wpa_supplicant (with its D-Bus interface, -u) and connect"};
    EXPECT_EQ(The("access point"), point);
    const Check direct{
        "Wi-Fi Direct", Level::problem,
        "no address, so no message can be built: " + (folder.Path() / "wpa").string() +
            ": holds no control socket of wpa_supplicant",
        "start wpa_supplicant with ctrl_interface=DIR=/run/wpa_supplicant, and join the group of that folder"};
    EXPECT_EQ(The("Wi-Fi Direct"), direct);
}

TEST_F(Checks, SettingsFoldersThatAreNotThereYetAreNoProblem)
{
    std::filesystem::remove(state);
    ::setenv("LYN_RUNTIME_DIR", (run / "below" / "it").c_str(), 1);
    EXPECT_EQ(The("settings").level, Level::good);
    ::setenv("LYN_RUNTIME_DIR", "relative-folder", 1);
    EXPECT_EQ(The("settings").level, Level::good);
}

TEST_F(Checks, AFileInTheWayOfTheSettingsIsNamed)
{
    Put("file", "x");
    const std::string file = (folder.Path() / "file").string();
    const Check wanted{"settings", Level::problem, file + " is no folder", "mv " + file + " " + file + ".old"};
    ::setenv("LYN_STATE_DIR", file.c_str(), 1);
    EXPECT_EQ(The("settings"), wanted);
    ::setenv("LYN_STATE_DIR", (file + "/below/it").c_str(), 1);
    EXPECT_EQ(The("settings"), wanted);
}

TEST_F(Checks, AFileInTheWayOfTheKeysIsNamed)
{
    Put("state/db", "x");
    const std::string file = (state / "db").string();
    const Check wanted{"settings", Level::problem, file + " is no folder", "mv " + file + " " + file + ".old"};
    EXPECT_EQ(The("settings"), wanted);
}

TEST_F(Checks, ASettingOfAnotherKindIsNamedWithItsCure)
{
    Put("state/db/menu/network/devicename/tv_name", "int 5\n");
    const Check found = The("settings");
    EXPECT_EQ(found.level, Level::problem);
    EXPECT_NE(found.found.find("db/menu/network/devicename/tv_name"), std::string::npos) << found.found;
    EXPECT_EQ(found.mend.rfind("lynctl settings set db/menu/network/devicename/tv_name", 0), 0U) << found.mend;
}

TEST_F(Checks, ABrokenSettingIsNamedWithItsCure)
{
    Put("state/db/menu/network/devicename/tv_name", "garbage\n");
    const Check found = The("settings");
    EXPECT_EQ(found.level, Level::problem);
    EXPECT_EQ(found.found, (state / "db/menu/network/devicename/tv_name").string() +
                               ": is no setting: one line is wanted, 'int NUMBER' or 'text TEXT'");
    EXPECT_EQ(found.mend, "lynctl settings set db/menu/network/devicename/tv_name VALUE");
}

}  // namespace
}  // namespace lyn::linux_tests
