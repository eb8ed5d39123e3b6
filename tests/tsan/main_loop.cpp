// SPDX-License-Identifier: Apache-2.0
//
// Tells the thread sanitizer what GLib promises and it cannot see: what a thread did before it gave a
// function to the main loop has happened before the loop calls that function. Linked into each test
// program under the thread sanitizer, where this definition comes before GLib's own.
#include <dlfcn.h>
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

void g_source_set_callback(GSource* source, GSourceFunc function, gpointer data, GDestroyNotify notify)
{
    using Set = void (*)(GSource*, GSourceFunc, gpointer, GDestroyNotify);
    static const auto original = reinterpret_cast<Set>(dlsym(RTLD_NEXT, "g_source_set_callback"));
    // Functions of other sources have other arguments.
    if (source->source_funcs != &g_idle_funcs && source->source_funcs != &g_timeout_funcs) {
        original(source, function, data, notify);
        return;
    }
    auto* handOver = new HandOver{function, data, notify};
    __tsan_release(handOver);
    original(source, Call, handOver, Destroy);
}

guint g_idle_add_full(gint priority, GSourceFunc function, gpointer data, GDestroyNotify notify)
{
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, priority);
    g_source_set_callback(source, function, data, notify);
    const guint id = g_source_attach(source, nullptr);
    g_source_unref(source);
    return id;
}

guint g_idle_add(GSourceFunc function, gpointer data)
{
    return g_idle_add_full(G_PRIORITY_DEFAULT_IDLE, function, data, nullptr);
}
