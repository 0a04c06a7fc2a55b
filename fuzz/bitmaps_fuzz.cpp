// GIF and BMP files and icons: every row of a frame, or a code.
#include "fuzz/input.h"
#include "src/pictures/decoding/bmp_picture.h"
#include "src/pictures/decoding/gif_picture.h"
#include "src/pictures/decoding/icon_file.h"

#include <algorithm>

namespace vell::bitmaps_fuzz {

using namespace vell::pictures;

namespace {

// Enough of a picture that is far larger than its file.
constexpr std::uint32_t most_rows = 3000;

void read(const Result<std::unique_ptr<PictureRows>>& rows) {
    if (!rows)
        return;
    const PictureLayout layout = (*rows)->layout();
    FUZZ_CHECK(layout.width > 0 && layout.height > 0);
    std::vector<std::byte> row(layout.row_size());
    for (std::uint32_t y = 0; y < std::min(layout.height, most_rows); ++y)
        if (!(*rows)->read_row(row))
            return;
}

} // namespace

FUZZ_TARGET(bitmaps) {
    BytesInMemory bytes(fuzz::as_text(data, size));
    const std::uint32_t frame = size % 3;
    read(decode_gif(bytes, frame));
    read(decode_bmp(bytes, 0));
    const auto images = read_icon_directory(bytes);
    if (!images)
        return 0;
    for (const IconImage& image : by_fitness(*images, 32)) {
        const auto picture = read_icon_bitmap(bytes, image);
        if (!picture || picture->width * std::size_t{picture->height} > 1'000'000)
            continue;
        FUZZ_CHECK(fitted_to_square(*picture, 32).pixels.size() == 32 * 32 * 4);
    }
    return 0;
}

} // namespace vell::bitmaps_fuzz
