#include "src/pictures/decoding/icon_file.h"
#include "src/pictures/geometry.h"
#include "src/pictures/scaler.h"

#include <cstring>

namespace vell::pictures {
namespace {

Picture scaled(const Picture& picture, Size target) {
    PictureLayout layout;
    layout.width = picture.width;
    layout.height = picture.height;
    layout.has_alpha = picture.has_alpha;
    Picture result{target.width, target.height, picture.has_alpha, {}};
    const auto take = [&](std::span<const std::uint16_t> row) {
        for (const std::uint16_t component : row)
            result.pixels.push_back(static_cast<std::uint8_t>((component + 128) / 257));
    };
    const Area whole{0, 0, {picture.width, picture.height}};
    const auto scaler = make_scaler(layout, whole, target, take);
    const auto bytes = std::as_bytes(std::span(picture.pixels));
    for (std::uint32_t y = 0; y < picture.height; ++y)
        scaler->take(bytes.subspan(y * layout.row_size(), layout.row_size()));
    return result;
}

} // namespace

Picture fitted(const Picture& picture, std::uint32_t size) {
    const Size whole{picture.width, picture.height};
    const Size target = thumbnail_size(whole, {size, false, true});
    return target == whole ? picture : scaled(picture, target);
}

Picture fitted_to_square(const Picture& picture, std::uint32_t size) {
    const Picture inner = fitted(picture, size);
    Picture square{size, size, true, {}};
    square.pixels.resize(std::size_t{size} * size * 4);
    const std::uint32_t left = (size - inner.width) / 2;
    const std::uint32_t top = (size - inner.height) / 2;
    const std::uint8_t* pixel = inner.pixels.data();
    for (std::uint32_t y = 0; y < inner.height; ++y)
        for (std::uint32_t x = 0; x < inner.width; ++x, pixel += inner.components()) {
            std::uint8_t* const out =
                &square.pixels[((std::size_t{top} + y) * size + left + x) * 4];
            out[3] = 255;
            std::memcpy(out, pixel, inner.components());
        }
    return square;
}

} // namespace vell::pictures
