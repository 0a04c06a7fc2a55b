#include "src/pictures/thumbnail.h"

#include "src/pictures/colour.h"
#include "src/pictures/scaler.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vell::pictures {
namespace {

// The rows of a picture that is there already.
class RowsInMemory final : public PictureRows {
  public:
    explicit RowsInMemory(const Picture& picture)
        : picture_(picture), layout_{picture.width, picture.height, ColourModel::Rgb,
                                     picture.has_alpha, 1} {}

    const PictureLayout& layout() const override { return layout_; }
    Result<void> read_row(std::span<std::byte> row) override {
        const auto bytes = std::as_bytes(std::span(picture_.pixels));
        std::ranges::copy(bytes.subspan(next_row_++ * row.size(), row.size()), row.begin());
        return {};
    }

  private:
    const Picture& picture_;
    PictureLayout layout_;
    std::size_t next_row_ = 0;
};

Picture blank_picture(Size size, bool has_alpha) {
    Picture picture{size.width, size.height, has_alpha};
    const std::uint8_t nothing = has_alpha ? 0 : 255;
    picture.pixels.assign(std::size_t{size.width} * size.height * picture.components(), nothing);
    return picture;
}

// Where a stored pixel is shown: columns and rows of the shown picture, as steps from one stored
// pixel to the next.
struct Walk {
    std::ptrdiff_t start;
    std::ptrdiff_t to_next_column;
    std::ptrdiff_t to_next_row;
};
Walk walk_of(Orientation orientation, std::ptrdiff_t width, std::ptrdiff_t height) {
    const std::ptrdiff_t last_column = width - 1;
    const std::ptrdiff_t last_row = (height - 1) * width;
    switch (orientation) { // width and height are those of the shown picture
    case Orientation::TopLeft:
        break;
    case Orientation::TopRight:
        return {last_column, -1, width};
    case Orientation::BottomRight:
        return {last_row + last_column, -1, -width};
    case Orientation::BottomLeft:
        return {last_row, 1, -width};
    case Orientation::LeftTop:
        return {0, width, 1};
    case Orientation::RightTop:
        return {last_column, width, -1};
    case Orientation::RightBottom:
        return {last_row + last_column, -width, -1};
    case Orientation::LeftBottom:
        return {last_row, -width, 1};
    }
    return {0, 1, width};
}

} // namespace

Result<Picture> make_thumbnail(PictureRows& rows, const ThumbnailShape& shape) {
    const PictureLayout& layout = rows.layout();
    const Area area = shown_area({layout.width, layout.height}, shape);
    const Size size = thumbnail_size(area.size, shape);
    const ToSrgb to_srgb(layout, rows.profile());
    Picture picture = blank_picture(size, layout.has_alpha);
    std::span<std::uint8_t> left = picture.pixels;
    const std::size_t row_size = std::size_t{size.width} * picture.components();
    const auto scaler = make_scaler(layout, area, size, [&](std::span<const std::uint16_t> scaled) {
        to_srgb.convert(scaled, left.first(row_size));
        left = left.subspan(row_size);
    });
    std::vector<std::byte> row(layout.row_size());
    for (std::uint32_t y = 0; y < layout.height && !left.empty(); ++y) {
        if (const Result<void> read = rows.read_row(row); !read) {
            if (y == 0)
                return Failure{read.error()};
            break;
        }
        scaler->take(row);
    }
    return picture;
}

Result<Picture> make_thumbnail(const Picture& picture, const ThumbnailShape& shape) {
    RowsInMemory rows(picture);
    return make_thumbnail(rows, shape);
}

Picture turned(Picture picture, Orientation orientation) {
    if (orientation == Orientation::TopLeft)
        return picture;
    Picture shown{picture.width, picture.height, picture.has_alpha};
    if (turns_sideways(orientation))
        std::swap(shown.width, shown.height);
    shown.pixels.resize(picture.pixels.size());
    const Walk walk = walk_of(orientation, shown.width, shown.height);
    const std::size_t components = picture.components();
    const std::uint8_t* from = picture.pixels.data();
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        std::ptrdiff_t place = walk.start + walk.to_next_row * std::ptrdiff_t{y};
        for (std::uint32_t x = 0; x < picture.width; ++x, place += walk.to_next_column) {
            std::copy_n(from, components,
                        shown.pixels.data() + static_cast<std::size_t>(place) * components);
            from += components;
        }
    }
    return shown;
}

void drop_opaque_alpha(Picture& picture) {
    std::vector<std::uint8_t>& pixels = picture.pixels;
    if (!picture.has_alpha)
        return;
    for (std::size_t i = 3; i < pixels.size(); i += 4)
        if (pixels[i] != 255)
            return;
    for (std::size_t i = 0; i < pixels.size() / 4; ++i)
        std::copy_n(pixels.data() + i * 4, 3, pixels.data() + i * 3);
    pixels.resize(pixels.size() / 4 * 3);
    picture.has_alpha = false;
}

} // namespace vell::pictures
