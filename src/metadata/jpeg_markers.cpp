#include "src/metadata/jpeg_markers.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace vell::metadata {
namespace {

// Moves behind the next prefix. Between segments it comes at once; what stands there otherwise is
// passed in blocks that grow, so that neither many gaps nor a long one costs much.
Result<void> pass_prefix(files::BufferedReader& file) {
    constexpr std::size_t least_block = 16;
    constexpr std::size_t largest_block = 1 << 18;
    if (VELL_TRY(file.read_byte()) == marker_prefix)
        return {};
    std::vector<char> block;
    for (std::size_t size = least_block;; size = std::min(size * 2, largest_block)) {
        const std::uint64_t start = file.position();
        block.resize(size);
        const std::size_t count = VELL_TRY(file.read(block));
        if (count == 0)
            return Failure{ErrorCode::EndOfFile};
        const std::size_t at =
            std::string_view(block.data(), count).find(static_cast<char>(marker_prefix));
        if (at != std::string_view::npos) {
            file.seek(start + at + 1);
            return {};
        }
    }
}

} // namespace

Result<Marker> next_marker(files::BufferedReader& file) {
    VELL_TRY(pass_prefix(file));
    const std::uint64_t start = file.position() - 1;
    std::uint8_t code = marker_prefix;
    while (code == marker_prefix) // any number of fill bytes
        code = VELL_TRY(file.read_byte());
    return Marker{SegmentMarker{code}, start};
}

} // namespace vell::metadata
