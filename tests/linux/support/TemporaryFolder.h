// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace lyn::linux_tests {

/// A folder that is gone, with all that is in it, when this object goes.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "lyn-test-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = name;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

    /// Makes a folder in it, and sets an environment variable to its path.
    std::filesystem::path Make(const char* name, const char* variable) const
    {
        std::filesystem::create_directory(m_path / name);
        ::setenv(variable, (m_path / name).c_str(), 1);
        return m_path / name;
    }

private:
    std::filesystem::path m_path;
};

}  // namespace lyn::linux_tests
