// SPDX-License-Identifier: Apache-2.0
#include "Files.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace lyn::simulator {

namespace fs = std::filesystem;

void Files::Reset()
{
    Remove();
    m_prefix.clear();
    m_hasPrefix = false;
    m_coming.clear();
}

void Files::SetPrefix(const std::string& folder)
{
    Remove();
    m_coming.clear();
    m_prefix = folder;
    m_hasPrefix = true;
}

const std::string& Files::Prefix()
{
    if (!m_hasPrefix) {
        MakePrefix();
    }
    return m_prefix;
}

void Files::Write(const std::string& path, const std::string& content)
{
    CheckTvPath(path);
    if (m_hasPrefix) {
        WriteBelowPrefix(path, content);
    } else {
        m_coming[path] = content;
    }
}

void Files::Remove()
{
    // A child that was forked off leaves its parent's files alone.
    if (m_own && m_process == ::getpid()) {
        while (!m_made.empty()) {
            std::remove(m_made.back().c_str());
            m_made.pop_back();
        }
    }
    m_made.clear();
    m_own = false;
}

void Files::MakePrefix()
{
    const char* place = std::getenv("TMPDIR");
    std::string folder = std::string(place != nullptr && *place == '/' ? place : "/tmp") + "/lyn-simulator-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder like " + folder);
    }
    m_prefix = folder;
    m_hasPrefix = true;
    m_own = true;
    m_process = ::getpid();
    m_made = {folder};
    for (const auto& [path, content] : m_coming) {
        WriteBelowPrefix(path, content);
    }
    m_coming.clear();
}

void Files::WriteBelowPrefix(const std::string& path, const std::string& content)
{
    const std::string place = m_prefix + path;
    MakeFolders(fs::path(place).parent_path().string());
    std::ofstream file(place, std::ios::binary | std::ios::trunc);
    if (file && std::find(m_made.begin(), m_made.end(), place) == m_made.end()) {
        m_made.push_back(place);
    }
    file << content;
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + place);
    }
}

void Files::MakeFolders(const std::string& path)
{
    if (path.empty() || fs::exists(path)) {
        return;
    }
    MakeFolders(fs::path(path).parent_path().string());
    fs::create_directory(path);
    m_made.push_back(path);
}

void CheckTvPath(const std::string& path)
{
    const fs::path parts(path);
    const bool climbs = std::find(parts.begin(), parts.end(), "..") != parts.end();
    if (path.size() < 2 || path.front() != '/' || path.back() == '/' || climbs) {
        throw std::invalid_argument("a file of the TV has an absolute path without \"..\": " + path);
    }
}

}  // namespace lyn::simulator
