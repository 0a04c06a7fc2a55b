// The number of pages that the bytes of a PDF file tell without its structure.
#pragma once

#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"

#include <cstdint>

namespace vell::documents {

// The largest number that stands behind "/Count" anywhere in the file; 0 when there is none. What
// does not fit into 32 bits counts as none.
Result<std::uint32_t> largest_count(files::BufferedReader& file);

} // namespace vell::documents
