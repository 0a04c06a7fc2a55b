// What is wrong with a file costs its pictures nothing but themselves; a source that fails is told.
#pragma once

#include "src/formats/damage.h"

#include <utility>

namespace vell::pictures {

// The value, `otherwise` for damage, the code of a source that failed.
template <typename T>
Result<T> despite_damage(formats::Read<T> read, T otherwise) {
    if (read)
        return std::move(read).value();
    if (read.error().damage == formats::Damage::Unreadable)
        return Failure{read.error().of_source};
    return otherwise;
}

} // namespace vell::pictures
