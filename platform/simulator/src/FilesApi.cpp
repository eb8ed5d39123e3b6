// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <exception>

#include "PlatformApi.h"
#include "PlatformCall.h"

using namespace lyn::simulator;

int platform_file_path(const char* path, char* out, size_t size)
{
    return Perform("platform_file_path", In(path), [&](PlatformCall& call) {
        if (path == nullptr || path[0] != '/' || out == nullptr) {
            return kInvalidArgument;
        }
        std::string place;
        try {
            place = call.simulator.files.Prefix() + path;
        } catch (const std::exception&) {
            return kNotFound;
        }
        if (place.size() >= size) {
            return kTooLong;
        }
        std::memcpy(out, place.c_str(), place.size() + 1);
        call.Out(place);
        return 0;
    });
}
