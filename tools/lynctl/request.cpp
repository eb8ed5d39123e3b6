// SPDX-License-Identifier: Apache-2.0
#include <optional>

#include "air.h"
#include "commands.h"
#include "failure.h"
#include "loop.h"
#include "request_view.h"
#include "session.h"

namespace lynctl {

namespace {

constexpr unsigned kFarewellMilliseconds = 500;

class Requester {
public:
    Requester(const Arguments& arguments, const Library& library)
        : m_arguments(arguments),
          m_platform(library.PlatformName()),
          m_view(MakeRequestView(arguments)),
          m_air(library, [this](const AirEvent& event) { OnAir(event); }),
          m_session(library, arguments.service,
                    [this](lyn_state_e state) { m_view->StateChanged(m_loop.Seconds(), state); })
    {
    }

    int Run()
    {
        m_view->Begin(m_arguments, m_platform);
        if (!m_arguments.nodlinkVersion.empty()) {
            Check(Call().setNodlinkVersion(Handle(), m_arguments.nodlinkVersion.c_str()), "set the version");
        }
        Ask();
        const LoopEnd end = m_loop.Run(0);
        if (!m_result) {
            return Interrupted(end);
        }
        const RequestOutcome outcome = Outcome();
        AwaitFarewell();
        m_view->End(m_loop.Seconds(), outcome);
        if (outcome.result == LYN_REQUEST_INITIATING_RESULT_SUCCESS) {
            return kExitSuccess;
        }
        return kExitResult + static_cast<int>(outcome.result);
    }

private:
    const Functions& Call() const { return m_session.Call(); }
    lyn_service_h Handle() const { return m_session.Handle(); }

    void Ask()
    {
        const auto report = [](lyn_request_initiating_result_e result, void* self) {
            auto* const requester = static_cast<Requester*>(self);
            requester->m_result = result;
            requester->m_loop.Quit();
        };
        const char* const address = m_arguments.address.c_str();
        const lyn_error_e error =
            m_arguments.extra ? Call().requestInitiatingWithExtraData(Handle(), address,
                                                                      m_arguments.extra->c_str(), report, this)
                              : Call().requestInitiating(Handle(), address, report, this);
        Check(error, "ask the phone");
    }

    RequestOutcome Outcome() const
    {
        RequestOutcome outcome{*m_result, Call().getRequestInitiatingErrorString(Handle(), *m_result),
                               std::nullopt};
        nod_link_type type = 0;
        if (m_arguments.service == "nodlink" && Call().getNodlinkType(Handle(), &type) == LYN_ERROR_NONE) {
            outcome.nodlinkType = type;
        }
        return outcome;
    }

    /// The link goes down behind the result: gives it a moment, where we can see it.
    void AwaitFarewell()
    {
        if (m_linkUp) {
            m_loop.Run(kFarewellMilliseconds);
        }
    }

    int Interrupted(LoopEnd end)
    {
        m_view->Interrupted(m_loop.Seconds());
        return end == LoopEnd::terminated ? kExitTerminated : kExitInterrupted;
    }

    void OnAir(const AirEvent& event)
    {
        m_view->OnAir(m_loop.Seconds(), event);
        if (event.kind == LYN_SIMULATOR_AIR_CONNECTED) {
            m_linkUp = true;
        }
        if (event.kind != LYN_SIMULATOR_AIR_DISCONNECTED) {
            return;
        }
        m_linkUp = false;
        if (m_result) {
            m_loop.Quit();
        }
    }

    const Arguments& m_arguments;
    std::string m_platform;
    Loop m_loop;
    std::unique_ptr<RequestView> m_view;
    bool m_linkUp = false;
    std::optional<lyn_request_initiating_result_e> m_result;
    AirListener m_air;
    Session m_session;  // last: it reports to the others until it is gone
};

}  // namespace

int Request(const Arguments& arguments, const Library& library)
{
    return Requester(arguments, library).Run();
}

}  // namespace lynctl
