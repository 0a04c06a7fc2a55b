// GIF frames on their screen, and BMP files, pixel by pixel.
#include "src/pictures/decoding/bmp_picture.h"
#include "src/pictures/decoding/gif_picture.h"
#include "src/pictures/decoding/pixel_format.h"
#include "tests/portable/icon_builder.h"
#include "tests/portable/real_files.h"

#include <gtest/gtest.h>

#include <cstring>

namespace vell::test {
namespace {

using namespace pictures;

// The rows of a picture as text, a letter for each pixel: "." is transparent, "?" none of the
// colours. Rows that are missing are not there.
struct Letter {
    char name;
    Colour colour;
};
const std::vector<Letter> letters = {
    {'.', {0, 0, 0, 0}}, {'r', {255, 0, 0}}, {'g', {0, 255, 0}}, {'b', {0, 0, 255}}, {'k', {}}};

using Open = Result<std::unique_ptr<PictureRows>> (*)(ByteSource&, std::uint32_t);

std::string drawn(Open open, const std::string& file, std::uint32_t frame = 0) {
    BytesInMemory bytes(file);
    const auto rows = open(bytes, frame);
    if (!rows)
        return std::to_string(number(rows.error()));
    const PictureLayout layout = (*rows)->layout();
    std::vector<std::byte> row(layout.row_size());
    std::string text;
    for (std::uint32_t y = 0; y < layout.height && (*rows)->read_row(row); ++y) {
        for (std::uint32_t x = 0; x < layout.width; ++x) {
            Colour colour;
            std::memcpy(&colour, row.data() + x * layout.components(), layout.components());
            const auto found = std::ranges::find(letters, colour, &Letter::colour);
            text += found == letters.end() ? '?' : found->name;
        }
        text += '/';
    }
    return text;
}

// A GIF file of four colours: r, g, b and k.
class GifBuilder {
  public:
    GifBuilder(std::uint16_t width, std::uint16_t height)
        : bytes_("GIF89a" + little16(width) + little16(height) + std::string("\x81\0\0", 3) +
                 std::string("\xFF\0\0\0\xFF\0\0\0\xFF\0\0\0", 12)) {}

    // Letters are pixels; "." is one that is not drawn.
    GifBuilder& frame(int left, int top, int width, const std::string& pixels, int disposal,
                      bool is_interlaced = false) {
        bytes_ += std::string("\x21\xF9\x04", 3) + static_cast<char>(disposal << 2 | 1) +
                  std::string("\0\0\x03\0", 4);
        bytes_ += ',' + little16(static_cast<std::uint16_t>(left)) +
                  little16(static_cast<std::uint16_t>(top)) +
                  little16(static_cast<std::uint16_t>(width)) +
                  little16(static_cast<std::uint16_t>(pixels.size() / width));
        bytes_ += static_cast<char>(is_interlaced ? 0x40 : 0);
        bytes_ += '\x02' + data_of(pixels) + std::string(1, '\0');
        return *this;
    }
    std::string file() const { return bytes_ + ';'; }
    std::string cut(std::size_t count) const { return bytes_.substr(0, bytes_.size() - count); }

  private:
    // Codes of three bits, with a clear code before they would grow.
    static std::string data_of(const std::string& pixels) {
        constexpr unsigned clear = 4;
        constexpr unsigned end = 5;
        std::vector<unsigned> codes;
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            if (i % 2 == 0)
                codes.push_back(clear);
            codes.push_back(static_cast<unsigned>(std::string("rgb.").find(pixels[i])));
        }
        codes.push_back(end);
        std::string data;
        unsigned bits = 0;
        unsigned count = 0;
        for (const unsigned code : codes) {
            bits |= code << count;
            for (count += 3; count >= 8; count -= 8, bits >>= 8)
                data += static_cast<char>(bits & 0xFF);
        }
        data += static_cast<char>(bits);
        return static_cast<char>(data.size()) + data;
    }

    std::string bytes_;
};

TEST(GifPicture, FramesAreDisposedOfAsTheySay) {
    constexpr int keep = 1;
    constexpr int clear = 2;
    constexpr int restore = 3;
    const std::string file = GifBuilder(3, 2)
                                 .frame(0, 0, 3, "rrrrrr", keep)
                                 .frame(1, 0, 2, "g.gg", restore)
                                 .frame(2, 1, 1, "b", clear)
                                 .frame(0, 0, 1, "g", 0)
                                 .frame(2, 1, 4, "bbbbbbbb", keep) // beyond the screen
                                 .file();
    const char* const frames[] = {"rrr/rrr/", "rgr/rgg/", "rrr/rrb/", "grr/rr./", "grr/rrb/"};
    for (std::uint32_t i = 0; i < std::size(frames); ++i)
        EXPECT_EQ(drawn(decode_gif, file, i), frames[i]) << i;
    EXPECT_EQ(drawn(decode_gif, file, 5), "-50");
    EXPECT_EQ(drawn(decode_gif, "GIF89a\x01", 0), "-4303");
    EXPECT_EQ(drawn(decode_gif, "PNG", 0), "-4243");
}

TEST(GifPicture, ScreensAndOrders) {
    // A patch leaves the screen transparent; a first frame larger than it takes its place.
    EXPECT_EQ(drawn(decode_gif, GifBuilder(3, 2).frame(1, 1, 1, "g", 0).file()), ".../.g./");
    EXPECT_EQ(drawn(decode_gif, GifBuilder(1, 1).frame(1, 0, 2, "rg", 0).file()), "rg/");
    EXPECT_EQ(drawn(decode_gif, GifBuilder(2, 1).frame(1, 0, 2, "rg", 0).file()), ".r/");
    const std::string lines = "rgbrg"; // in the order of the file: 0, 4, 2, 1, 3
    EXPECT_EQ(drawn(decode_gif, GifBuilder(1, 5).frame(0, 0, 1, lines, 0, true).file()),
              "r/r/b/g/g/");
    EXPECT_EQ(drawn(decode_gif, GifBuilder(60000, 60000).frame(0, 0, 1, "r", 0).file()), "-4304");
}

TEST(GifPicture, RowsThatAreThereAreGiven) {
    GifBuilder builder(2, 8);
    builder.frame(0, 0, 2, "rgbrgbrgbrgbrgbr", 1);
    const std::string whole = drawn(decode_gif, builder.file());
    ASSERT_EQ(whole.size(), 24u);
    std::size_t last = whole.size();
    for (std::size_t cut = 1; cut < 12; ++cut) {
        const std::string part = drawn(decode_gif, builder.cut(cut));
        if (part == "-4303")
            break;
        EXPECT_EQ(part, whole.substr(0, part.size()));
        EXPECT_LE(part.size(), last);
        last = part.size();
    }
    EXPECT_LT(last, whole.size());
    EXPECT_EQ(drawn(decode_gif, builder.cut(8)).size() % 3, 0u);
}

std::string bmp(const std::string& header_rest, std::uint32_t data, const std::string& behind) {
    return "BM" + std::string(8, '\0') + little32(data) + header_rest + behind;
}
std::string info_header(std::uint32_t size, std::int32_t width, std::int32_t height,
                        std::uint16_t bits, std::uint32_t compression) {
    return little32(size) + little32(static_cast<std::uint32_t>(width)) +
           little32(static_cast<std::uint32_t>(height)) + little16(1) + little16(bits) +
           little32(compression) + std::string(20, '\0');
}

TEST(BmpPicture, PixelsOfEveryCoding) {
    const std::string red_and_green("\0\0\xFF\0\0\xFF\0\0", 8);
    const std::string rgb_masks = little32(0xF800) + little32(0x7E0) + little32(0x1F);
    const std::string with_alpha =
        little32(0xFF0000) + little32(0xFF00) + little32(0xFF) + little32(0xFF000000);
    const std::string rle("\x02\x01\0\0\0\x02\x01\0\x01\0\0\x01", 12);
    const struct {
        std::string file;
        const char* drawn;
    } files[] = {
        // From the lowest row up, and from the top down.
        {bmp(info_header(40, 2, 2, 1, 0), 62, red_and_green + std::string("\x40\0\0\0\0\0\0\0", 8)),
         "rr/rg/"},
        {bmp(info_header(40, 2, -2, 1, 0), 62,
             red_and_green + std::string("\x40\0\0\0\0\0\0\0", 8)),
         "rg/rr/"},
        {bmp(little32(12) + little16(1) + little16(1) + little16(1) + little16(8), 32,
             std::string("\0\0\xFF\0\xFF\0\x01\0\0\0", 10)),
         "g/"},
        {bmp(info_header(40, 1, 1, 24, 0), 54, std::string("\xFF\0\0\0", 4)), "b/"},
        {bmp(info_header(40, 2, 1, 16, 0), 54, std::string("\0\x7C\xE0\x03", 4)), "rg/"},
        {bmp(info_header(40, 2, 1, 16, 3), 66, rgb_masks + std::string("\0\xF8\xE0\x07", 4)),
         "rg/"},
        // Alpha counts where a mask tells of it, and some pixel has it.
        {bmp(info_header(40, 1, 1, 32, 0), 54, std::string("\xFF\0\0\x01", 4)), "b/"},
        {bmp(info_header(56, 2, 1, 32, 3), 70, with_alpha + std::string("\0\0\0\0\xFF\0\0\xFF", 8)),
         ".b/"},
        {bmp(info_header(56, 2, 1, 32, 3), 70, with_alpha + std::string("\0\xFF\0\0\xFF\0\0\0", 8)),
         "gb/"},
        // Two green pixels, the next line, one to the right and none down, a red one.
        {bmp(info_header(40, 2, 2, 8, 1), 62, red_and_green + rle), ".r/gg/"},
    };
    for (std::size_t i = 0; i < std::size(files); ++i)
        EXPECT_EQ(drawn(decode_bmp, files[i].file), files[i].drawn) << i;
}

TEST(BmpPicture, WhatIsCutOffAndWhatIsTooLarge) {
    const std::string rows("\0\0\xFF\0\0\xFF\0\0", 8); // a red pixel below, a green one above
    EXPECT_EQ(drawn(decode_bmp, bmp(info_header(40, 1, 3, 24, 0), 54, rows)), "./g/r/");
    EXPECT_EQ(drawn(decode_bmp, bmp(info_header(40, 1, -3, 24, 0), 54, rows)), "r/g/");
    EXPECT_EQ(drawn(decode_bmp, bmp(info_header(40, 1, 3, 24, 0), 54, rows.substr(0, 3))), "-4303");
    EXPECT_EQ(drawn(decode_bmp, bmp(info_header(40, 30000, 30000, 8, 0), 54, rows)), "-4304");
    EXPECT_EQ(drawn(decode_bmp, bmp(info_header(40, 30000, 3000, 8, 1), 54, rows)), "-4304");
    EXPECT_EQ(drawn(decode_bmp, bmp(info_header(40, 1, 1, 24, 4), 54, rows)), "-4243");
    EXPECT_EQ(drawn(decode_bmp, bmp(info_header(40, 1, 1, 24, 0), 54, rows).substr(0, 20)),
              "-4303");
}

std::uint32_t rows_of(Open open, const std::string& file, std::uint32_t frame) {
    BytesInMemory bytes(file);
    const auto rows = open(bytes, frame);
    if (!rows)
        return 0;
    std::vector<std::byte> row((*rows)->layout().row_size());
    std::uint32_t count = 0;
    while (count < (*rows)->layout().height && (*rows)->read_row(row))
        ++count;
    return count;
}

// Every file, and what is left of it when it is cut off anywhere, ends with rows or a code.
TEST(Pictures, RealFilesAreReadOrRefused) {
    const auto files = real_files({"picture", "picture-hostile"});
    if (files.empty())
        GTEST_SKIP() << no_real_files;
    std::size_t shown = 0;
    for (const auto& path : files) {
        const std::string extension = path.extension().string();
        const Open open = extension == ".gif" ? decode_gif : decode_bmp;
        if (extension != ".gif" && extension != ".bmp")
            continue;
        const std::string file = bytes_of(path);
        shown += rows_of(open, file, 0) > 0;
        for (std::size_t part = 1; part < 8; ++part)
            rows_of(open, file.substr(0, file.size() * part / 8),
                    static_cast<std::uint32_t>(part % 3));
    }
    EXPECT_GT(shown, 90u);
}

} // namespace
} // namespace vell::test
