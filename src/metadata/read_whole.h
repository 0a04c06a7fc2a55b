// Bytes that a format announces and that must all be there.
#pragma once

#include "src/files/contents/buffered_reader.h"

#include <string>

namespace vell::metadata {

// ShortRead when the file ends before; no more than it holds is allocated.
inline Result<std::string> read_whole(files::BufferedReader& file, std::uint64_t count) {
    std::string bytes = VELL_TRY(file.read_bytes(count));
    if (bytes.size() < count)
        return Failure{ErrorCode::ShortRead};
    return bytes;
}

} // namespace vell::metadata
