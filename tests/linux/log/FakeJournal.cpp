// SPDX-License-Identifier: Apache-2.0
#include "FakeJournal.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

constexpr const char* kSystemsOwn = "/run/systemd/journal/socket";

/// Where to send instead; empty: to the system's own.
std::string& Instead()
{
    static auto* const path = new std::string;
    return *path;
}

sockaddr_un AddressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

bool IsForTheJournal(const msghdr& message)
{
    const auto* const to = static_cast<const sockaddr_un*>(message.msg_name);
    return to != nullptr && to->sun_family == AF_UNIX && std::strcmp(to->sun_path, kSystemsOwn) == 0;
}

}  // namespace

extern "C" ssize_t sendmsg(int descriptor, const msghdr* message, int flags)
{
    msghdr sent = *message;
    sockaddr_un to = AddressOf(Instead());
    if (!Instead().empty() && IsForTheJournal(sent)) {
        sent.msg_name = &to;
        sent.msg_namelen = sizeof to;
    }
    return ::syscall(SYS_sendmsg, descriptor, &sent, flags);
}

namespace lyn::linux_tests {

namespace {

/// An entry that was too long for a datagram comes as a file.
std::string ContentOf(int file)
{
    std::string content;
    std::array<char, 65536> buffer{};
    ::lseek(file, 0, SEEK_SET);
    for (ssize_t length = 0; (length = ::read(file, buffer.data(), buffer.size())) > 0;) {
        content.append(buffer.data(), static_cast<std::size_t>(length));
    }
    ::close(file);
    return content;
}

/// A line NAME=VALUE, or a line NAME, the length of the value in 8 bytes, the value and a newline.
FakeJournal::Entry Parse(const std::string& text)
{
    FakeJournal::Entry entry;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        if (end == std::string::npos) {
            ADD_FAILURE() << "a field without an end";
            break;
        }
        const std::string line = text.substr(at, end - at);
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) {
            entry.fields.emplace_back(line.substr(0, equals), line.substr(equals + 1));
            at = end + 1;
            continue;
        }
        std::uint64_t length = 0;
        for (std::size_t i = 0; i < 8 && end + 1 + i < text.size(); ++i) {
            length |= std::uint64_t{static_cast<unsigned char>(text[end + 1 + i])} << (8 * i);
        }
        const std::size_t value = end + 9;
        if (value > text.size() || length >= text.size() - value || text[value + length] != '\n') {
            ADD_FAILURE() << "a value that is not as long as it says: " << line;
            break;
        }
        entry.fields.emplace_back(line, text.substr(value, length));
        at = value + length + 1;
    }
    return entry;
}

}  // namespace

FakeJournal::FakeJournal() : m_descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
{
    const std::string path = m_folder.Path() / "socket";
    const sockaddr_un own = AddressOf(path);
    EXPECT_EQ(::bind(m_descriptor, reinterpret_cast<const sockaddr*>(&own), sizeof own), 0);
    Instead() = path;
}

FakeJournal::~FakeJournal()
{
    Instead().clear();
    ::close(m_descriptor);
}

std::vector<FakeJournal::Entry> FakeJournal::Take()
{
    std::vector<Entry> entries;
    for (;;) {
        std::string text(256 * 1024, '\0');
        iovec part{text.data(), text.size()};
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        const ssize_t length = ::recvmsg(m_descriptor, &message, 0);
        if (length < 0) {
            return entries;
        }
        text.resize(static_cast<std::size_t>(length));
        if (const cmsghdr* const header = CMSG_FIRSTHDR(&message)) {
            int file = -1;
            std::memcpy(&file, CMSG_DATA(header), sizeof file);
            text = ContentOf(file);
        }
        entries.push_back(Parse(text));
    }
}

std::string FakeJournal::Entry::Value(const std::string& name) const
{
    std::string value;
    int count = 0;
    for (const auto& [field, content] : fields) {
        if (field == name) {
            value = content;
            ++count;
        }
    }
    EXPECT_LE(count, 1) << name;
    return count == 1 ? value : "";
}

NoJournal::NoJournal()
{
    Instead() = "/nowhere/at/all";
}

NoJournal::~NoJournal()
{
    Instead().clear();
}

std::string StandardErrorOf(const std::map<std::string, std::optional<std::string>>& variables,
                            const std::function<void()>& work)
{
    int ends[2] = {};
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDERR_FILENO);
        for (const auto& [name, value] : variables) {
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
        }
        work();
        std::fflush(stderr);
        ::_exit(0);
    }
    ::close(ends[1]);
    std::string text;
    std::array<char, 512> buffer{};
    for (ssize_t count = 0; (count = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ::close(ends[0]);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return text;
}

}  // namespace lyn::linux_tests
