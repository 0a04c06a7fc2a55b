// Rows as decoders give them, in whatever way a pixel is coded, and as PictureRows gives them.
#pragma once

#include "src/system/pictures.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vell::pictures {

// What the numbers of a pixel are. All are in the machine's byte order.
enum class Coding : std::uint8_t {
    Index,   // of a palette; 1, 2, 4 or 8 bits, the first pixel in the highest ones
    Shade,   // 1, 2 or 4 bits of grey, likewise
    Masked,  // parts of one integer of 16 or 32 bits
    Byte,    // and from here on one number for each component
    Word,    // 16 bits
    Fixed16, // signed, 13 bits behind the point
    Fixed32, // signed, 24 bits behind the point
    Half,
    Float,
    SharedExponent, // three bytes with the exponent of 2 that follows them
};

enum class Alpha : std::uint8_t { None, Straight, Premultiplied };

struct PixelFormat {
    Coding coding = Coding::Byte;
    std::uint8_t bits = 24; // of a pixel; what components do not take of them is passed over
    ColourModel model = ColourModel::Rgb;
    Alpha alpha = Alpha::None;
    bool blue_first = false;
    std::array<std::uint32_t, 4> masks = {}; // of red, green, blue and alpha

    constexpr std::size_t row_size(std::uint32_t width) const {
        return (std::size_t{width} * bits + 7) / 8;
    }
};

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;

    bool operator==(const Colour&) const = default;
};

// Colours as a row of a picture of 8 bits, which has room for them.
void store_colours(std::span<const Colour> colours, bool with_alpha, std::span<std::byte> row);

// What numbers with a fraction are: linear light of sRGB's primaries, unless a profile says so.
enum class Curve : std::uint8_t { Linear, OfProfile };

// Integers keep their precision, 8 or 16 bits; numbers with a fraction come as 16 bits, those of
// linear light coded as sRGB is. What is out of the range from 0 to 1 is cut off.
class RowConverter {
  public:
    RowConverter() = default;
    RowConverter(const PixelFormat& format, std::vector<Colour> palette, Curve curve)
        : format_(format), palette_(std::move(palette)), curve_(curve) {}

    // The layout of a picture that has that many pixels.
    PictureLayout layout(std::uint32_t width, std::uint32_t height) const;
    const PixelFormat& format() const { return format_; }
    // `source` holds a row of `width` pixels, `row` has room for one.
    void convert(std::uint32_t width, std::span<const std::byte> source,
                 std::span<std::byte> row) const;

  private:
    bool has_alpha() const;

    PixelFormat format_;
    std::vector<Colour> palette_;
    Curve curve_ = Curve::Linear;
};

} // namespace vell::pictures
