// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace lyn::linux_tests {

/// Another program, run with this one's environment. What it writes is kept; it is killed at the latest when this
/// object goes. Runs the default main context while it waits.
class Program {
public:
    explicit Program(const std::vector<std::string>& command);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits until it has written a text to its standard output so often. False after a generous time.
    bool WaitFor(const std::string& text, std::size_t times = 1);
    void Send(int signal) const;
    /// Waits for its end. @return its exit status; 128 and more for a signal; -1 when it does not end
    int WaitForEnd();

    /// Written to the standard output, and to the standard error, so far.
    const std::string& Output() const { return m_texts[0]; }
    const std::string& Errors() const { return m_texts[1]; }
    std::size_t Count(const std::string& text) const;

private:
    void Read();

    pid_t m_process = 0;
    int m_ends[2] = {-1, -1};
    std::string m_texts[2];
};

}  // namespace lyn::linux_tests
