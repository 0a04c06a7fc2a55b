// Result codes: 0 is success, negative numbers are the plug-in's own in the classic file-system
// style, positive ones are Windows errors that have no code of their own and pass unchanged.
#pragma once

#include <cstdint>

namespace vell {

enum class ErrorCode : std::int32_t {
    NoFreeDriveLetter = 1248,
    OperationAborted = 299, // by the user, in the shell's progress window
    PathTooLong = 206,      // for Windows, or for the shell, which takes short ones only
    FolderIntoItself = 125, // the shell's numbers for two copies that it refuses
    SameFolder = 113,
    DiskFull = 112,
    PdfFailed = 99,    // text of a PDF file: for a reason without a number of its own
    FolderExists = 17, // a folder to be expanded stands there already
    // What the PDF library refuses, by its own numbers.
    PdfReadFailed = 10,
    PdfCopyForbidden = 8, // by the document's permissions
    PdfPassword = 4,      // encrypted with a password that is not known
    PdfDamaged = 3,
    PdfWithoutPages = 2, // the catalogue or the page tree cannot be read
    PdfCannotOpen = 1,
    Ok = 0,
    NotConfirmed = -1, // the user did not agree, or could not be asked
    CannotOpen = -23,  // an archive or a target file, for a reason without a code of its own
    CannotClose = -24, // what was written may not have reached the disk
    VolumeNotFound = -35,
    BadName = -37,
    EndOfFile = -39,
    BeforeStart = -40, // a seek to a negative position
    NotFound = -43,
    Busy = -47, // in use, or access denied
    AlreadyExists = -48,
    BadParameter = -50,    // or too few of them
    VolumeOffline = -53,   // a drive without a medium, a share that is not reachable
    WriteDenied = -54,     // access denied to a file to be archived
    VolumeOnline = -55,    // the drive letter or the share is connected already
    NotAJpeg = -71,        // no SOI at the start
    EngineFailed = -76,    // an archive to write could not be set up
    SizeUnknown = -77,     // an archive to read could not be set up
    DiskError = -80,       // the seek failed on the device
    NameNotBuilt = -92,    // a registration without a name
    SegmentTooShort = -92, // a segment length that does not cover itself
    OutOfMemory = -108,
    FolderNotFound = -120,
    MoveIntoItself = -122,   // a folder into itself or one of its own folders
    Cancelled = -128,        // by the user, in a dialog
    ResourceTooLarge = -207, // or a result beyond 2^31 - 1 characters
    BadArgument = -208,      // an empty chunk; a name that the system refuses
    ShortRead = -302,        // the file ends in the midst of what it announces
    FileExists = -1301,      // where another is to be made
    IsAFolder = -1302,
    DifferentVolumes = -1303,
    MemoryFileTooLarge = -1309, // a position beyond 4 GiB - 1 in a file that lives in memory
    NotAFolder = -1407,         // a file stands where a folder is wanted
    NotAMovie = -2010,          // no movie header, or none that can be read
    NothingFound = -2026,       // nothing of what was asked for is there
    NotXmp = -2159,             // an APP1 segment of another kind
    ExtractionFailed = -3104,
    AlreadyDisabled = -4217,
    ControlRefused = -4218, // wrong password, or not exactly one action
    FunctionsDisabled = -4220,
    NotAvailable = -4221, // on this platform, or in this build
    LicenceExpired = -4222,
    TooManyHandlers = -4223, // of dropped files
    WrongSignature = -4224,  // or an ICC chunk that runs over its profile
    RefusedByPolicy = -4225, // the administrator's: a path, a function or a limit
    TimeLimitPassed = -4230,
    TimeLimitOutOfRange = -4239,
    NumberOutOfRange = -4241,
    NotSupported = -4243,     // the request has no meaning for what was found
    WrongImageKind = -4247,   // not a PNG; a JPEG without a frame
    CorruptStructure = -4249, // offsets or records that contradict each other
    DialogNotAllowed = -4251, // no user can be asked, as on a server host
    SeveralLines = -4254,     // several paths where one is expected
    AddFailed = -4278,        // an item could not be put into the archive
    FinishFailed = -4279,     // an archive's directory could not be written
    InvalidUtf8 = -4280,
    TargetDenied = -4281,          // access denied to a target, or a folder in a file's place
    TargetNotFound = -4282,        // or a file in a folder's place
    ComFailure = -4295,            // of an object of Windows, for no reason that has a number
    CompressedDataDamaged = -4296, // a compressed stream that does not expand
    // The host reported a failure other than a lack of memory; or something failed without a code.
    HostFailure = -4298,
    ErrorAsPath = -4299, // the result of a failed call, given as a path
    // A parameter whose text cannot be represented in the requested encoding; reported as a text of
    // its own instead of a number.
    ParameterUnreadable = -4297,
    SystemFolderUnknown = -4301,
    NoPicture = -4302,       // nothing in the file can be shown as a picture
    PictureDamaged = -4303,  // not a row of it can be decoded
    PictureTooLarge = -4304, // for the memory or the time that a picture may take
    CreationDenied = -4401,  // access denied where an archive is to be made
    PlaceNotFound = -4402,   // no such folder for an archive
    NoFrontWindow = -5600,
};

constexpr std::int32_t number(ErrorCode code) {
    return static_cast<std::int32_t>(code);
}

} // namespace vell
