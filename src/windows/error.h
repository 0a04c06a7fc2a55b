// The one place where the numbers of Windows' errors become result codes. Windows only.
#pragma once

#include "src/base/error_code.h"

#include <windows.h>

#include <cstdint>

namespace vell {

// Numbers without a code of their own pass unchanged.
constexpr ErrorCode error_from_win32(std::int32_t win32_error) {
    switch (win32_error) {
    case ERROR_FILE_NOT_FOUND:
        return ErrorCode::NotFound;
    case ERROR_PATH_NOT_FOUND:
        return ErrorCode::FolderNotFound;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
        return ErrorCode::Busy;
    case ERROR_NOT_ENOUGH_MEMORY:
        return ErrorCode::OutOfMemory;
    case ERROR_HANDLE_EOF:
        return ErrorCode::EndOfFile;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return ErrorCode::AlreadyExists;
    case ERROR_INVALID_PARAMETER:
        return ErrorCode::BadParameter;
    case ERROR_INVALID_NAME:
        return ErrorCode::BadName;
    case ERROR_NEGATIVE_SEEK:
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
        DWORD win32_error;
        ErrorCode code;
    };
    constexpr Row rows[] = {
        {ERROR_PATH_NOT_FOUND, ErrorCode::VolumeNotFound}, // of a drive's root
        {ERROR_INVALID_DRIVE, ErrorCode::VolumeNotFound},
        {ERROR_NOT_READY, ErrorCode::VolumeOffline},
        {ERROR_REM_NOT_LIST, ErrorCode::VolumeOffline},
        {ERROR_BAD_NETPATH, ErrorCode::VolumeOffline}, // the server does not answer
        {ERROR_DEV_NOT_EXIST, ErrorCode::VolumeOffline},
        {ERROR_NETNAME_DELETED, ErrorCode::VolumeOffline},
        {ERROR_BAD_DEV_TYPE, ErrorCode::BadName},        // a printer, for example
        {ERROR_BAD_NET_NAME, ErrorCode::VolumeNotFound}, // the server has no such share
        {ERROR_ALREADY_ASSIGNED, ErrorCode::VolumeOnline},
        {ERROR_SEM_TIMEOUT, ErrorCode::VolumeOffline},
        {ERROR_DIR_NOT_ROOT, ErrorCode::VolumeNotFound}, // of a share's root
        {ERROR_BUSY, ErrorCode::Busy},
        {ERROR_NO_MEDIA_IN_DRIVE, ErrorCode::VolumeOffline},
        {ERROR_DEVICE_NOT_CONNECTED, ErrorCode::VolumeOffline},
        {ERROR_BAD_DEVICE, ErrorCode::BadName},
        {ERROR_DEVICE_ALREADY_REMEMBERED, ErrorCode::VolumeOnline},
        {ERROR_NO_NET_OR_BAD_PATH, ErrorCode::VolumeNotFound},
        {ERROR_NO_NETWORK, ErrorCode::VolumeOffline},
        {ERROR_NETWORK_UNREACHABLE, ErrorCode::VolumeOffline},
        {ERROR_NOT_CONNECTED, ErrorCode::VolumeNotFound},
        {ERROR_OPEN_FILES, ErrorCode::Busy},
        {ERROR_DEVICE_IN_USE, ErrorCode::Busy},
    };
    for (const Row& row : rows)
        if (row.win32_error == static_cast<DWORD>(win32_error))
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
