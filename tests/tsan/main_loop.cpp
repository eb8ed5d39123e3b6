// SPDX-License-Identifier: Apache-2.0
//
// Tells the thread sanitizer what GLib promises and it cannot see: what a thread did before it gave a
// function to the main loop has happened before the loop calls that function. Linked into each test
// program under the thread sanitizer, where this definition comes before GLib's own.
#include <glib.h>
#include <sanitizer/tsan_interface.h>

namespace {

struct HandOver {
    GSourceFunc function;
    gpointer data;
    GDestroyNotify notify;
};

gboolean Call(gpointer data)
{
    __tsan_acquire(data);
    const auto* handOver = static_cast<HandOver*>(data);
    return handOver->function(handOver->data);
}

void Destroy(gpointer data)
{
    __tsan_acquire(data);
    const auto* handOver = static_cast<HandOver*>(data);
    if (handOver->notify != nullptr) {
        handOver->notify(handOver->data);
    }
    delete handOver;
}

}  // namespace

guint g_idle_add_full(gint priority, GSourceFunc function, gpointer data, GDestroyNotify notify)
{
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, priority);
    auto* handOver = new HandOver{function, data, notify};
    __tsan_release(handOver);
    g_source_set_callback(source, Call, handOver, Destroy);
    const guint id = g_source_attach(source, nullptr);
    g_source_unref(source);
    return id;
}

guint g_idle_add(GSourceFunc function, gpointer data)
{
    return g_idle_add_full(G_PRIORITY_DEFAULT_IDLE, function, data, nullptr);
}
