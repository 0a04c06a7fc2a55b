// The codes for what keeps a movie from being read.
#pragma once

#include "src/formats/damage.h"

namespace vell::movies {

// That of the source when it failed, `damaged` for anything that is wrong with the movie.
constexpr ErrorCode code_of(const formats::Fault& fault, ErrorCode damaged) {
    return fault.damage == formats::Damage::Unreadable ? fault.of_source : damaged;
}

} // namespace vell::movies
