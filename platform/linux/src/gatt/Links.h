// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "bluez/Adapter.h"
#include "gatt/Link.h"
#include "gatt/Phone.h"
#include "loop/Slot.h"
#include "lyn_platform/gatt.h"

namespace lyn::linux_platform {

/// All links of this process: who has asked for which, and who hears of it. The links themselves work on the main
/// context; this is what the functions of the seam see of them.
class Links {
public:
    static Links& Instance();

    /// Begins to connect, at once or when the link before is down. The address is reported as it was given. Any
    /// thread.
    int Connect(const char* address);
    /// Begins to take a link down that is up. Any thread.
    int Disconnect(const char* address);
    /// Takes down all links, and gives up what is coming up. BlueZ has been asked for it when this returns, so
    /// that nothing is left when the process ends now. Any thread.
    void LetGo();
    /// The phone if its link is up, or null. Any thread.
    std::shared_ptr<const Phone> Up(const char* address) const;

    Slot<bt_gatt_connection_state_changed_cb> reports;

private:
    /// Who wants a link.
    struct Demand {
        std::uint64_t registration = 0;
        std::string address;
    };

    enum class Phase { comingUp, up, goingDown };

    struct Entry {
        std::uint64_t id = 0;
        Phase phase = Phase::comingUp;
        Demand owner;
        bool announced = false;      ///< the owner has heard that the link is up
        bool failed = false;         ///< the owner has heard that the connect failed
        bool asked = false;          ///< to go down
        std::optional<Demand> next;  ///< connect that waits for this link to be gone
        std::shared_ptr<Phone> phone;
        std::shared_ptr<Link> link;
    };

    Links();

    void Open(const std::string& address, Demand owner);
    int Join(const std::string& address, Entry& entry, Demand demand);
    void AskDown(const std::string& address, Entry& entry);
    Entry* Find(const std::string& address, std::uint64_t id);

    // On the main context.
    void Begin(const std::string& address, std::uint64_t id);
    void TakeDown(const std::string& address, std::uint64_t id);
    void OnUp(const std::string& address, std::uint64_t id, const std::shared_ptr<Bus>& bus, Services services);
    void OnFailed(const std::string& address, std::uint64_t id, int code);
    void OnGone(const std::string& address, std::uint64_t id);
    void Announce(const std::string& address, std::uint64_t id);
    void OnAdapter(const AdapterStatus& status);
    void Report(const Demand& owner, int code, bool connected) const;

    mutable std::mutex m_mutex;
    std::map<std::string, Entry> m_entries;
    std::uint64_t m_ids = 0;
};

}  // namespace lyn::linux_platform
