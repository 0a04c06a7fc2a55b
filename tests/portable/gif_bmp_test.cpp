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
using namespace std::string_literals;

// The rows of a picture as text, a letter for each pixel: "." is transparent, "?" none of the
// colours. Rows that are missing are not there.
struct Letter {
    char name;
    Colour colour;
};
const std::vector<Letter> letters = {
    {'.', {0, 0, 0, 0}}, {'r', {255, 0, 0}}, {'g', {0, 255, 0}}, {'b', {0, 0, 255}}, {'k', {}}};

using Open = Result<std::unique_ptr<PictureRows>> (*)(ByteSource&, std::uint32_t);

// How many rows there are; each is shown to the action, with the layout.
template <typename Action>
Result<std::uint32_t> read_rows(Open open, const std::string& file, std::uint32_t frame,
                                Action action) {
    BytesInMemory bytes(file);
    const auto rows = open(bytes, frame);
    if (!rows)
        return Failure{rows.error()};
    const PictureLayout layout = (*rows)->layout();
    std::vector<std::byte> row(layout.row_size());
    std::uint32_t count = 0;
    for (; count < layout.height && (*rows)->read_row(row); ++count)
        action(layout, row);
    return count;
}

std::string drawn(Open open, const std::string& file, std::uint32_t frame = 0) {
    std::string text;
    const auto rows = read_rows(open, file, frame, [&](const auto& layout, const auto& row) {
        for (std::uint32_t x = 0; x < layout.width; ++x) {
            Colour colour;
            std::memcpy(&colour, row.data() + x * layout.components(), layout.components());
            const auto found = std::ranges::find(letters, colour, &Letter::colour);
            text += found == letters.end() ? '?' : found->name;
        }
        text += '/';
    });
    return rows ? text : std::to_string(number(rows.error()));
}

// A GIF file of four colours: r, g, b and k.
class GifBuilder {
  public:
    GifBuilder(std::uint16_t width, std::uint16_t height)
        : bytes_("GIF89a" + little16(width) + little16(height) + "\x81\0\0"s +
                 "\xFF\0\0\0\xFF\0\0\0\xFF\0\0\0"s) {}

    // Letters are pixels; "." is one that is not drawn.
    GifBuilder& frame(int left, int top, int width, const std::string& pixels, int disposal,
                      bool is_interlaced = false) {
        const int height = static_cast<int>(pixels.size()) / width;
        bytes_ += "\x21\xF9\x04"s + static_cast<char>(disposal << 2 | 1) + "\0\0\x03\0,"s;
        for (const int number : {left, top, width, height})
            bytes_ += little16(static_cast<std::uint16_t>(number));
        bytes_ += static_cast<char>(is_interlaced ? 0x40 : 0) + "\x02"s + data_of(pixels) + '\0';
        return *this;
    }
    std::string file() const { return bytes_ + ';'; }
    std::string cut(std::size_t count) const { return bytes_.substr(0, bytes_.size() - count); }

  private:
    // Codes of three bits, with a clear code before they would grow.
    static std::string data_of(const std::string& pixels) {
        constexpr unsigned clear = 4, end = 5;
        std::vector<unsigned> codes;
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            if (i % 2 == 0)
                codes.push_back(clear);
            codes.push_back(static_cast<unsigned>(std::string("rgb.").find(pixels[i])));
        }
        codes.push_back(end);
        std::string data;
        unsigned bits = 0, count = 0;
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
    constexpr int keep = 1, clear = 2, restore = 3;
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

// Palette or masks stand behind the header, which may say that they belong to it.
std::string bmp(std::int32_t width, std::int32_t height, std::uint16_t bits,
                std::uint32_t compression, const std::string& colours, const std::string& pixels,
                std::uint32_t header = 40) {
    return "BM" + std::string(8, '\0') + little32(static_cast<std::uint32_t>(54 + colours.size())) +
           little32(header) + little32(static_cast<std::uint32_t>(width)) +
           little32(static_cast<std::uint32_t>(height)) + little16(1) + little16(bits) +
           little32(compression) + std::string(20, '\0') + colours + pixels;
}

TEST(BmpPicture, PixelsOfEveryCoding) {
    const std::string palette = "\0\0\xFF\0\0\xFF\0\0"s; // red and green
    const std::string masks = little32(0xF800) + little32(0x7E0) + little32(0x1F);
    const std::string with_alpha =
        little32(0xFF0000) + little32(0xFF00) + little32(0xFF) + little32(0xFF000000);
    const std::string rows_of_bits = "\x40\0\0\0\0\0\0\0"s;
    const std::pair<std::string, const char*> files[] = {
        // From the lowest row up, and from the top down.
        {bmp(2, 2, 1, 0, palette, rows_of_bits), "rr/rg/"},
        {bmp(2, -2, 1, 0, palette, rows_of_bits), "rg/rr/"},
        {"BM" + std::string(8, '\0') + little32(32) + little32(12) + little16(1) + little16(1) +
             little16(1) + little16(8) + "\0\0\xFF\0\xFF\0\x01\0\0\0"s,
         "g/"},
        {bmp(1, 1, 24, 0, "", "\xFF\0\0\0"s), "b/"},
        {bmp(2, 1, 16, 0, "", "\0\x7C\xE0\x03"s), "rg/"},
        {bmp(2, 1, 16, 3, masks, "\0\xF8\xE0\x07"s), "rg/"},
        // Alpha counts where a mask tells of it, and some pixel has it.
        {bmp(1, 1, 32, 0, "", "\xFF\0\0\x01"s), "b/"},
        {bmp(2, 1, 32, 3, with_alpha, "\0\0\0\0\xFF\0\0\xFF"s, 56), ".b/"},
        {bmp(2, 1, 32, 3, with_alpha, "\0\xFF\0\0\xFF\0\0\0"s, 56), "gb/"},
        // Two green pixels, the next line, one to the right and none down, a red one.
        {bmp(2, 2, 8, 1, palette, "\x02\x01\0\0\0\x02\x01\0\x01\0\0\x01"s), ".r/gg/"},
    };
    for (const auto& [file, expected] : files)
        EXPECT_EQ(drawn(decode_bmp, file), expected);
}

TEST(BmpPicture, WhatIsCutOffAndWhatIsTooLarge) {
    const std::string rows = "\0\0\xFF\0\0\xFF\0\0"s; // a red pixel below, a green one above
    const std::pair<std::string, const char*> files[] = {
        {bmp(1, 3, 24, 0, "", rows), "./g/r/"},
        {bmp(1, -3, 24, 0, "", rows), "r/g/"},
        {bmp(1, 3, 24, 0, "", rows.substr(0, 3)), "-4303"},
        {bmp(30000, 30000, 8, 0, "", rows), "-4304"},
        {bmp(30000, 3000, 8, 1, "", rows), "-4304"},
        {bmp(1, 1, 24, 4, "", rows), "-4243"},
        {bmp(1, 1, 24, 0, "", rows).substr(0, 20), "-4303"},
    };
    for (const auto& [file, expected] : files)
        EXPECT_EQ(drawn(decode_bmp, file), expected) << file;
}

// Every file, and what is left of it when it is cut off anywhere, ends with rows or a code.
TEST(Pictures, RealFilesAreReadOrRefused) {
    const auto files = real_files({"picture", "picture-hostile"});
    if (files.empty())
        GTEST_SKIP() << no_real_files;
    std::size_t shown = 0;
    for (const auto& path : files) {
        const bool is_gif = path.extension() == ".gif";
        if (!is_gif && path.extension() != ".bmp")
            continue;
        const std::string file = bytes_of(path);
        const auto rows = [&](std::size_t eighths) {
            return read_rows(is_gif ? decode_gif : decode_bmp,
                             file.substr(0, file.size() * eighths / 8),
                             static_cast<std::uint32_t>(eighths % 8 % 3), [](auto&, auto&) {});
        };
        const auto whole = rows(8);
        shown += whole && *whole > 0;
        for (std::size_t eighths = 1; eighths < 8; ++eighths)
            static_cast<void>(rows(eighths));
    }
    EXPECT_GT(shown, 90u);
}

} // namespace
} // namespace vell::test
