// JPEG and PNG files as thumbnails of several sizes: a picture of the size that its own says, or a
// code.
#include "fuzz/input.h"
#include "src/pictures/decoding/decoding.h"
#include "src/pictures/encoders.h"
#include "src/pictures/thumbnail.h"

#include <algorithm>

namespace vell::thumbnail_fuzz {

using namespace vell::pictures;

namespace {

// Larger pictures only take longer.
constexpr std::uint64_t most_pixels = 2'000'000;

void check(Result<std::unique_ptr<PictureRows>> rows, const ThumbnailShape& shape) {
    if (!rows)
        return;
    const PictureLayout& layout = (*rows)->layout();
    FUZZ_CHECK(layout.width > 0 && layout.height > 0);
    if (std::uint64_t{layout.width} * layout.height > most_pixels)
        return;
    Result<Picture> picture = make_thumbnail(**rows, shape);
    if (!picture)
        return;
    const Area area = shown_area({layout.width, layout.height}, shape);
    FUZZ_CHECK((Size{picture->width, picture->height}) == thumbnail_size(area.size, shape));
    FUZZ_CHECK(picture->pixels.size() ==
               std::size_t{picture->width} * picture->height * picture->components());
    const Picture shown = turned(std::move(picture).value(), Orientation::RightTop);
    FUZZ_CHECK(!encode_png(shown).empty());
}

} // namespace

FUZZ_TARGET(thumbnail) {
    BytesInMemory bytes(fuzz::as_text(data, size));
    const ThumbnailShape shapes[] = {{16}, {64, true}, {100, false, true}};
    const DecodingRequest request{shapes[size % 3]};
    check(open_jpeg(bytes, request), request.shape);
    check(open_png(bytes, request), request.shape);
    return 0;
}

} // namespace vell::thumbnail_fuzz
