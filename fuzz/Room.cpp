// SPDX-License-Identifier: Apache-2.0
#include "Room.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "support/Clock.h"

namespace lyn::fuzz {
namespace {

constexpr int NOT_CAPTURED = 7;

// One folder for the TV's files in all inputs: making and removing one takes longer than most inputs.
class TvFolder {
public:
    TvFolder() : m_path((std::filesystem::temp_directory_path() / "lyn-fuzz-XXXXXX").string())
    {
        Require(::mkdtemp(m_path.data()) != nullptr, "a temporary folder can be made");
    }
    ~TvFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TvFolder(const TvFolder&) = delete;
    TvFolder& operator=(const TvFolder&) = delete;

    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

}  // namespace

void Break(const std::string& promise)
{
    std::fprintf(stderr, "broken promise: %s\n", promise.c_str());
    std::abort();
}

std::string UpToZero(const std::string& text)
{
    return text.substr(0, text.find('\0'));
}

bool IsAsciiLine(const std::string& text)
{
    constexpr char last = 0x7F;
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= last; });
}

std::uint8_t Input::TakeByte()
{
    if (m_left == 0) {
        return 0;
    }
    --m_left;
    return *m_data++;
}

std::string Input::TakeText()
{
    const std::size_t length = std::min<std::size_t>(TakeByte(), m_left);
    std::string text(m_data, m_data + length);
    m_data += length;
    m_left -= length;
    return text;
}

simulator::Bytes Input::TakeBytes()
{
    const std::string text = TakeText();
    return {text.begin(), text.end()};
}

std::string Input::TakeRest()
{
    std::string text(m_data, m_data + m_left);
    m_data += m_left;
    m_left = 0;
    return text;
}

Tv::Tv()
{
    static const TvFolder folder;
    simulator::Reset();
    simulator::SetFilePrefix(folder.Path());
    simulator::SetLogCapture(NOT_CAPTURED);
    simulator::SetJournal(false);
}

Tv::~Tv()
{
    while (test::ElapseTimeout()) {  // Of destroyed services.
        simulator::Settle();
    }
    test::ForgetSleeps();
    simulator::Reset();
}

App::App(const char* serviceName)
{
    Require(lyn_create_service(&handle, serviceName, StateCb, this) == LYN_ERROR_NONE, "a service is created");
    Require(handle != nullptr, "a created service has a handle");
}

App::~App()
{
    Require(lyn_destroy_service(handle) == LYN_ERROR_NONE, "a service is destroyed");
    const std::size_t told = m_states.size() + m_results.size();
    simulator::Settle();
    Require(told == m_states.size() + m_results.size(), "nothing is reported after the end");
    const simulator::Counts alive = simulator::Alive();
    Require(alive.clients == 0 && alive.productInits == 0 && alive.wifiDirectInits == 0, "nothing is left behind");
    Require(alive.registrations == 0, "nothing is registered after the end");
    Require(!alive.boosted, "the scan boost is off after the end");
}

lyn_request_initiating_result_e App::Request(const std::string& address, const std::string& extraData)
{
    m_states.clear();
    m_results.clear();
    Require(lyn_request_initiating_with_extra_data(handle, address.c_str(), extraData.c_str(), ResultCb, this) ==
                LYN_ERROR_NONE,
            "a request is accepted");
    Require(m_results.empty(), "a result comes from the main loop");
    simulator::Settle();
    while (m_results.empty() && test::ElapseTimeout()) {
        simulator::Settle();
    }
    Require(m_results.size() == 1, "a request has one result");
    const std::vector<lyn_state_e> documented{LYN_STATE_READY, LYN_STATE_REQUESTING, LYN_STATE_READY};
    Require(m_states == documented, "a request reports READY, REQUESTING and READY");
    Require(test::ArmedTimeouts().empty(), "no time-out runs after a result");
    return m_results.front();
}

void App::StateCb(lyn_state_e state, void* userData)
{
    static_cast<App*>(userData)->m_states.push_back(state);
}

void App::ResultCb(lyn_request_initiating_result_e result, void* userData)
{
    static_cast<App*>(userData)->m_results.push_back(result);
}

}  // namespace lyn::fuzz
