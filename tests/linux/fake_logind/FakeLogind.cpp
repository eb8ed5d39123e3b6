// SPDX-License-Identifier: Apache-2.0
#include "FakeLogind.h"

#include <fcntl.h>
#include <gio/gunixfdlist.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>

namespace lyn::linux_tests {

namespace {

constexpr const char* kPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";

/// Whether somebody has the other end.
bool IsOpen(int end)
{
    pollfd other{end, 0, 0};
    return ::poll(&other, 1, 0) == 0;  // a hang-up would be told
}

}  // namespace

FakeLogind::FakeLogind() : FakeDaemon("org.freedesktop.login1")
{
    Add(kPath, kManager, {});
    Handle("Manager.Inhibit", [this](const Call& call) { Grant(call); });
    Return();
}

FakeLogind::~FakeLogind()
{
    FakeDaemon::Die();
    for (const int end : m_ends) {
        ::close(end);
    }
}

void FakeLogind::PrepareForSleep(bool begins)
{
    Tell("PrepareForSleep", g_variant_new("(b)", begins));
}

void FakeLogind::PrepareForShutdown(bool begins)
{
    Tell("PrepareForShutdown", g_variant_new("(b)", begins));
}

void FakeLogind::Tell(const std::string& signal, GVariant* values)
{
    Emit(kPath, kManager, signal, values);
}

std::size_t FakeLogind::Granted() const
{
    const std::lock_guard lock(m_mutex);
    return m_ends.size();
}

std::size_t FakeLogind::Held() const
{
    const std::lock_guard lock(m_mutex);
    return static_cast<std::size_t>(std::count_if(m_ends.begin(), m_ends.end(), &IsOpen));
}

bool FakeLogind::IsHeld(std::size_t nth) const
{
    const std::lock_guard lock(m_mutex);
    return nth < m_ends.size() && IsOpen(m_ends[nth]);
}

std::string FakeLogind::Asked() const
{
    const std::lock_guard lock(m_mutex);
    return m_asked;
}

void FakeLogind::GrantWith(int descriptors, int index)
{
    const std::lock_guard lock(m_mutex);
    m_descriptors = descriptors;
    m_index = index;
}

void FakeLogind::Grant(const Call& call)
{
    char* const asked = g_variant_print(call.arguments, FALSE);
    m_asked = asked;
    g_free(asked);
    const auto reply = SharedMessage(g_dbus_message_new_method_reply(call.message.get()));
    g_dbus_message_set_body(reply.get(), g_variant_new("(h)", m_index));
    GUnixFDList* const descriptors = g_unix_fd_list_new();
    for (int i = 0; i < m_descriptors; ++i) {
        int ends[2] = {};
        g_assert_cmpint(::pipe2(ends, O_CLOEXEC), ==, 0);
        g_unix_fd_list_append(descriptors, ends[1], nullptr);
        ::close(ends[1]);
        m_ends.push_back(ends[0]);
    }
    if (m_descriptors > 0) {
        g_dbus_message_set_unix_fd_list(reply.get(), descriptors);
    }
    g_object_unref(descriptors);
    Reply(call, reply);
}

}  // namespace lyn::linux_tests
