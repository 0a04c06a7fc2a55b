// Icons: the body of the function, the pictures of icon files, their fitting into a square.
#include "src/pictures/decoding/icon_file.h"
#include "src/pictures/get_icon.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/icon_builder.h"

#include <gtest/gtest.h>

namespace vell::test {
namespace {

using namespace pictures;

class SystemWithIcons : public FakeSystem {
  public:
    Result<Picture> icon(const NativePath& path, IconOf what, std::uint32_t size) override {
        if (what == IconOf::Item && path.wide != u"C:\\d\\letter.txt")
            return Failure{ErrorCode::NotFound};
        return Picture{size, size, true, std::vector<std::uint8_t>(std::size_t{size} * size * 4)};
    }
};

TEST(GetIcon, GivesAPngOfTheSizeUnderTheRightName) {
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char*> calls[] = {
        {u"", u"C:\\d\\letter.txt", u"", "PNGf letter.png 32x32"},
        {u"-MaxSize=16", u"C:/d/letter.txt", u"small", "PNGf small.png 16x16"},
        {u"-maxsize=256", u"filewin:/C:/d/letter.txt", u"a.b", "PNGf a.b 256x256"},
        {u"-ByExtension", u"none.pdf", u"", "PNGf none.png 32x32"},
        {u"", u"C:\\none.pdf", u"", "$$-43"},
        {u"", u"", u"", "$$-50"},
        {u"-MaxSize=15", u"C:\\d\\letter.txt", u"", "$$-4241"},
        {u"-MaxSize=257", u"C:\\d\\letter.txt", u"", "$$-4241"},
    };
    for (const auto& [switches, path, name, result] : calls) {
        SystemWithIcons system;
        const auto ask = [&](params::Call& call) {
            return get_icon(call, system);
        };
        EXPECT_EQ(answer_of({switches, path, name}, ask), result);
    }
}

// Bitmaps of 2 x 2 pixels, from the lowest row on, and what they look like.
TEST(IconFile, PixelsComeFromAlphaOrFromTheMask) {
    using Pixels = std::vector<std::uint8_t>;
    const std::string mask = icon_mask({0x80, 0x00}); // the lower left pixel is transparent
    const std::string colours("\x01\x02\x03\x80\x04\x05\x06\xFF\x07\x08\x09\xFF\x0A\x0B\x0C\x40",
                              16);
    std::string without_alpha = colours;
    for (std::size_t i = 3; i < 16; i += 4)
        without_alpha[i] = '\0';
    const std::string palette("\0\0\0\0\xFF\xFE\xFD\0", 8);
    const std::pair<std::string, Pixels> icons[] = {
        {icon_bitmap(2, 2, 32, {}, colours + mask),
         {9, 8, 7, 255, 12, 11, 10, 64, 3, 2, 1, 128, 6, 5, 4, 255}},
        {icon_bitmap(2, 2, 32, {}, without_alpha + mask),
         {9, 8, 7, 255, 12, 11, 10, 255, 0, 0, 0, 0, 6, 5, 4, 255}},
        {icon_bitmap(2, 2, 1, palette, std::string("\x40\0\0\0\x80\0\0\0", 8) + mask),
         {253, 254, 255, 255, 0, 0, 0, 255, 0, 0, 0, 0, 253, 254, 255, 255}},
        // Without its mask.
        {icon_bitmap(2, 2, 1, palette, std::string("\x40\0\0\0\x80\0\0\0", 8)),
         {253, 254, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255, 253, 254, 255, 255}},
    };
    for (const auto& [bitmap, pixels] : icons) {
        const std::string file = icon_file({bitmap});
        BytesInMemory bytes(file);
        const auto images = read_icon_directory(bytes);
        ASSERT_TRUE(images);
        ASSERT_EQ(images->size(), 1u);
        const auto picture = read_icon_bitmap(bytes, images->front());
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->pixels, pixels) << images->front().depth;
    }
    const std::string cut = icon_file({icon_bitmap(2, 2, 32, {}, colours.substr(0, 9))});
    BytesInMemory bytes(cut);
    EXPECT_EQ(read_icon_bitmap(bytes, read_icon_directory(bytes)->front()).error(),
              ErrorCode::PictureDamaged);
}

TEST(IconFile, TheBestPictureIsTheSmallestThatIsLargeEnough) {
    const auto image = [](std::uint32_t size, std::uint32_t depth) {
        return IconImage{.width = size, .height = size, .depth = depth};
    };
    const std::vector<IconImage> images = {image(32, 4), image(16, 8), image(32, 32), image(48, 8),
                                           image(256, 32)};
    const std::pair<std::uint32_t, std::vector<std::uint32_t>> orders[] = {
        {0, {256, 48, 32, 32, 16}},
        {16, {16, 32, 32, 48, 256}},
        {33, {48, 256, 32, 32, 16}},
        {300, {256, 48, 32, 32, 16}},
    };
    for (const auto& [wanted, expected] : orders) {
        const auto sorted = by_fitness(images, wanted);
        std::vector<std::uint32_t> sizes;
        for (const IconImage& each : sorted)
            sizes.push_back(each.width);
        EXPECT_EQ(sizes, expected) << wanted;
        const auto first = std::ranges::find(sorted, 32u, &IconImage::width);
        EXPECT_EQ(first->depth, 32u); // before the shallower one of its size
    }
}

TEST(IconFile, PicturesAreFittedIntoTheMiddleOfASquare) {
    const Picture wide{4, 2, false, std::vector<std::uint8_t>(4 * 2 * 3, 200)};
    const Picture fitted = fitted_to_square(wide, 4);
    ASSERT_EQ(fitted.pixels.size(), 4u * 4 * 4);
    for (std::size_t y = 0; y < 4; ++y)
        for (std::size_t x = 0; x < 4; ++x) {
            const bool is_inside = y == 1 || y == 2;
            EXPECT_EQ(fitted.pixels[(y * 4 + x) * 4 + 3], is_inside ? 255 : 0);
            EXPECT_EQ(fitted.pixels[(y * 4 + x) * 4], is_inside ? 200 : 0);
        }
    // What is transparent lends no colour: half of the pixels are red, the others hidden green.
    Picture mixed{2, 1, true, {255, 0, 0, 255, 0, 255, 0, 0}};
    const Picture reduced = fitted_to_square(mixed, 1);
    EXPECT_EQ(reduced.pixels, (std::vector<std::uint8_t>{255, 0, 0, 128}));
}

} // namespace
} // namespace vell::test
