// What keeps the reader of a format from giving what it was asked for.
#pragma once

#include "src/base/result.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace vell::formats {

enum class Damage : std::uint8_t {
    Unreadable, // nothing of the format's: the source of the bytes failed
    CutOff,     // the bytes end in the midst of what they announce
    Absent,     // nothing of that kind begins there
    Corrupt,    // numbers that contradict each other
    TooLarge,   // for the format's own fields
};

struct Fault {
    Damage damage;
    ErrorCode of_source = ErrorCode::Ok; // of one that is unreadable
};

template <typename T>
using Read = Result<T, Fault>;

constexpr Failure<Fault> fault(Damage damage) {
    return Failure{Fault{damage}};
}

// Damage of what was read makes it missing; a source that fails stays a fault.
template <typename T>
Read<std::optional<T>> if_sound(Read<T> read) {
    if (read)
        return std::optional<T>(std::move(read).value());
    if (read.error().damage == Damage::Unreadable)
        return Failure{read.error()};
    return std::optional<T>();
}
inline Read<void> if_sound(Read<void> read) {
    if (!read && read.error().damage == Damage::Unreadable)
        return read;
    return {};
}

} // namespace vell::formats
