// The codes for what the readers of formats find.
#pragma once

#include "src/formats/damage.h"

namespace vell::metadata {

constexpr ErrorCode code_of(const formats::Fault& fault, ErrorCode cut_off = ErrorCode::EndOfFile) {
    using enum formats::Damage;
    switch (fault.damage) {
    case Unreadable:
        return fault.of_source;
    case CutOff:
        return cut_off;
    case Absent:
        return ErrorCode::NothingFound;
    case Corrupt:
        return ErrorCode::CorruptStructure;
    case TooLarge:
        return ErrorCode::ResourceTooLarge;
    }
    return fault.of_source;
}

// Whether a code tells of the file's contents: what was asked for is not there, or damaged.
constexpr bool is_of_contents(ErrorCode code) {
    using enum ErrorCode;
    switch (code) {
    case EndOfFile:
    case NotAJpeg:
    case SegmentTooShort:
    case ResourceTooLarge:
    case BadArgument:
    case ShortRead:
    case NothingFound:
    case NotXmp:
    case WrongSignature:
    case NotSupported:
    case WrongImageKind:
    case CorruptStructure:
    case CompressedDataDamaged:
        return true;
    default:
        return false;
    }
}

// The same result with a code.
template <typename T>
Result<T> coded(formats::Read<T> read, ErrorCode cut_off = ErrorCode::EndOfFile) {
    if (!read)
        return Failure{code_of(read.error(), cut_off)};
    if constexpr (std::is_void_v<T>)
        return {};
    else
        return std::move(read).value();
}

} // namespace vell::metadata
