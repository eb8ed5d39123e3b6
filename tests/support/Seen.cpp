// SPDX-License-Identifier: Apache-2.0
#include "support/Seen.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <set>
#include <stdexcept>

#include "support/LogLines.h"

namespace lyn::test {
namespace {

std::mutex s_mutex;
std::set<std::string> s_seen;

const char* Folder()
{
    static const char* const folder = std::getenv("LYN_TEST_SEEN");
    return folder;
}

// program, whether the C interface is in it, test
std::string Where()
{
    static const std::string program = program_invocation_short_name;
    static const bool hasInterface = ::dlsym(RTLD_DEFAULT, "lyn_create_service") != nullptr;
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    const std::string name =
        test != nullptr ? std::string(test->test_suite_name()) + "." + test->name() : std::string("none");
    return program + "\t" + (hasInterface ? "interface" : "inside") + "\t" + name + "\t";
}

void Note(const std::string& what)
{
    if (Folder() == nullptr) {
        return;
    }
    const std::string line = Where() + what;
    const std::lock_guard lock(s_mutex);
    s_seen.insert(line);
}

void NoteLine(const simulator::LogLine& logged)
{
    const Line line = Parse(logged);
    Note("log\t" + std::to_string(line.priority) + "\t" + line.file + "\t" + line.function + "\t" +
         std::to_string(line.number));
}

}  // namespace

void NoteLogLines()
{
    if (Folder() != nullptr) {
        simulator::SetLogListener(NoteLine);
    }
}

void NoteValue(const std::string& type, int value, const std::string& function)
{
    Note("value\t" + type + "\t" + std::to_string(value) + "\t" + function);
}

void NoteThrown(const std::string& type, const std::string& function)
{
    Note("thrown\t" + type + "\t" + function);
}

void WriteSeen()
{
    if (Folder() == nullptr) {
        return;
    }
    for (const std::string& line : simulator::KernelLog()) {
        const std::size_t function = line.find("][") + 2;
        Note("kernel\t" + line.substr(function, line.find(']', function) - function));
    }
    std::ofstream file(Folder() + ("/" + std::to_string(::getpid()) + ".tsv"), std::ios::app);
    const std::lock_guard lock(s_mutex);
    for (const std::string& line : s_seen) {
        file << line << "\n";
    }
    if (!file.flush()) {
        throw std::runtime_error(std::string("cannot write into ") + Folder());
    }
    s_seen.clear();
}

}  // namespace lyn::test
