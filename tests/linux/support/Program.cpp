// SPDX-License-Identifier: Apache-2.0
#include "Program.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <utility>

#include "PrivateBus.h"

namespace lyn::linux_tests {

Program::Program(const std::vector<std::string>& command)
{
    std::vector<char*> words;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_SEARCH_PATH);
    if (g_spawn_async_with_pipes(nullptr, words.data(), nullptr, flags, nullptr, nullptr, &m_process, nullptr,
                                 &m_ends[0], &m_ends[1], nullptr) == FALSE) {
        throw std::runtime_error("cannot run " + command.front());
    }
    for (const int end : m_ends) {
        ::fcntl(end, F_SETFL, O_NONBLOCK);
    }
}

Program::~Program()
{
    if (m_process != 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    for (const int end : m_ends) {
        ::close(end);
    }
}

bool Program::WaitFor(const std::string& text, std::size_t times)
{
    return RunUntil([&] {
        Read();
        return Count(text) >= times;
    });
}

void Program::Send(int signal) const
{
    ::kill(m_process, signal);
}

int Program::WaitForEnd()
{
    int status = 0;
    const bool ended = RunUntil([&] {
        Read();
        if (m_process != 0 && ::waitpid(m_process, &status, WNOHANG) == m_process) {
            m_process = 0;
        }
        return m_process == 0;
    });
    if (!ended) {
        return -1;
    }
    Read();
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::size_t Program::Count(const std::string& text) const
{
    std::size_t count = 0;
    for (std::size_t at = 0; (at = Output().find(text, at)) != std::string::npos; at += text.size()) {
        ++count;
    }
    return count;
}

void Program::Read()
{
    for (int i = 0; i < 2; ++i) {
        char buffer[4096];
        for (ssize_t length = 0; (length = ::read(m_ends[i], buffer, sizeof buffer)) > 0;) {
            m_texts[i].append(buffer, static_cast<std::size_t>(length));
        }
    }
}

}  // namespace lyn::linux_tests
