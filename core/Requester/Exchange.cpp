// SPDX-License-Identifier: Apache-2.0
#include "Requester/Exchange.h"

#include <utility>

#include "Requester/CRequester.h"

namespace lyn {

Exchange::Exchange(std::weak_ptr<CRequester> requester, std::string extraData)
    : m_Requester(std::move(requester)),
      m_ExtraData(std::move(extraData))
{
}

Exchange::~Exchange()
{
    DisarmTimeout();
}

void Exchange::ArmTimeout(unsigned int seconds)
{
    DisarmTimeout();
    const guint id = g_timeout_add_seconds(seconds, OnTimeout, UserData());
    // The source, not its number: another thread may disarm while the source ends by itself.
    m_pTimeout = g_source_ref(g_main_context_find_source_by_id(nullptr, id));
}

void Exchange::DisarmTimeout()
{
    if (GSource* const timeout = TakeTimeout()) {
        g_source_destroy(timeout);
        g_source_unref(timeout);
    }
}

gboolean Exchange::OnTimeout(gpointer userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "data is nullptr");
        return G_SOURCE_REMOVE;
    }
    CallLive<Exchange>(userData, [](Exchange& exchange) {
        GSource* const timeout = exchange.TakeTimeout();
        if (timeout == nullptr) {
            return;  // Disarmed at the last moment.
        }
        g_source_unref(timeout);
        Step(exchange.Number(),
             [](CRequester& requester, Exchange& own) { requester.DisconnectGattForcelyByTimeout(own); });
    });
    return G_SOURCE_REMOVE;
}

}  // namespace lyn
