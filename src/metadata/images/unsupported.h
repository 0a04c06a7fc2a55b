// The code for image files that nothing can be said of.
#pragma once

#include "src/formats/damage.h"

#include <utility>

namespace vell::metadata {

// NotSupported for damage, the code of a source that failed.
template <typename T>
Result<T> unless_unsupported(formats::Read<T> read) {
    if (read)
        return std::move(read).value();
    return Failure{read.error().damage == formats::Damage::Unreadable ? read.error().of_source
                                                                      : ErrorCode::NotSupported};
}

} // namespace vell::metadata
