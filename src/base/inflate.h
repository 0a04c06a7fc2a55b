// Expands compressed data (RFC 1950) of unknown length within a limit.
#pragma once

#include "src/base/result.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace vell {

// CompressedDataDamaged for a stream that does not expand or is cut off, ResourceTooLarge for one
// that gives more than `limit` bytes.
Result<std::string> inflate_within(std::string_view compressed, std::size_t limit);

} // namespace vell
