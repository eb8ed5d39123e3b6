// SPDX-License-Identifier: Apache-2.0
#include "library.h"

#include <dlfcn.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "failure.h"

namespace lynctl {

namespace {

namespace fs = std::filesystem;

constexpr const char* kServiceFile = "liblyn_service.so.0";
constexpr const char* kPlatformFile = "liblyn_platform.so.0";

/// The installed place first, then that of a build folder.
fs::path FolderOfThisProgram()
{
    std::error_code error;
    const fs::path bin = fs::read_symlink("/proc/self/exe", error).parent_path();
    if (error) {
        throw Failure(kExitFailure, "cannot find the libraries: /proc/self/exe: " + error.message());
    }
    fs::path installed = (bin / LYN_LIBDIR_FROM_BINDIR).lexically_normal();
    if (fs::exists(installed / kServiceFile, error)) {
        return installed;
    }
    fs::path built = (bin / "../lib").lexically_normal();
    return fs::exists(built / kServiceFile, error) ? built : installed;
}

void* Open(const fs::path& file, int flags)
{
    void* const handle = dlopen(file.c_str(), flags);
    if (!handle) {
        const char* const reason = dlerror();
        throw Failure(kExitFailure, std::string("cannot load ") + (reason ? reason : file.c_str()));
    }
    return handle;
}

template <typename Function>
void Find(void* handle, const char* name, Function& out)
{
    out = reinterpret_cast<Function>(dlsym(handle, name));
    if (!out) {
        throw Failure(kExitFailure, std::string(kServiceFile) + " lacks the function " + name);
    }
}

void FindAll(void* handle, Functions& call)
{
    Find(handle, "lyn_create_service", call.createService);
    Find(handle, "lyn_destroy_service", call.destroyService);
    Find(handle, "lyn_start_scan", call.startScan);
    Find(handle, "lyn_start_scan_with_serialization", call.startScanWithSerialization);
    Find(handle, "lyn_stop_scan", call.stopScan);
    Find(handle, "lyn_request_initiating", call.requestInitiating);
    Find(handle, "lyn_request_initiating_with_extra_data", call.requestInitiatingWithExtraData);
    Find(handle, "lyn_start_advertise", call.startAdvertise);
    Find(handle, "lyn_stop_advertise", call.stopAdvertise);
    Find(handle, "lyn_set_nodlink_version", call.setNodlinkVersion);
    Find(handle, "lyn_get_nodlink_type", call.getNodlinkType);
    Find(handle, "lyn_get_request_initiating_error_string", call.getRequestInitiatingErrorString);
}

}  // namespace

Library::Library(const std::string& folder, const std::string& platform)
{
    // Whoever may run a program with special rights must not run own code with them.
    if (!folder.empty() && getauxval(AT_SECURE) != 0) {
        throw Failure(kExitUsage, "--lib-dir is not accepted by a program with special rights");
    }
    const fs::path from = folder.empty() ? FolderOfThisProgram() : fs::absolute(folder);
    const std::string name = platform.empty() ? LYN_DEFAULT_PLATFORM : platform;
    m_platformName = name.empty() ? "TV" : name;
    if (!name.empty()) {
        m_platform = Open(from / "lyn" / name / kPlatformFile, RTLD_NOW | RTLD_GLOBAL);
    }
    m_service = Open(from / kServiceFile, RTLD_NOW | RTLD_LOCAL);
    FindAll(m_service, call);
}

void* Library::Symbol(const char* name) const
{
    return m_platform ? dlsym(m_platform, name) : nullptr;
}

}  // namespace lynctl
