// Result codes: 0 is success, negative numbers are the plug-in's own in the classic file-system
// style, positive ones are Windows errors that have no code of their own and pass unchanged.
#pragma once

#include <cstdint>

namespace vell {

enum class ErrorCode : std::int32_t {
    OperationAborted = 299, // by the user, in the shell's progress window
    PathTooLong = 206,      // for the shell, which takes no long paths
    Ok = 0,
    NotConfirmed = -1, // the user did not agree, or could not be asked
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
    MoveIntoItself = -122, // a folder into itself or one of its own folders
    Cancelled = -128, // by the user, in a dialog
    DifferentVolumes = -1303,
    MemoryFileTooLarge = -1309, // a position beyond 4 GiB - 1 in a file that lives in memory
    NotAFolder = -1407, // a file stands where a folder is wanted
    AlreadyDisabled = -4217,
    ControlRefused = -4218, // wrong password, or not exactly one action
    FunctionsDisabled = -4220,
    NotAvailable = -4221, // on this platform, or in this build
    LicenceExpired = -4222,
    TimeLimitPassed = -4230,
    TimeLimitOutOfRange = -4239,
    NumberOutOfRange = -4241,
    DialogNotAllowed = -4251,      // no user interface on a server host
    SeveralLines = -4254,          // several paths where one is expected
    CompressedDataDamaged = -4296, // a compressed stream that does not expand
    HostFailure = -4298,           // the host reported a failure other than a lack of memory
    ErrorAsPath = -4299,           // the result of a failed call, given as a path
    // A parameter whose text cannot be represented in the requested encoding; reported as a text of
    // its own instead of a number.
    ParameterUnreadable = -4297,
    SystemFolderUnknown = -4301,
};

constexpr std::int32_t number(ErrorCode code) {
    return static_cast<std::int32_t>(code);
}

} // namespace vell
