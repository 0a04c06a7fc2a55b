#include "src/windows/pictures/icon_decoder.h"

#include "src/pictures/decoding/part_of_bytes.h"
#include "src/windows/pictures/wic_decoder.h"

#include <algorithm>
#include <cstring>

namespace vell::windows {
namespace {

using namespace pictures;

constexpr std::uint64_t most_icon_pixels = 16'000'000;

void put_pixel(const std::byte* source, const PictureLayout& layout, std::uint8_t* out) {
    // The higher byte of the machine's order, which is little-endian.
    const auto component = [&](std::uint32_t i) {
        return std::to_integer<std::uint8_t>(source[(i + 1) * layout.component_size - 1]);
    };
    const std::uint32_t colours = layout.colours();
    for (std::uint32_t i = 0; i < 3; ++i)
        out[i] = component(colours == 1 ? 0 : i);
    out[3] = layout.has_alpha ? component(colours) : 255;
}

Result<Picture> whole_picture(PictureRows& rows) {
    const PictureLayout& layout = rows.layout();
    if (layout.model == ColourModel::Cmyk)
        return Failure{ErrorCode::NotSupported};
    if (std::uint64_t{layout.width} * layout.height > most_icon_pixels)
        return Failure{ErrorCode::PictureTooLarge};
    Picture picture{layout.width, layout.height, true, {}};
    picture.pixels.resize(std::size_t{layout.width} * layout.height * 4);
    std::vector<std::byte> row(layout.row_size());
    const std::size_t pixel_size = std::size_t{layout.components()} * layout.component_size;
    std::uint8_t* out = picture.pixels.data();
    for (std::uint32_t y = 0; y < layout.height; ++y) {
        VELL_TRY(rows.read_row(row));
        for (std::uint32_t x = 0; x < layout.width; ++x, out += 4)
            put_pixel(row.data() + x * pixel_size, layout, out);
    }
    return picture;
}

class WholePictureRows final : public PictureRows {
  public:
    explicit WholePictureRows(Picture picture) : picture_(std::move(picture)) {
        layout_.width = picture_.width;
        layout_.height = picture_.height;
        layout_.has_alpha = picture_.has_alpha;
    }

    const PictureLayout& layout() const override { return layout_; }
    Result<void> read_row(std::span<std::byte> row) override {
        if (next_ == picture_.pixels.size())
            return Failure{ErrorCode::PictureDamaged};
        std::memcpy(row.data(), picture_.pixels.data() + next_, layout_.row_size());
        next_ += layout_.row_size();
        return {};
    }

  private:
    Picture picture_;
    PictureLayout layout_;
    std::size_t next_ = 0;
};

} // namespace

Result<Picture> decode_icon_image(ByteSource& bytes, const IconImage& image) {
    if (!image.is_png)
        return read_icon_bitmap(bytes, image);
    PartOfBytes part(bytes, image.offset, image.size);
    const auto rows = VELL_TRY(decode_by_wic(part, 0));
    return whole_picture(*rows);
}

Result<Picture> decode_icon(ByteSource& bytes, std::uint32_t size) {
    constexpr std::size_t most_tries = 16;
    const auto images = by_fitness(VELL_TRY(read_icon_directory(bytes)), size);
    Result<Picture> picture = Failure{ErrorCode::PictureDamaged};
    for (std::size_t i = 0; i < std::min(images.size(), most_tries) && !picture; ++i)
        picture = decode_icon_image(bytes, images[i]);
    return picture;
}

Result<std::unique_ptr<PictureRows>> decode_icon_frame(ByteSource& bytes, std::uint32_t frame) {
    using Rows = Result<std::unique_ptr<PictureRows>>;
    if (frame == 0)
        return Rows(std::make_unique<WholePictureRows>(VELL_TRY(decode_icon(bytes, 0))));
    const auto images = VELL_TRY(read_icon_directory(bytes));
    if (frame >= images.size())
        return Failure{ErrorCode::BadParameter};
    return Rows(
        std::make_unique<WholePictureRows>(VELL_TRY(decode_icon_image(bytes, images[frame]))));
}

} // namespace vell::windows
