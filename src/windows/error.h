// The one place where a Windows error number becomes a result code.
#pragma once

#include "src/base/error_code.h"

#include <cstdint>

namespace vell {

// Numbers without a code of their own pass unchanged.
constexpr ErrorCode error_from_win32(std::int32_t win32_error) {
    switch (win32_error) {
    case 2: // ERROR_FILE_NOT_FOUND
        return ErrorCode::NotFound;
    case 3: // ERROR_PATH_NOT_FOUND
        return ErrorCode::FolderNotFound;
    case 5:  // ERROR_ACCESS_DENIED
    case 32: // ERROR_SHARING_VIOLATION
        return ErrorCode::Busy;
    case 8: // ERROR_NOT_ENOUGH_MEMORY
        return ErrorCode::OutOfMemory;
    case 38: // ERROR_HANDLE_EOF
        return ErrorCode::EndOfFile;
    case 80:  // ERROR_FILE_EXISTS
    case 183: // ERROR_ALREADY_EXISTS
        return ErrorCode::AlreadyExists;
    case 87: // ERROR_INVALID_PARAMETER
        return ErrorCode::BadParameter;
    case 123: // ERROR_INVALID_NAME
        return ErrorCode::BadName;
    case 131: // ERROR_NEGATIVE_SEEK
        return ErrorCode::DiskError;
    default:
        return static_cast<ErrorCode>(win32_error);
    }
}

} // namespace vell
