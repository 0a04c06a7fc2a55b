#include "src/pictures/decoding/icon_file.h"
#include "src/pictures/thumbnail.h"

#include <cstring>

namespace vell::pictures {
Picture fitted(const Picture& picture, std::uint32_t size) {
    return make_thumbnail(picture, {size, false, true}).value(); // memory does not fail
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
