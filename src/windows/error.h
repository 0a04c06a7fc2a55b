// The one place where the numbers of Windows' errors become result codes.
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

// The code of an error that came from a disk or the network. A drive without a medium and a server
// that does not answer are VolumeOffline, what is unknown is VolumeNotFound, what is connected
// already VolumeOnline. What only the user can mend, such as a wrong password (86, 1326) or another
// user's connection to the server (1219), passes unchanged.
constexpr ErrorCode disk_error(std::int32_t win32_error) {
    struct Row {
        std::int32_t win32_error;
        ErrorCode code;
    };
    constexpr Row rows[] = {
        {3, ErrorCode::VolumeNotFound},    // ERROR_PATH_NOT_FOUND: of a drive's root
        {15, ErrorCode::VolumeNotFound},   // ERROR_INVALID_DRIVE
        {21, ErrorCode::VolumeOffline},    // ERROR_NOT_READY
        {51, ErrorCode::VolumeOffline},    // ERROR_REM_NOT_LIST
        {53, ErrorCode::VolumeOffline},    // ERROR_BAD_NETPATH: the server does not answer
        {55, ErrorCode::VolumeOffline},    // ERROR_DEV_NOT_EXIST
        {64, ErrorCode::VolumeOffline},    // ERROR_NETNAME_DELETED
        {66, ErrorCode::BadName},          // ERROR_BAD_DEV_TYPE: a printer, for example
        {67, ErrorCode::VolumeNotFound},   // ERROR_BAD_NET_NAME: the server has no such share
        {85, ErrorCode::VolumeOnline},     // ERROR_ALREADY_ASSIGNED
        {121, ErrorCode::VolumeOffline},   // ERROR_SEM_TIMEOUT
        {144, ErrorCode::VolumeNotFound},  // ERROR_DIR_NOT_ROOT: of a share's root
        {170, ErrorCode::Busy},            // ERROR_BUSY
        {1112, ErrorCode::VolumeOffline},  // ERROR_NO_MEDIA_IN_DRIVE
        {1167, ErrorCode::VolumeOffline},  // ERROR_DEVICE_NOT_CONNECTED
        {1200, ErrorCode::BadName},        // ERROR_BAD_DEVICE
        {1202, ErrorCode::VolumeOnline},   // ERROR_DEVICE_ALREADY_REMEMBERED
        {1203, ErrorCode::VolumeNotFound}, // ERROR_NO_NET_OR_BAD_PATH
        {1222, ErrorCode::VolumeOffline},  // ERROR_NO_NETWORK
        {1231, ErrorCode::VolumeOffline},  // ERROR_NETWORK_UNREACHABLE
        {2250, ErrorCode::VolumeNotFound}, // ERROR_NOT_CONNECTED
        {2401, ErrorCode::Busy},           // ERROR_OPEN_FILES
        {2404, ErrorCode::Busy},           // ERROR_DEVICE_IN_USE
    };
    for (const Row& row : rows)
        if (row.win32_error == win32_error)
            return row.code;
    return error_from_win32(win32_error);
}

// The code of what the shell's file operation says of a deletion. It has numbers of its own, which
// are other errors in Windows' numbering.
constexpr ErrorCode deletion_error(std::int32_t shell_number) {
    constexpr std::int32_t first = 0x71;
    constexpr std::int32_t last = 0x88;
    const bool is_its_own = shell_number >= first && shell_number <= last;
    return is_its_own ? static_cast<ErrorCode>(shell_number) : error_from_win32(shell_number);
}

} // namespace vell
