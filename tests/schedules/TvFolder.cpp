// SPDX-License-Identifier: Apache-2.0
#include "schedules/TvFolder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace lyn::schedules {

namespace fs = std::filesystem;

TvFolder::TvFolder() : m_path((fs::temp_directory_path() / "lyn-schedules-XXXXXX").string()), m_owner(::getpid())
{
    if (::mkdtemp(m_path.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary folder");
    }
    const fs::path data = m_path + "/usr/apps/com.calyxon.tv.nfc-daemon/data";
    fs::create_directories(data);
    std::ofstream(data / "meta_data_nodlink.json") << R"({"screenmirroring_fullview":["video"]})";
}

TvFolder::~TvFolder()
{
    if (m_owner == ::getpid()) {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
}

const std::string& TvFolder::Path()
{
    static const TvFolder folder;
    return folder.m_path;
}

}  // namespace lyn::schedules
