// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "TemporaryFolder.h"

namespace lyn::linux_tests {

/// The journal's socket. What is sent to the system's own goes there as long as this object lives, because this
/// program's sendmsg() comes before that of the C library.
class FakeJournal {
public:
    FakeJournal();
    ~FakeJournal();
    FakeJournal(const FakeJournal&) = delete;
    FakeJournal& operator=(const FakeJournal&) = delete;

    /// One entry: its fields in their order. Fails the test when it does not keep to the protocol.
    struct Entry {
        std::vector<std::pair<std::string, std::string>> fields;

        /// The value of a field that is there once; empty otherwise.
        std::string Value(const std::string& name) const;
    };
    /// Everything that has been sent since the last time.
    std::vector<Entry> Take();

private:
    TemporaryFolder m_folder;
    int m_descriptor;
};

/// As if there were no journal, as long as this object lives.
class NoJournal {
public:
    NoJournal();
    ~NoJournal();
};

/// What a new process, in which the log has not been used yet, writes to its standard error. Variables are set
/// there, or unset when they have no value.
std::string StandardErrorOf(const std::map<std::string, std::optional<std::string>>& variables,
                            const std::function<void()>& work);

}  // namespace lyn::linux_tests
