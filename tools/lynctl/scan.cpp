// SPDX-License-Identifier: Apache-2.0
#include <memory>

#include "commands.h"
#include "failure.h"
#include "loop.h"
#include "scan_view.h"
#include "session.h"

namespace lynctl {

namespace {

constexpr unsigned kTickMilliseconds = 200;

class Scanner {
public:
    Scanner(const Arguments& arguments, const Library& library)
        : m_view(MakeScanView(arguments)),
          m_status{arguments, library.PlatformName(), m_phones},
          m_session(library, arguments.service, [this](lyn_state_e state) { OnState(state); })
    {
    }

    int Run()
    {
        m_view->Begin(m_status);
        Start();
        const unsigned seconds = static_cast<unsigned>(m_status.arguments.seconds);
        LoopEnd end = LoopEnd::quit;
        {
            const Timer timer(kTickMilliseconds, [this] {
                Now();
                m_view->Tick(m_status);
                return true;
            });
            end = m_loop.Run(seconds * 1000);
        }
        const lyn_error_e stopped = m_session.Call().stopScan(m_session.Handle());
        Now();
        m_status.interrupted = end == LoopEnd::interrupted || end == LoopEnd::terminated;
        m_view->End(m_status);
        Check(stopped, "stop the scan");
        return kExitSuccess;
    }

private:
    void Start()
    {
        const auto found = [](const lyn_device_info_t* info, void* self) {
            static_cast<Scanner*>(self)->OnFound(Sighting::From(*info), nullptr);
        };
        const auto foundJson = [](const char* json, void* self) {
            static_cast<Scanner*>(self)->OnFound(Sighting::From(json), json);
        };
        const Functions& call = m_session.Call();
        const lyn_error_e error = m_status.arguments.json
                                      ? call.startScanWithSerialization(m_session.Handle(), foundJson, this)
                                      : call.startScan(m_session.Handle(), found, this);
        Check(error, "start the scan");
    }

    void OnFound(const Sighting& sighting, const char* json)
    {
        Now();
        const auto [phone, news] = m_phones.Add(sighting, m_status.seconds);
        m_view->Found(m_status, phone, news, json);
    }

    void OnState(lyn_state_e state)
    {
        Now();
        m_status.state = state;
        m_view->StateChanged(m_status);
    }

    void Now() { m_status.seconds = m_loop.Seconds(); }

    Loop m_loop;
    Phones m_phones;
    std::unique_ptr<ScanView> m_view;
    ScanStatus m_status;
    Session m_session;  // last: it reports to the others until it is gone
};

}  // namespace

int Scan(const Arguments& arguments, const Library& library)
{
    return Scanner(arguments, library).Run();
}

}  // namespace lynctl
