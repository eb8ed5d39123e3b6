// SPDX-License-Identifier: Apache-2.0
#include <glib.h>
#include <unistd.h>

#include <cstdlib>

#include "settings/SettingsStore.h"

namespace lyn::linux_platform {

namespace {

std::filesystem::path Folder(const char* variable, const char* ofRoot, const char* ofUser)
{
    const char* const asked = std::getenv(variable);
    if (asked != nullptr && *asked != '\0') {
        return asked;
    }
    return ::geteuid() == 0 ? std::filesystem::path(ofRoot) : std::filesystem::path(ofUser) / "lyn";
}

}  // namespace

SettingsFolders SettingsFolders::FromEnvironment()
{
    return {Folder("LYN_STATE_DIR", "/var/lib/lyn", g_get_user_state_dir()),
            Folder("LYN_RUNTIME_DIR", "/run/lyn", g_get_user_runtime_dir())};
}

}  // namespace lyn::linux_platform
