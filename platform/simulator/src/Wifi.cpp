// SPDX-License-Identifier: Apache-2.0
#include "Wifi.h"

namespace lyn::simulator {

void Wifi::Reset()
{
    inits = 0;
    directInits = 0;
}

wifi_ap_h Wifi::Handle() const
{
    return reinterpret_cast<wifi_ap_h>(m_handle);
}

bool Wifi::IsHandle(wifi_ap_h handle) const
{
    return inits > 0 && accessPoint && handle == Handle();
}

void Wifi::SetAccessPoint(const std::optional<AccessPoint>& ap)
{
    accessPoint = ap;
    m_handle += 16;
}

}  // namespace lyn::simulator
