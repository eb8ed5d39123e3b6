// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <unistd.h>

namespace lyn {

/// Owner of a descriptor, open or not.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : m_Fd(fd) {}
    ~FileDescriptor()
    {
        if (IsOpen()) {
            close(m_Fd);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    bool IsOpen() const { return m_Fd >= 0; }
    int Get() const { return m_Fd; }

private:
    int m_Fd;
};

}  // namespace lyn
