// SPDX-License-Identifier: Apache-2.0
//
// What the tests have seen of the library, for the page that tests/reference/write_page.py makes of it. It is
// written into the folder that the environment variable LYN_TEST_SEEN names, one file for each process; without
// the variable nothing is.
#pragma once

#include <string>

namespace lyn::test {

/// Begins to note every log line's place. Once is enough.
void NoteLogLines();

/// Notes, for the running test, that a function of the interface, or a callback of it, gave this value.
void NoteValue(const std::string& type, int value, const std::string& function);

/// NoteValue() of what a function returns.
template <typename Code>
Code Returned(const std::string& function, Code code)
{
    NoteValue("lyn_error_e", code, function);
    return code;
}

/// Notes that a function threw an exception of this type.
void NoteThrown(const std::string& type, const std::string& function);

/// Writes what the running test has seen.
void WriteSeen();

}  // namespace lyn::test
