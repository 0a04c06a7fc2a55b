// Rows of pixels in every coding of decoders.
#include "src/pictures/decoding/pixel_format.h"

#include <gtest/gtest.h>

#include <limits>
#include <span>
#include <vector>

namespace vell::pictures {
namespace {

using enum Coding;
using enum ColourModel;

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

// The components of a converted row.
template <typename Row = Bytes, typename Source>
Row converted(const PixelFormat& format, std::uint32_t width, const Source& source,
              std::vector<Colour> palette = {}, Curve curve = Curve::Linear) {
    const auto bytes = std::as_bytes(std::span(source));
    EXPECT_EQ(bytes.size(), format.row_size(width));
    const RowConverter converter(format, std::move(palette), curve);
    const PictureLayout layout = converter.layout(width, 1);
    EXPECT_EQ(layout.component_size, sizeof(typename Row::value_type));
    Row row(layout.row_size() / layout.component_size);
    converter.convert(width, bytes, std::as_writable_bytes(std::span(row)));
    return row;
}

// A row in the colours of a profile.
template <typename Source>
Words with_profile(const PixelFormat& format, std::uint32_t width, const Source& source) {
    return converted<Words>(format, width, source, {}, Curve::OfProfile);
}

TEST(PixelFormat, IndexesAndShadesAreOfAFewBits) {
    const std::vector<Colour> palette = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    EXPECT_EQ(converted({Index, 2}, 5, Bytes{0b00011011, 0b01000000}, palette),
              (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 4, 5, 6})); // the fourth has no colour
    const std::vector<Colour> transparent = {{1, 2, 3, 0}, {4, 5, 6}};
    EXPECT_EQ(converted({Index, 1}, 2, Bytes{0x40}, transparent),
              (Bytes{1, 2, 3, 0, 4, 5, 6, 255}));
    EXPECT_EQ(converted({Index, 8}, 1, Bytes{1}, palette), (Bytes{4, 5, 6}));
    EXPECT_EQ(converted({Shade, 4, Gray}, 3, Bytes{0x0F, 0x80}), (Bytes{0, 255, 136}));
    EXPECT_EQ(converted({Shade, 1, Gray}, 2, Bytes{0x40}), (Bytes{0, 255}));
}

TEST(PixelFormat, MaskedPartsFillTheirRange) {
    PixelFormat format{Masked, 16, Rgb};
    format.masks = {0xF800, 0x7E0, 0x1F, 0};
    EXPECT_EQ(converted(format, 2, Words{0xFFFF, 0x8410}), (Bytes{255, 255, 255, 132, 130, 132}));
    format.masks = {0x7C00, 0x3E0, 0x1F, 0x8000};
    format.alpha = Alpha::Straight;
    EXPECT_EQ(converted(format, 2, Words{0x801F, 0x7C00}), (Bytes{0, 0, 255, 255, 255, 0, 0, 0}));
    PixelFormat deep{Masked, 32, Rgb};
    deep.masks = {0x3FF00000, 0xFFC00, 0x3FF, 0};
    EXPECT_EQ(converted<Words>(deep, 1, std::vector{0x3FF00200U}), (Words{65535, 0, 32800}));
}

TEST(PixelFormat, ComponentsAreOrderedAndStraight) {
    EXPECT_EQ(converted({Byte, 24, Rgb, Alpha::None, true}, 2, Bytes{1, 2, 3, 4, 5, 6}),
              (Bytes{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(converted({Byte, 32, Rgb, Alpha::None, true}, 1, Bytes{1, 2, 3, 99}),
              (Bytes{3, 2, 1}));
    EXPECT_EQ(converted({Byte, 32, Rgb, Alpha::Premultiplied, true}, 3,
                        Bytes{64, 0, 128, 128, 9, 9, 9, 0, 200, 100, 0, 100}),
              (Bytes{255, 0, 128, 128, 0, 0, 0, 0, 0, 255, 255, 100}));
    EXPECT_EQ(converted({Byte, 40, Cmyk, Alpha::Straight}, 1, Bytes{1, 2, 3, 4, 5}),
              (Bytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(converted<Words>({Word, 64, Rgb, Alpha::Straight, true}, 1, Words{1, 2, 3, 40000}),
              (Words{3, 2, 1, 40000}));
    EXPECT_EQ(
        converted<Words>({Word, 64, Rgb, Alpha::Premultiplied}, 1, Words{10000, 20000, 0, 20000}),
        (Words{32768, 65535, 0, 20000}));
}

TEST(PixelFormat, LinearLightIsCodedAsSrgb) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    // 0.2140411 of the light is half of the code.
    EXPECT_EQ(
        converted<Words>({Float, 96, Rgb}, 2, std::vector<float>{0.2140411F, 1, 2, -1, nan, 0}),
        (Words{32767, 65535, 65535, 0, 0, 0}));
    EXPECT_EQ(with_profile({Float, 128, Rgb, Alpha::Premultiplied}, 1,
                           std::vector<float>{0.25F, 0, 0.5F, 0.5F}),
              (Words{32768, 0, 65535, 32768}));
    // 0.5, 1, infinite, the smallest number, and -1.
    EXPECT_EQ(with_profile({Half, 16, Gray}, 5, Words{0x3800, 0x3C00, 0x7C00, 0x0001, 0xBC00}),
              (Words{32768, 65535, 65535, 0, 0}));
    EXPECT_EQ(with_profile({Fixed16, 64, Rgb}, 1, std::vector<std::int16_t>{8192, 4096, -8192, 77}),
              (Words{65535, 32768, 0}));
    EXPECT_EQ(with_profile({Fixed32, 32, Gray}, 1, std::vector{1 << 23}), (Words{32768}));
    EXPECT_EQ(with_profile({SharedExponent, 32, Rgb}, 1, Bytes{128, 64, 0, 128}),
              (Words{32768, 16384, 0}));
}

} // namespace
} // namespace vell::pictures
