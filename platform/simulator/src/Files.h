// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

namespace lyn::simulator {

/// The TV's files, below a folder of the simulator's own. The folder is made when someone first asks for
/// it, and removed again with what was written into it here; nothing else is ever removed. The caller
/// holds the simulator's lock. Failures throw std::runtime_error.
class Files {
public:
    void Reset();
    void SetPrefix(const std::string& folder);
    const std::string& Prefix();
    void Write(const std::string& path, const std::string& content);

    /// Removes what was made. To be called at the end of the process, too.
    void Remove();

private:
    void MakePrefix();
    void WriteBelowPrefix(const std::string& path, const std::string& content);
    void MakeFolders(const std::string& path);

    std::string m_prefix;
    bool m_hasPrefix = false;
    bool m_own = false;                           ///< the prefix is a folder made here
    int m_process = 0;                            ///< that made it
    std::map<std::string, std::string> m_coming;  ///< to be written when the folder is made
    std::vector<std::string> m_made;              ///< files and folders in the order of their making
};

/// Throws std::invalid_argument unless this is an absolute path without ".." in it.
void CheckTvPath(const std::string& path);

}  // namespace lyn::simulator
