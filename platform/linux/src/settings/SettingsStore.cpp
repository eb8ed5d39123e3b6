// SPDX-License-Identifier: Apache-2.0
#include "settings/SettingsStore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace lyn::linux_platform {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxKey = 255;
constexpr const char* kInt = "int ";
constexpr const char* kText = "text ";

std::runtime_error Failed(const fs::path& file, const std::string& reason)
{
    return std::runtime_error(file.string() + ": " + reason);
}

std::runtime_error FailedWithErrno(const fs::path& file)
{
    return Failed(file, std::generic_category().message(errno));
}

bool IsPlainKey(const std::string& key)
{
    constexpr const char* kAllowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-/";
    if (key.size() > kMaxKey || key.find_first_not_of(kAllowed) != std::string::npos) {
        return false;
    }
    for (const fs::path& part : fs::path(key)) {
        // Names with a leading dot are files being written.
        if (part.empty() || part.string().front() == '.') {
            return false;
        }
    }
    return key.find("//") == std::string::npos;
}

/// A file that takes its final name when it is complete. The name that it has before is not left behind.
class NewFile {
public:
    explicit NewFile(const fs::path& target)
        : m_target(target),
          m_name((target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string()),
          m_descriptor(::mkostemp(m_name.data(), O_CLOEXEC))
    {
        if (m_descriptor < 0) {
            throw FailedWithErrno(target);
        }
    }
    ~NewFile()
    {
        ::close(m_descriptor);
        if (!m_renamed) {
            ::unlink(m_name.c_str());
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void Fill(const std::string& content)
    {
        constexpr mode_t kReadableByAll = 0644;
        std::size_t written = 0;
        while (written < content.size()) {
            const ssize_t count = ::write(m_descriptor, content.data() + written, content.size() - written);
            if (count < 0 && errno != EINTR) {
                throw FailedWithErrno(m_target);
            }
            written += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        if (::fchmod(m_descriptor, kReadableByAll) != 0 || ::fsync(m_descriptor) != 0) {
            throw FailedWithErrno(m_target);
        }
    }

    void Replace()
    {
        if (::rename(m_name.c_str(), m_target.c_str()) != 0) {
            throw FailedWithErrno(m_target);
        }
        m_renamed = true;
    }

    /// False when the name is taken.
    bool PutIfAbsent()
    {
        if (::link(m_name.c_str(), m_target.c_str()) == 0) {
            return true;
        }
        if (errno != EEXIST) {
            throw FailedWithErrno(m_target);
        }
        return false;
    }

private:
    fs::path m_target;
    std::string m_name;
    int m_descriptor;
    bool m_renamed = false;
};

/// So that the new name outlives a loss of power.
void SyncFolder(const fs::path& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

}  // namespace

fs::path SettingsStore::FileOf(const std::string& key) const
{
    if (IsPlainKey(key) && key.starts_with("db/")) {
        return m_folders.state / key;
    }
    if (IsPlainKey(key) && key.starts_with("memory/")) {
        return m_folders.runtime / key;
    }
    throw std::invalid_argument("a key begins with db/ or memory/, and has letters, digits, '.', '_' and '-' "
                                "between slashes: '" +
                                key + "'");
}

std::optional<Setting> SettingsStore::Read(const std::string& key) const
{
    const fs::path file = FileOf(key);
    std::error_code error;
    if (!fs::exists(file, error) && !error) {
        return std::nullopt;
    }
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw FailedWithErrno(file);
    }
    const std::string content{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    auto setting = SettingOf(content);
    if (!setting) {
        throw Failed(file, "is no setting: one line is wanted, 'int NUMBER' or 'text TEXT'");
    }
    return setting;
}

void SettingsStore::Write(const std::string& key, const Setting& value) const
{
    const std::string line = LineOf(value);
    const fs::path file = PlaceFor(key);
    NewFile replacement(file);
    replacement.Fill(line);
    replacement.Replace();
    SyncFolder(file.parent_path());
}

bool SettingsStore::WriteFirst(const std::string& key, const Setting& value) const
{
    const std::string line = LineOf(value);
    const fs::path file = PlaceFor(key);
    NewFile first(file);
    first.Fill(line);
    const bool put = first.PutIfAbsent();
    SyncFolder(file.parent_path());
    return put;
}

/// The file of a key, in a folder that is there.
fs::path SettingsStore::PlaceFor(const std::string& key) const
{
    fs::path file = FileOf(key);
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    if (error) {
        throw Failed(file.parent_path(), error.message());
    }
    return file;
}

std::string LineOf(const Setting& value)
{
    if (std::holds_alternative<int>(value)) {
        return kInt + std::to_string(std::get<int>(value)) + "\n";
    }
    const auto& text = std::get<std::string>(value);
    if (text.find_first_of(std::string("\n\0", 2)) != std::string::npos) {
        throw std::invalid_argument("a setting is one line of text");
    }
    return kText + text + "\n";
}

std::optional<Setting> SettingOf(const std::string& line)
{
    std::string text = line;
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    if (text.find_first_of(std::string("\n\0", 2)) != std::string::npos) {
        return std::nullopt;
    }
    if (text.starts_with(kText)) {
        return Setting(text.substr(std::string(kText).size()));
    }
    if (!text.starts_with(kInt)) {
        return std::nullopt;
    }
    const std::string digits = text.substr(std::string(kInt).size());
    int number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool whole = read.ec == std::errc{} && read.ptr == digits.data() + digits.size();
    return whole ? std::optional<Setting>(number) : std::nullopt;
}

}  // namespace lyn::linux_platform
