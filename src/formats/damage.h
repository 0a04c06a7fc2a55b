// What keeps the reader of a format from giving what it was asked for.
#pragma once

#include "src/base/result.h"

#include <cstdint>

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

} // namespace vell::formats
