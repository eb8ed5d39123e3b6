// SPDX-License-Identifier: Apache-2.0
//
// bluetoothd for tests: adapters, and phones that are found, connected and written to.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "FakeDaemon.h"

namespace lyn::linux_tests {

/// How a phone behaves.
struct FakePhone {
    std::string address = "A0:00:00:00:00:01";
    std::string adapter = "hci0";  ///< which sees it
    bool inReach = true;           ///< else a connect to it does not end
    bool resolves = true;          ///< else its services are never resolved
    unsigned mtu = 517;
    std::string service = "f7608236-13bd-4a99-bbcd-9426bccb6c24";
    std::string characteristic = "9be85432-b1db-416c-9e1c-d6d381305337";
    /// Notified after the writes, one for each; the last one again for those that follow.
    std::vector<std::string> answers = {"Success"};
    std::string greeting = {};  ///< notified before StartNotify is answered, unless empty
    /// Manufacturer data of company 117, heard in turn again and again during a discovery: as when bluetoothd gets
    /// advertising packets and scan responses.
    std::vector<std::string> adverts = {};
};

class FakeBluez : public FakeDaemon {
public:
    /// On the bus, with one adapter, which is on. An index that no real adapter has keeps the platform from
    /// listening to the machine's own.
    explicit FakeBluez(std::string adapter = "hci0");
    ~FakeBluez() override;

    void AddAdapter(const std::string& name, const std::string& address, bool powered);
    void RemoveAdapter(const std::string& name);
    void SetPowered(const std::string& name, bool powered);

    /// Makes a phone that this bluetoothd has seen.
    void AddPhone(FakePhone phone);
    /// Changes how it behaves from now on.
    void ChangePhone(const FakePhone& phone);
    /// bluetoothd does not know it any more; a discovery finds it again when it is in reach.
    void ForgetPhone(const std::string& address);
    /// The link to it is lost.
    void DropLink(const std::string& address);
    /// Another program connects it.
    void ConnectByAnother(const std::string& address);
    void Notify(const std::string& address, const std::string& value);

    bool IsConnected(const std::string& address) const;
    bool IsDiscovering() const;
    std::vector<std::string> Written() const;
    std::string DevicePath(const std::string& address) const;
    std::string CharacteristicPath(const std::string& address) const;

    /// A restart: links are down, and phones forgotten.
    void Die() override;

private:
    struct State {
        FakePhone behaviour;
        std::size_t answered = 0;
        std::vector<Call> connecting;  ///< not answered yet
    };

    void HandleAdapters();
    void HandleDevices();
    void HandleCharacteristics();
    void Connect(const Call& call);
    void Disconnect(const Call& call);
    void Discover(const Call& call);
    void Write(const Call& call);
    void CancelConnects(const std::string& reason);
    void ShowPhonesInReach(const std::string& adapterPath);
    void Advertise(const std::string& adapterPath);
    void Hear(const FakePhone& phone, const std::string& advert);
    void StopDiscovery(const Call& call);
    void ShowDevice(const std::string& address);
    void BringUp(const std::string& address);
    void TakeDown(const std::string& address);
    /// The phone that the object or one above it stands for.
    State& PhoneAt(const std::string& path);

    const std::string m_adapter;    ///< name of the first one
    std::uint64_t m_discovery = 0;  ///< which one it is
    std::size_t m_advertRound = 0;
    std::map<std::string, State> m_phones;
    std::vector<std::string> m_written;
};

}  // namespace lyn::linux_tests
