// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace lyn::linux_tests {

/// One control socket of wpa_supplicant, served on a thread of its own.
class ControlSocket {
public:
    static constexpr const char* kAddress = "02:00:00:00:01:00";
    /// What it answers to STATUS by default.
    static const std::string kStatus;

    explicit ControlSocket(std::filesystem::path path);
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    /// The datagrams that answer a command from now on, after a time.
    void AnswerWith(std::vector<std::string> datagrams, int delayMs = 0);
    /// The next command ends it: the socket is closed, its file stays, as when the program is killed.
    void DieAtNext();
    /// Listens again.
    void Return();

    std::vector<std::string> Commands() const;

private:
    void Open();
    void Close();
    void Work();
    void Serve(int descriptor);

    const std::filesystem::path m_path;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_answers = {kStatus};
    int m_delayMs = 0;
    bool m_dies = false;
    std::vector<std::string> m_commands;
    int m_descriptor = -1;
    int m_end[2] = {-1, -1};  ///< a pipe that ends the thread
    std::thread m_thread;
};

}  // namespace lyn::linux_tests
