// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lyn::simulator {

/// Failures that wait for their call. Several may wait for one function; each counts for itself. The
/// caller holds the simulator's lock.
class Faults {
public:
    /// @param nth 1 is the next call, 0 every call. Throws std::invalid_argument for an unknown function.
    void Fail(const std::string& function, int code, int nth);
    void FailAny(int code, int nth);
    void GiveNull(const std::string& function, int nth);
    void Clear();

    /// The code that this call has to fail with, if any. Counts the call.
    std::optional<int> DrawFailure(std::string_view function);
    /// Whether the text that this call gives has to be null. Counts the call.
    bool DrawNull(std::string_view function);

private:
    struct Fault {
        std::string function;  ///< empty: whatever the function
        int code;
        int nth;
    };

    static std::optional<int> Draw(std::vector<Fault>& faults, std::string_view function);

    std::vector<Fault> m_failures;
    std::vector<Fault> m_nulls;
};

}  // namespace lyn::simulator
