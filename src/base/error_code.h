// Result codes: 0 is success, negative numbers are the plug-in's own in the classic file-system
// style, positive ones are Windows errors that have no code of their own and pass unchanged.
#pragma once

#include <cstdint>

namespace vell {

enum class ErrorCode : std::int32_t {
    Ok = 0,
    BadName = -37,
    EndOfFile = -39,
    BeforeStart = -40, // a seek to a negative position
    NotFound = -43,
    Busy = -47, // in use, or access denied
    AlreadyExists = -48,
    BadParameter = -50, // or too few of them
    DiskError = -80,    // the seek failed on the device
    NameNotBuilt = -92, // a registration without a name
    OutOfMemory = -108,
    FolderNotFound = -120,
    MemoryFileTooLarge = -1309, // a position beyond 4 GiB - 1 in a file that lives in memory
    AlreadyDisabled = -4217,
    ControlRefused = -4218, // wrong password, or not exactly one action
    FunctionsDisabled = -4220,
    NotAvailable = -4221, // on this platform, or in this build
    LicenceExpired = -4222,
    NumberOutOfRange = -4241,
    DialogNotAllowed = -4251,      // no user interface on a server host
    SeveralLines = -4254,          // several paths where one is expected
    CompressedDataDamaged = -4296, // a compressed stream that does not expand
    HostFailure = -4298,           // the host reported a failure other than a lack of memory
    ErrorAsPath = -4299,           // the result of a failed call, given as a path
    // A parameter whose text cannot be represented in the requested encoding; reported as a text of
    // its own instead of a number.
    ParameterUnreadable = -4297,
};

constexpr std::int32_t number(ErrorCode code) {
    return static_cast<std::int32_t>(code);
}

} // namespace vell
