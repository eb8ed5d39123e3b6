// SPDX-License-Identifier: Apache-2.0
#include "air.h"

#include <utility>

namespace lynctl {

AirListener::AirListener(const Library& library, Callback onEvent)
    : m_onEvent(std::move(onEvent)),
      m_listen(library.PlatformFunction<decltype(m_listen)>("lyn_simulator_set_air_listener"))
{
    const auto report = [](lyn_simulator_air_event_e kind, const char* address, const char* data, int length,
                           void* self) {
        const std::string_view bytes =
            data && length > 0 ? std::string_view(data, static_cast<std::size_t>(length)) : "";
        static_cast<AirListener*>(self)->m_onEvent({kind, address ? address : "", bytes});
    };
    if (m_listen) {
        m_listen(report, this);
    }
}

AirListener::~AirListener()
{
    if (m_listen) {
        m_listen(nullptr, nullptr);
    }
}

}  // namespace lynctl
