// Rows of pixels in every coding of decoders.
#include "src/pictures/decoding/pixel_format.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>

namespace vell::pictures {
namespace {

template <typename T>
std::vector<std::byte> bytes_of(std::initializer_list<T> values) {
    std::vector<std::byte> bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), std::data(values), bytes.size());
    return bytes;
}

// The components of a converted row.
template <typename T>
std::vector<T> converted(const PixelFormat& format, std::uint32_t width,
                         const std::vector<std::byte>& source, std::vector<Colour> palette = {},
                         Curve curve = Curve::Linear) {
    EXPECT_EQ(source.size(), format.row_size(width));
    const RowConverter converter(format, std::move(palette), curve);
    const PictureLayout layout = converter.layout(width, 1);
    EXPECT_EQ(layout.component_size, sizeof(T));
    std::vector<T> row(layout.row_size() / sizeof(T));
    converter.convert(width, source, std::as_writable_bytes(std::span(row)));
    return row;
}

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

TEST(PixelFormat, IndexesAndShadesAreOfAFewBits) {
    const std::vector<Colour> palette = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    const PixelFormat two{Coding::Index, 2};
    EXPECT_EQ(
        converted<std::uint8_t>(two, 5, bytes_of<std::uint8_t>({0b00011011, 0b01000000}), palette),
        (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 4, 5, 6})); // the fourth has no colour
    const std::vector<Colour> transparent = {{1, 2, 3, 0}, {4, 5, 6}};
    EXPECT_EQ(
        converted<std::uint8_t>({Coding::Index, 1}, 2, bytes_of<std::uint8_t>({0x40}), transparent),
        (Bytes{1, 2, 3, 0, 4, 5, 6, 255}));
    EXPECT_EQ(converted<std::uint8_t>({Coding::Index, 8}, 1, bytes_of<std::uint8_t>({1}), palette),
              (Bytes{4, 5, 6}));
    EXPECT_EQ(converted<std::uint8_t>({Coding::Shade, 4, ColourModel::Gray}, 3,
                                      bytes_of<std::uint8_t>({0x0F, 0x80})),
              (Bytes{0, 255, 136}));
    EXPECT_EQ(converted<std::uint8_t>({Coding::Shade, 1, ColourModel::Gray}, 2,
                                      bytes_of<std::uint8_t>({0x40})),
              (Bytes{0, 255}));
}

TEST(PixelFormat, MaskedPartsFillTheirRange) {
    PixelFormat format{Coding::Masked, 16, ColourModel::Rgb};
    format.masks = {0xF800, 0x7E0, 0x1F, 0};
    EXPECT_EQ(converted<std::uint8_t>(format, 2, bytes_of<std::uint16_t>({0xFFFF, 0x8410})),
              (Bytes{255, 255, 255, 132, 130, 132}));
    format.masks = {0x7C00, 0x3E0, 0x1F, 0x8000};
    format.alpha = Alpha::Straight;
    EXPECT_EQ(converted<std::uint8_t>(format, 2, bytes_of<std::uint16_t>({0x801F, 0x7C00})),
              (Bytes{0, 0, 255, 255, 255, 0, 0, 0}));
    PixelFormat deep{Coding::Masked, 32, ColourModel::Rgb};
    deep.masks = {0x3FF00000, 0xFFC00, 0x3FF, 0};
    EXPECT_EQ(converted<std::uint16_t>(deep, 1, bytes_of<std::uint32_t>({0x3FF00200})),
              (Words{65535, 0, 32800}));
}

TEST(PixelFormat, ComponentsAreOrderedAndStraight) {
    EXPECT_EQ(converted<std::uint8_t>({Coding::Byte, 24, ColourModel::Rgb, Alpha::None, true}, 2,
                                      bytes_of<std::uint8_t>({1, 2, 3, 4, 5, 6})),
              (Bytes{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(converted<std::uint8_t>({Coding::Byte, 32, ColourModel::Rgb, Alpha::None, true}, 1,
                                      bytes_of<std::uint8_t>({1, 2, 3, 99})),
              (Bytes{3, 2, 1}));
    EXPECT_EQ(converted<std::uint8_t>(
                  {Coding::Byte, 32, ColourModel::Rgb, Alpha::Premultiplied, true}, 3,
                  bytes_of<std::uint8_t>({64, 0, 128, 128, 9, 9, 9, 0, 200, 100, 0, 100})),
              (Bytes{255, 0, 128, 128, 0, 0, 0, 0, 0, 255, 255, 100}));
    EXPECT_EQ(converted<std::uint8_t>({Coding::Byte, 40, ColourModel::Cmyk, Alpha::Straight}, 1,
                                      bytes_of<std::uint8_t>({1, 2, 3, 4, 5})),
              (Bytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(converted<std::uint16_t>({Coding::Word, 64, ColourModel::Rgb, Alpha::Straight, true},
                                       1, bytes_of<std::uint16_t>({1, 2, 3, 40000})),
              (Words{3, 2, 1, 40000}));
    EXPECT_EQ(converted<std::uint16_t>({Coding::Word, 64, ColourModel::Rgb, Alpha::Premultiplied},
                                       1, bytes_of<std::uint16_t>({10000, 20000, 0, 20000})),
              (Words{32768, 65535, 0, 20000}));
}

TEST(PixelFormat, LinearLightIsCodedAsSrgb) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    // 0.2140411 of the light is half of the code.
    EXPECT_EQ(converted<std::uint16_t>({Coding::Float, 96, ColourModel::Rgb}, 2,
                                       bytes_of<float>({0.2140411F, 1, 2, -1, nan, 0})),
              (Words{32767, 65535, 65535, 0, 0, 0}));
    EXPECT_EQ(converted<std::uint16_t>({Coding::Float, 128, ColourModel::Rgb, Alpha::Premultiplied},
                                       1, bytes_of<float>({0.25F, 0, 0.5F, 0.5F}), {},
                                       Curve::OfProfile),
              (Words{32768, 0, 65535, 32768}));
    // 0.5, 1, infinite, the smallest number, and -1.
    EXPECT_EQ(
        converted<std::uint16_t>({Coding::Half, 16, ColourModel::Gray}, 5,
                                 bytes_of<std::uint16_t>({0x3800, 0x3C00, 0x7C00, 0x0001, 0xBC00}),
                                 {}, Curve::OfProfile),
        (Words{32768, 65535, 65535, 0, 0}));
    EXPECT_EQ(converted<std::uint16_t>({Coding::Fixed16, 64, ColourModel::Rgb}, 1,
                                       bytes_of<std::int16_t>({8192, 4096, -8192, 77}), {},
                                       Curve::OfProfile),
              (Words{65535, 32768, 0}));
    EXPECT_EQ(converted<std::uint16_t>({Coding::Fixed32, 32, ColourModel::Gray}, 1,
                                       bytes_of<std::int32_t>({1 << 23}), {}, Curve::OfProfile),
              (Words{32768}));
    EXPECT_EQ(converted<std::uint16_t>({Coding::SharedExponent, 32, ColourModel::Rgb}, 1,
                                       bytes_of<std::uint8_t>({128, 64, 0, 128}), {},
                                       Curve::OfProfile),
              (Words{32768, 16384, 0}));
}

} // namespace
} // namespace vell::pictures
