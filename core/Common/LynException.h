// SPDX-License-Identifier: Apache-2.0
//
// The failures of the library. Each class carries a message and one fixed code; the C interface turns
// the code into its return value. Nothing else leaves an operation on purpose, except where a header
// says so.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <type_traits>

#include "lyn_service.h"

namespace lyn {

class LynException : public std::exception {
public:
    LynException(const std::string& message, lyn_error_e code);
    ~LynException() override;

    /// Valid as long as the exception lives.
    const char* what() const noexcept override { return m_Message->c_str(); }
    lyn_error_e GetCode() const noexcept { return m_Code; }

private:
    std::shared_ptr<const std::string> m_Message;  ///< Shared by the copies: to copy one cannot fail.
    lyn_error_e m_Code;
};
static_assert(std::is_nothrow_copy_constructible_v<LynException>);

class LynExceptionInternal : public LynException {
public:
    explicit LynExceptionInternal(const std::string& message) : LynException(message, LYN_ERROR_INTERNAL) {}
};

class LynExceptionAlreadyDone : public LynException {
public:
    explicit LynExceptionAlreadyDone(const std::string& message) : LynException(message, LYN_ERROR_ALREADY_DONE) {}
};

class LynExceptionInvalidHandle : public LynException {
public:
    explicit LynExceptionInvalidHandle(const std::string& message)
        : LynException(message, LYN_ERROR_INVALID_HANDLE)
    {
    }
};

class LynExceptionInvalidParam : public LynException {
public:
    LynExceptionInvalidParam() : LynExceptionInvalidParam("Invalid Parameter exception") {}
    explicit LynExceptionInvalidParam(const std::string& message)
        : LynException(message, LYN_ERROR_INVALID_PARAMETER)
    {
    }
};

/// An attempt failed and another one is under way.
class LynExceptionRetry : public LynException {
public:
    explicit LynExceptionRetry(const std::string& message) : LynException(message, LYN_ERROR_INTERNAL) {}
};

class LynExceptionJsonParsing : public LynException {
public:
    explicit LynExceptionJsonParsing(const std::string& message)
        : LynException(message, LYN_ERROR_INVALID_PARAMETER)
    {
    }
};

class LynExceptionOperationFailed : public LynException {
public:
    explicit LynExceptionOperationFailed(const std::string& message)
        : LynException(message, LYN_ERROR_OPERATION_FAILED)
    {
    }
};

/// An advertisement is not one of the scanner's phones.
class LynExceptionNotValidDevice : public LynException {
public:
    explicit LynExceptionNotValidDevice(const std::string& message) : LynException(message, LYN_ERROR_INTERNAL) {}
};

class LynExceptionInvalidState : public LynException {
public:
    explicit LynExceptionInvalidState(const std::string& message) : LynException(message, LYN_ERROR_INVALID_STATE)
    {
    }
};

class LynExceptionNotSupported : public LynException {
public:
    explicit LynExceptionNotSupported(const std::string& message) : LynException(message, LYN_ERROR_NOT_SUPPORTED)
    {
    }
};

}  // namespace lyn
