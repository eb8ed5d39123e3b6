// SPDX-License-Identifier: Apache-2.0
//
// Listens for two seconds and then asks the nearest phone, which is the one that is received best.
// usage: nearest [SERVICE]    SERVICE is "mirroring" (default), "nodlink", "kov" or "dummy"
#include <glib.h>
#include <lyn_service.h>

#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

/// The one service: created by the constructor, destroyed by the destructor. A refused call throws.
class Service {
public:
    using OnFound = std::function<void(const lyn_device_info_t& phone)>;
    using OnResult = std::function<void(const std::string& result)>;

    explicit Service(const std::string& name)
    {
        Check(lyn_create_service(&m_handle, name.c_str(), nullptr, nullptr), "create");
    }
    ~Service() { lyn_destroy_service(m_handle); }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    void StartScan(OnFound onFound)
    {
        m_onFound = std::move(onFound);
        Check(lyn_start_scan(m_handle, Found, this), "start the scan of");
    }

    /// Stops the scan by itself.
    void Request(const std::string& address, OnResult onResult)
    {
        m_onResult = std::move(onResult);
        Check(lyn_request_initiating(m_handle, address.c_str(), Result, this), "ask a phone by");
    }

private:
    static void Check(lyn_error_e error, const char* what)
    {
        if (error != LYN_ERROR_NONE) {
            throw std::runtime_error(std::string("cannot ") + what + " the service: error " +
                                     std::to_string(error));
        }
    }

    static void Found(const lyn_device_info_t* phone, void* self)
    {
        static_cast<Service*>(self)->m_onFound(*phone);
    }

    static void Result(lyn_request_initiating_result_e result, void* self)
    {
        auto* const service = static_cast<Service*>(self);
        // The text is the library's and short-lived: copied at once.
        const std::string text = lyn_get_request_initiating_error_string(service->m_handle, result);
        service->m_onResult(text);
    }

    lyn_service_h m_handle = nullptr;
    OnFound m_onFound;
    OnResult m_onResult;
};

/// What is kept of a found phone: its texts end with the callback.
struct Phone {
    std::string address;
    int rssi;
};

class Search {
public:
    explicit Search(const std::string& service) : m_service(service) {}

    /// True when the phone agreed.
    bool Run()
    {
        m_service.StartScan([this](const lyn_device_info_t& phone) { Remember(phone); });
        g_timeout_add_seconds(2, AskNearest, this);
        g_main_loop_run(m_loop.get());
        return m_agreed;
    }

private:
    // Called for every advertisement: several times a second for each phone.
    void Remember(const lyn_device_info_t& phone)
    {
        if (!m_nearest || phone.rssi > m_nearest->rssi) {
            m_nearest = Phone{phone.address, phone.rssi};
        }
    }

    // GLib is written in C: no exception may reach it.
    static gboolean AskNearest(gpointer self)
    {
        auto* const search = static_cast<Search*>(self);
        try {
            search->Ask();
        } catch (const std::exception& e) {
            search->End(e.what(), false);
        }
        return G_SOURCE_REMOVE;
    }

    void Ask()
    {
        if (!m_nearest) {
            End("no phone", false);
            return;
        }
        std::cout << "asking " << m_nearest->address << " (" << m_nearest->rssi << " dBm)\n";
        m_service.Request(m_nearest->address,
                          [this](const std::string& result) { End(result, result == "Success"); });
    }

    void End(const std::string& text, bool agreed)
    {
        std::cout << text << '\n';
        m_agreed = agreed;
        g_main_loop_quit(m_loop.get());
    }

    std::unique_ptr<GMainLoop, void (*)(GMainLoop*)> m_loop{g_main_loop_new(nullptr, FALSE), g_main_loop_unref};
    std::optional<Phone> m_nearest;
    bool m_agreed = false;
    Service m_service;
};

}  // namespace

int main(int argc, char* argv[])
{
    try {
        return Search(argc > 1 ? argv[1] : "mirroring").Run() ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << "nearest: " << e.what() << '\n';
        return 2;
    }
}
