// Thumbnails: how pictures are scaled, turned and converted, and what VlFile_CreateThumbnail gives.
#include "src/pictures/thumbnail.h"

#include "src/metadata/get_metadata.h"
#include "src/pictures/create_thumbnail.h"
#include "src/pictures/decoding/decoding.h"
#include "src/pictures/encoders.h"
#include "src/pictures/scaler.h"
#include "tests/portable/answer_of.h"
#include "tests/portable/jpeg_builder.h"
#include "tests/portable/real_files.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

namespace vell::pictures {
namespace {

using test::answer_of;
using test::FakeCall;
using test::jpeg_file;
using test::JpegKind;

// A system that has no decoder for anything.
class FakeSystem : public test::FakeSystem {
  public:
    Result<std::unique_ptr<PictureRows>> decode(ByteSource&, std::uint32_t) override {
        return Failure{ErrorCode::NotSupported};
    }
};

// What a pixel of the scaled picture is, component by component, worked out one by one: the mean
// over the part that it covers, or the value between the four centres around its own.
std::vector<double> expected_pixel(const PictureLayout& layout, const std::vector<double>& source,
                                   const Area& area, Size target, std::uint32_t x,
                                   std::uint32_t y) {
    std::vector<double> sums(layout.components());
    double weights = 0;
    const auto weight_of = [](std::uint32_t place, std::uint32_t from, std::uint32_t count,
                              std::uint32_t parts) {
        if (parts <= count) {
            const double start = double{1} * place * count / parts;
            const double end = double{1} * (place + 1) * count / parts;
            return std::max(0.0, std::min(end, from + 1.0) - std::max<double>(start, from));
        }
        const double centre = std::clamp((place + 0.5) * count / parts - 0.5, 0.0, count - 1.0);
        return std::max(0.0, 1 - std::abs(centre - from));
    };
    for (std::uint32_t v = 0; v < area.size.height; ++v)
        for (std::uint32_t u = 0; u < area.size.width; ++u) {
            const double weight = weight_of(x, u, area.size.width, target.width) *
                                  weight_of(y, v, area.size.height, target.height);
            const double* pixel =
                source.data() +
                ((v + area.top) * std::size_t{layout.width} + u + area.left) * layout.components();
            const double alpha = layout.has_alpha ? pixel[layout.colours()] : 1;
            for (std::uint32_t c = 0; c < layout.colours(); ++c)
                sums[c] += weight * alpha * pixel[c];
            if (layout.has_alpha)
                sums[layout.colours()] += weight * alpha;
            weights += weight;
        }
    const double alpha = layout.has_alpha ? sums[layout.colours()] : weights;
    for (std::uint32_t c = 0; c < layout.colours(); ++c)
        sums[c] = alpha > 0 ? sums[c] / alpha : 0;
    if (layout.has_alpha)
        sums[layout.colours()] = alpha / weights;
    return sums;
}

TEST(Scaler, GivesTheMeanOfWhatEachPixelCovers) {
    std::mt19937 random(1);
    const auto below = [&](std::uint32_t limit) {
        return static_cast<std::uint32_t>(random() % limit);
    };
    for (int round = 0; round < 300; ++round) {
        const bool enlarges = below(3) == 0;
        const PictureLayout layout{1 + below(enlarges ? 6 : 40), 1 + below(enlarges ? 6 : 40),
                                   static_cast<ColourModel>(below(3)), below(2) == 0,
                                   static_cast<std::uint8_t>(1 + below(2))};
        Area area{below(layout.width), below(layout.height), {}};
        area.size = {1 + below(layout.width - area.left), 1 + below(layout.height - area.top)};
        const Size target = enlarges
                                ? Size{area.size.width + below(9), area.size.height + below(9)}
                                : Size{1 + below(area.size.width), 1 + below(area.size.height)};
        const double largest = layout.component_size == 1 ? 255 : 65535;
        std::vector<double> values(std::size_t{layout.width} * layout.height * layout.components());
        std::vector<std::byte> bytes(layout.row_size() * layout.height);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto value = static_cast<std::uint16_t>(
                below(4) == 0 ? 0 : below(static_cast<std::uint32_t>(largest) + 1));
            values[i] = value / largest;
            std::memcpy(bytes.data() + i * layout.component_size, &value, layout.component_size);
        }
        std::uint32_t y = 0;
        double worst = 0;
        const auto scaler =
            make_scaler(layout, area, target, [&](std::span<const std::uint16_t> row) {
                for (std::uint32_t x = 0; x < target.width; ++x) {
                    const auto pixel = expected_pixel(layout, values, area, target, x, y);
                    for (std::size_t c = 0; c < pixel.size(); ++c)
                        worst =
                            std::max(worst, std::abs(row[x * pixel.size() + c] - pixel[c] * 65535));
                }
                ++y;
            });
        for (std::uint32_t row = 0; row < layout.height; ++row)
            scaler->take(std::span(bytes).subspan(row * layout.row_size(), layout.row_size()));
        ASSERT_EQ(y, target.height) << round;
        ASSERT_LE(worst, 2) << round;
    }
}

TEST(Thumbnail, IsTurnedAsTagsSay) {
    // A and B above C and D above E and F, as each orientation shows them.
    const std::pair<Orientation, const char*> shown[] = {
        {Orientation::TopLeft, "ABCDEF"},     {Orientation::TopRight, "BADCFE"},
        {Orientation::BottomRight, "FEDCBA"}, {Orientation::BottomLeft, "EFCDAB"},
        {Orientation::LeftTop, "ACEBDF"},     {Orientation::RightTop, "ECAFDB"},
        {Orientation::RightBottom, "FDBECA"}, {Orientation::LeftBottom, "BDFACE"}};
    Picture stored{2, 3};
    for (const char letter : std::string_view("ABCDEF"))
        stored.pixels.insert(stored.pixels.end(), 3, static_cast<std::uint8_t>(letter));
    for (const auto& [orientation, letters] : shown) {
        const Picture picture = turned(stored, orientation);
        EXPECT_EQ(picture.width, turns_sideways(orientation) ? 3U : 2U);
        for (std::size_t i = 0; i < 6; ++i)
            EXPECT_EQ(picture.pixels[i * 3 + 2], letters[i]) << letters;
    }
}

// A PNG file of any kind, by the library itself.
struct PngKind {
    std::uint32_t width;
    std::uint32_t height;
    int depth;
    int colour_type;
    int interlace = PNG_INTERLACE_NONE;
    double gamma = 0;
};
std::string png_file(const PngKind& kind, const std::vector<std::uint8_t>& bytes) {
    std::string file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp p, png_bytep data, std::size_t size) {
            static_cast<std::string*>(png_get_io_ptr(p))
                ->append(reinterpret_cast<char*>(data), size);
        },
        nullptr);
    png_set_IHDR(png, info, kind.width, kind.height, kind.depth, kind.colour_type, kind.interlace,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (kind.gamma > 0)
        png_set_gAMA(png, info, kind.gamma);
    png_set_compression_level(png, 1);
    png_write_info(png, info);
    const int passes = png_set_interlace_handling(png);
    const std::size_t row_size = png_get_rowbytes(png, info);
    for (int pass = 0; pass < passes; ++pass)
        for (std::uint32_t y = 0; y < kind.height; ++y)
            png_write_row(png, bytes.data() + y * row_size);
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

Picture decoded(const std::string& file, const ThumbnailShape& shape = {4096}) {
    BytesInMemory bytes(file);
    const DecodingRequest request{shape};
    const auto rows =
        file.starts_with("\x89PNG") ? open_png(bytes, request) : open_jpeg(bytes, request);
    EXPECT_TRUE(rows);
    return make_thumbnail(**rows, shape).value();
}

// A photograph-like picture: smooth, with an edge.
Picture sample(std::uint32_t width, std::uint32_t height, bool has_alpha = false) {
    Picture picture{width, height, has_alpha};
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto shade = static_cast<std::uint8_t>(x * 200 / width);
            picture.pixels.insert(picture.pixels.end(),
                                  {shade, static_cast<std::uint8_t>(y * 200 / height),
                                   static_cast<std::uint8_t>(x * 2 > width ? 220 : 30)});
            if (has_alpha)
                picture.pixels.push_back(static_cast<std::uint8_t>(y * 255 / height));
        }
    return picture;
}

// How many components of both differ by more than that.
std::size_t differences(const Picture& one, const Picture& other, int tolerance) {
    EXPECT_EQ(one.pixels.size(), other.pixels.size());
    std::size_t count = 0;
    for (std::size_t i = 0; i < std::min(one.pixels.size(), other.pixels.size()); ++i)
        count += std::abs(one.pixels[i] - other.pixels[i]) > tolerance;
    return count;
}

TEST(Decoders, GiveInterlacedAndScaledPicturesLikeWholeOnes) {
    // Too large to be kept: summed up in blocks.
    constexpr std::uint32_t width = 1503;
    constexpr std::uint32_t height = 1101;
    const Picture picture = sample(width, height, true);
    PngKind kind{width, height, 8, PNG_COLOR_TYPE_RGB_ALPHA};
    const ThumbnailShape shape{100};
    const Picture whole = decoded(png_file(kind, picture.pixels), shape);
    kind.interlace = PNG_INTERLACE_ADAM7;
    const std::string interlaced = png_file(kind, picture.pixels);
    const Picture blocks = decoded(interlaced, shape);
    // At the edge, where blocks end elsewhere.
    EXPECT_LT(differences(whole, blocks, 4), whole.pixels.size() / 50);
    BytesInMemory bytes(interlaced);
    EXPECT_EQ(open_png(bytes, {ThumbnailShape{1200}}).error(), ErrorCode::PictureTooLarge);

    const Picture opaque = sample(width, height);
    const std::string jpeg = encode_jpeg(opaque, 95);
    const Picture scaled = decoded(jpeg, shape);
    const Picture exact = make_thumbnail(opaque, shape).value();
    EXPECT_LT(differences(exact, scaled, 6), exact.pixels.size() / 50);
}

// From no grain at the top to blocks that are full of coefficients.
std::string grainy_jpeg(const JpegKind& kind) {
    std::mt19937 random(3);
    return jpeg_file(kind, [&](JDIMENSION y, std::span<unsigned char> row) {
        const std::size_t grain = 1 + y / 3;
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = static_cast<unsigned char>(i * 100 / row.size() + random() % grain);
    });
}

// Gives a few bytes at once: so few that the library reads each symbol by itself.
class FewBytes final : public ByteSource {
  public:
    explicit FewBytes(std::string_view bytes) : bytes_(bytes) {}
    std::uint64_t size() const override { return bytes_.size(); }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        return bytes_.read_at(position, bytes.first(std::min<std::size_t>(bytes.size(), 99)));
    }

  private:
    BytesInMemory bytes_;
};

// At an eighth, a quarter, a half and the whole of the size: several symbols at once or each by
// itself, in one scan or in many, whole or cut off, with bytes that damage changed.
TEST(Decoders, GiveTheSamePixelsHoweverJpegFilesAreRead) {
    constexpr JDIMENSION width = 650;
    constexpr JDIMENSION height = 443;
    const JpegKind kinds[] = {
        {width, height, JCS_RGB, 2, 2, 75},          {width, height, JCS_RGB, 2, 1, 92, 5},
        {width, height, JCS_RGB, 1, 1, 98},          {width, height, JCS_RGB, 1, 1, 100, 1},
        {width, height, JCS_RGB, 1, 2, 30},          {width, height, JCS_GRAYSCALE, 1, 1, 90},
        {width, height, JCS_GRAYSCALE, 1, 1, 95, 7}, {width, height, JCS_CMYK, 1, 1, 85},
    };
    std::mt19937 random(4);
    for (JpegKind kind : kinds) {
        const std::string file = grainy_jpeg(kind);
        kind.is_progressive = true;
        const std::string progressive = grainy_jpeg(kind);
        std::string damaged = file;
        for (std::size_t place = 2000; place < damaged.size(); place += 3001)
            damaged[place] = static_cast<char>(random());
        for (const std::uint32_t side : {30U, 80U, 160U, 640U}) {
            const auto shown = [&](ByteSource&& bytes) {
                const DecodingRequest request{ThumbnailShape{side}};
                return make_thumbnail(*open_jpeg(bytes, request).value(), request.shape).value();
            };
            const Picture whole = shown(BytesInMemory(file));
            EXPECT_EQ(whole.pixels, shown(FewBytes(file)).pixels) << side;
            EXPECT_EQ(whole.pixels, shown(BytesInMemory(progressive)).pixels) << side;
            const std::string_view cut = std::string_view(file).substr(0, file.size() / 2);
            for (const std::string_view part : {std::string_view(damaged), cut})
                EXPECT_EQ(shown(BytesInMemory(part)).pixels, shown(FewBytes(part)).pixels) << side;
        }
    }
}

TEST(Decoders, GiveTheColoursThatFilesMean) {
    // Light of half the strength, stored in linear numbers of 16 bits.
    const std::string linear =
        png_file({1, 1, 16, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, 1.0}, {0x80, 0x00});
    EXPECT_NEAR(decoded(linear).pixels[1], 188, 1);
    const std::string usual =
        png_file({1, 1, 16, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, 0.45455}, {0x80, 0x00});
    EXPECT_NEAR(decoded(usual).pixels[1], 128, 1);
    // A few bits become the whole range; rows of several pixels in a byte.
    const Picture two_bits = decoded(png_file({4, 1, 2, PNG_COLOR_TYPE_GRAY}, {0b00'01'10'11}));
    for (const std::size_t x : {0U, 1U, 2U, 3U})
        EXPECT_EQ(two_bits.pixels[x * 3], x * 85);
}

// The container that a call on a file gives, and its picture.
std::string thumbnail_of_file(const std::u16string& switches, const std::string& file,
                              Picture* picture = nullptr, const std::u16string& name = {}) {
    FakeSystem system;
    system.add(u"C:\\holiday.photo.png", file);
    FakeCall call({switches, u"C:\\holiday.photo.png", name});
    const std::string answer = answer_of(call, create_thumbnail(call, system));
    if (picture && !call.container_bytes().empty())
        *picture = decoded(call.container_bytes());
    return answer;
}

TEST(CreateThumbnail, FollowsTheSwitches) {
    const std::string wide = encode_png(sample(400, 200));
    const std::string small = encode_png(sample(20, 10));
    const std::string clear = encode_png(sample(200, 200, true));
    const std::tuple<const char16_t*, std::string, const char*> cases[] = {
        {u"", wide, "JPEG holiday.photo.jpg 80x40"},
        {u"-MaxSize=33", wide, "JPEG holiday.photo.jpg 33x17"},
        {u"-maxsize=4096", wide, "JPEG holiday.photo.jpg 400x200"},
        {u"-MaxSize=500 -AllowUpscaling", wide, "JPEG holiday.photo.jpg 500x250"},
        {u"-SquareCrop -AsPNG", wide, "PNGf holiday.photo.png 80x80"},
        {u"-SquareCrop", small, "JPEG holiday.photo.jpg 80x80"},
        {u"", small, "JPEG holiday.photo.jpg 20x10"},
        {u"", clear, "PNGf holiday.photo.png 80x80"},
        {u"-AsJPEG", clear, "JPEG holiday.photo.jpg 80x80"},
        {u"-MaxSize=0", wide, "$$-4241"},
        {u"-MaxSize=4097", wide, "$$-4241"},
        {u"-MaxSize=x", wide, "$$-4241"},
        {u"-Quality=101", wide, "$$-4241"},
        {u"-Page=0", wide, "$$-4241"},
        {u"-Page=2", wide, "$$-50"},
        {u"-Background=red", wide, "$$-50"},
        {u"", "no picture", "$$-4302"},
        {u"", wide.substr(0, 40), "$$-4303"},
        {u"", "", "$$-4302"},
    };
    for (const auto& [switches, file, expected] : cases)
        EXPECT_EQ(thumbnail_of_file(switches, file), expected) << utf8_from_utf16(switches);
    EXPECT_EQ(thumbnail_of_file(u"", wide, nullptr, u"small"), "JPEG small.jpg 80x40");
    EXPECT_EQ(thumbnail_of_file(u"", wide, nullptr, u"a.JPE"), "JPEG a.JPE 80x40");
    FakeCall missing({u"", u"C:\\none"});
    FakeSystem system;
    EXPECT_EQ(answer_of(missing, create_thumbnail(missing, system)), "$$-43");
    FakeCall step({u"", u"C:\\a", u"", u"40"});
    system.add(u"C:\\a", wide);
    for (const auto& [index, value] : {std::pair(3, 40), {4, 1}, {5, 1}})
        step.set_step_option(static_cast<std::size_t>(index), value);
    EXPECT_EQ(answer_of(step, create_thumbnail(step, system)), "PNGf a.png 40x40");
}

TEST(CreateThumbnail, LaysTransparencyOnTheBackground) {
    const std::string clear = encode_png({1, 1, true, {10, 20, 30, 0}});
    Picture picture;
    thumbnail_of_file(u"-AsJPEG", clear, &picture);
    EXPECT_EQ(picture.pixels, (std::vector<std::uint8_t>{255, 255, 255}));
    thumbnail_of_file(u"-AsJPEG -Background=#4080C0", clear, &picture);
    EXPECT_NEAR(picture.pixels[0], 0x40, 3);
    EXPECT_NEAR(picture.pixels[2], 0xC0, 3);
    thumbnail_of_file(u"", clear, &picture);
    EXPECT_TRUE(picture.has_alpha);
    EXPECT_EQ(picture.pixels[3], 0);
}

TEST(CreateThumbnail, ReadsContainers) {
    FakeSystem system;
    FakeCall call({u"-AsPNG", u""});
    call.set_container_parameter(1, encode_jpeg(sample(160, 40), 90));
    EXPECT_EQ(answer_of(call, create_thumbnail(call, system)), "PNGf field.png 80x20");

    FakeCall question({u"-GetImageDescription", u""});
    question.set_container_parameter(1, encode_png(sample(160, 40)));
    const std::string description = answer_of(question, metadata::get_metadata(question, system));
    EXPECT_NE(description.find("160"), std::string::npos) << description;
}

// What is there of a file that is cut off is shown; nothing else happens.
TEST(CreateThumbnail, EndsOnFilesThatAreCutOffOrChanged) {
    std::mt19937 random(2);
    const Picture picture = sample(64, 48, true);
    Picture opaque = picture;
    flatten(opaque, {});
    const PngKind interlaced{64, 48, 8, PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_ADAM7};
    for (const std::string& file :
         {encode_png(picture), png_file(interlaced, picture.pixels), encode_jpeg(opaque, 80)}) {
        for (std::size_t size = 0; size < file.size(); size += 7)
            thumbnail_of_file(u"", file.substr(0, size));
        for (int round = 0; round < 200; ++round) {
            std::string changed = file;
            for (int i = 0; i < 3; ++i)
                changed[random() % changed.size()] = static_cast<char>(random());
            thumbnail_of_file(u"-SquareCrop", changed);
        }
    }
    // Most of a picture is there.
    const Picture larger = sample(640, 480);
    for (const std::string& file : {encode_png(larger), encode_jpeg(larger, 80)}) {
        Picture shown;
        const std::string cut = file.substr(0, file.size() * 3 / 4);
        EXPECT_TRUE(thumbnail_of_file(u"-MaxSize=64", cut, &shown).ends_with("64x48"));
        const Picture whole = make_thumbnail(larger, {64}).value();
        std::size_t same = 0;
        for (std::size_t i = 0; i < whole.pixels.size() / 2; ++i)
            same += std::abs(whole.pixels[i] - shown.pixels[i]) < 24;
        EXPECT_GT(same, whole.pixels.size() / 5 * 2);
    }
}

// A frame of four gigapixels that its file says nothing about, progressive and not.
TEST(CreateThumbnail, IsBoundedByTheFile) {
    for (const char kind : {'\xC0', '\xC2'}) {
        std::string file("\xFF\xD8\xFF\xDB\0\x43\0", 7);
        file += std::string(64, '\1') + "\xFF" + kind;
        file += std::string("\0\x0B\x08\xFF\xDC\xFF\xDC\1\1\x11\0", 11);
        file += std::string("\xFF\xC4\0\x14\0\1", 6) + std::string(15, '\0') + '\0';
        file += std::string("\xFF\xDA\0\x08\1\1\0\0\0\0", 10);
        const std::string answer = thumbnail_of_file(u"", file);
        EXPECT_TRUE(answer == "$$-4304" || answer.ends_with("80x80")) << answer;
    }
}

} // namespace
} // namespace vell::pictures
