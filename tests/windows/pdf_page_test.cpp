// Pages of PDF files as pictures through Poppler: sound, strange and hostile ones.
#include "src/windows/documents/poppler_page.h"
#include "src/windows/system.h"
#include "tests/windows/pdf_documents.h"
#include "tests/windows/plugin_fixture.h"

#include <array>

namespace vell::test {
namespace {

using pictures::Picture;

Result<Picture> draw(ByteSource& bytes, std::uint32_t size = 160, std::uint32_t number = 1) {
    std::vector<std::string> notes;
    return windows::system().pictures().pdf_page(bytes, {number, size}, notes);
}
Result<Picture> draw(const std::string& document, std::uint32_t size = 160,
                     std::uint32_t number = 1) {
    BytesInMemory bytes(document);
    return draw(bytes, size, number);
}

// Size and colours at some places, such as "120x160 ff0000 ffffff"; "$$code" for a failure.
std::string look(const Result<Picture>& picture,
                 const std::vector<std::pair<unsigned, unsigned>>& places = {}) {
    if (!picture)
        return "$$" + std::to_string(number(picture.error()));
    EXPECT_FALSE(picture->has_alpha);
    EXPECT_EQ(picture->pixels.size(), std::size_t{picture->width} * picture->height * 3);
    std::string text = std::to_string(picture->width) + "x" + std::to_string(picture->height);
    for (const auto& [x, y] : places) {
        const std::uint8_t* pixel = &picture->pixels[(std::size_t{y} * picture->width + x) * 3];
        std::array<char, 8> colour{};
        std::snprintf(colour.data(), colour.size(), " %02x%02x%02x", pixel[0], pixel[1], pixel[2]);
        text += colour.data();
    }
    return text;
}

// A page of 600 by 800 points whose upper left quarter is red, with more entries.
std::string quarter(const std::string& entries, const std::string& more = "") {
    return pdf({"<< /Type /Catalog /Pages 2 0 R >>", "<< /Kids [3 0 R] /Count 1 >>",
                "<< /Type /Page /Contents 4 0 R " + entries + " >>",
                stream("1 0 0 rg 0 400 300 400 re f " + more)});
}

// Boxes of 500 by 500 thousandths, as letters.
const std::string boxes =
    "<< /Type /Font /Subtype /Type3 /FontBBox [0 0 500 500] /FontMatrix [0.001 0 0 0.001 0 0] "
    "/FirstChar 97 /LastChar 97 /Widths [1000] /Encoding << /Differences [97 /box] >> "
    "/CharProcs << /box 5 0 R >> >>";

std::string bits_of(std::string_view digits) {
    std::string bytes((digits.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < digits.size(); ++i)
        bytes[i / 8] = static_cast<char>(bytes[i / 8] | (digits[i] - '0') << (7 - i % 8));
    return bytes;
}

std::string four_bytes(std::uint32_t value) {
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
            static_cast<char>(value >> 8), static_cast<char>(value)};
}

// A JBIG2 page of one region of this size, whose first rows are black.
std::string black_jbig2(std::uint32_t width, std::uint32_t height) {
    const auto segment = [](char number, char type, const std::string& data) {
        return std::string(3, '\0') + number + type + '\0' + '\1' +
               four_bytes(static_cast<std::uint32_t>(data.size())) + data;
    };
    const std::string size = four_bytes(width) + four_bytes(height);
    const std::string eight_black_rows = bits_of("001"
                                                 "00110101"
                                                 "000101"
                                                 "11111111111111");
    return segment('\0', 48, size + std::string(11, '\0')) +
           segment('\1', 38, size + std::string(9, '\0') + '\1' + eight_black_rows);
}

// A page that a picture of this many pixels to a side covers.
std::string pictured(unsigned width, unsigned height, const std::string& data,
                     const std::string& entries) {
    return page("600 0 0 800 0 0 cm /X Do",
                {stream(data, " /Type /XObject /Subtype /Image /Width " + std::to_string(width) +
                                  " /Height " + std::to_string(height) + entries)},
                "/XObject << /X 5 0 R >>");
}
const std::string gray = " /ColorSpace /DeviceGray /BitsPerComponent ";

TEST(PdfPage, ShowsWhatIsOnIt) {
    const std::string box_letter = stream("1000 0 0 0 500 500 d1 0 0 500 500 re f");
    const std::string letters =
        page("BT /F 200 Tf 0 0 1 rg 0 700 Td (aa) Tj ET", {box_letter}, "", "", boxes);
    // Each letter is 20 by 20 pixels, and as far from the next one.
    EXPECT_EQ(look(draw(letters), {{10, 10}, {30, 10}, {50, 10}, {10, 30}}),
              "120x160 0000ff ffffff 0000ff ffffff");
    EXPECT_EQ(look(draw(quarter("/MediaBox [0 0 600 800]"), 80), {{1, 1}, {29, 39}, {31, 39}}),
              "60x80 ff0000 ff0000 ffffff");
    // An edge through the middle of a pixel.
    const auto smooth =
        draw(quarter("/MediaBox [0 0 600 800]", "0 g 300 0 m 600 0 l 600 300 l f"), 160);
    const unsigned edge = smooth->pixels[(129 * 120 + 90) * 3];
    EXPECT_GT(edge, 0x20U);
    EXPECT_LT(edge, 0xE0U);
    // The middle of a JPEG's range, and what a region of MMR codes makes black.
    EXPECT_EQ(
        look(draw(pictured(64, 64, white_picture(64) + "\xFF\xD9", gray + "8 /Filter /DCTDecode")),
             {{0, 0}, {60, 80}, {119, 159}}),
        "120x160 808080 808080 808080");
    EXPECT_EQ(look(draw(pictured(8, 8, black_jbig2(8, 8), gray + "1 /Filter /JBIG2Decode")),
                   {{0, 0}, {60, 80}, {119, 159}}),
              "120x160 000000 000000 000000");
    const std::string shading = "/Shading << /S << /ShadingType 2 /ColorSpace /DeviceGray "
                                "/Coords [0 0 600 0] /Function << /FunctionType 2 /Domain [0 1] "
                                "/C0 [0] /C1 [1] /N 1 >> >> >>";
    const auto shaded = draw(page("/S sh", {}, shading));
    EXPECT_LT(shaded->pixels[3 * 5], 0x20);
    EXPECT_GT(shaded->pixels[3 * 115], 0xE0);
}

TEST(PdfPage, IsTheVisiblePartAsTheDocumentTurnsIt) {
    EXPECT_EQ(
        look(draw(quarter("/MediaBox [0 0 600 800] /Rotate 90")), {{1, 1}, {81, 1}, {159, 1}}),
        "160x120 ffffff ff0000 ff0000");
    EXPECT_EQ(look(draw(quarter("/MediaBox [0 0 600 800] /CropBox [0 600 400 800]")),
                   {{1, 1}, {119, 79}, {121, 1}}),
              "160x80 ff0000 ff0000 ffffff");
    EXPECT_EQ(look(draw(quarter("/MediaBox [0 0 600 1]"), 4096)), "4096x7");
    EXPECT_EQ(look(draw(quarter("/MediaBox [0 0 1 100000]"), 16)), "1x16");
}

// A document of some size that is not to be held in memory.
class LongDocument final : public ByteSource {
  public:
    explicit LongDocument(std::string bytes) : bytes_(std::move(bytes)) {}
    std::uint64_t size() const override { return bytes_.size(); }
    Result<std::size_t> read_at(std::uint64_t position, std::span<char> bytes) override {
        most_at_once = std::max(most_at_once, bytes.size());
        return BytesInMemory(bytes_).read_at(position, bytes);
    }
    std::size_t most_at_once = 0;

  private:
    std::string bytes_;
};

TEST(PdfPage, ComesFromFilesOfAnySize) {
    LongDocument file(
        quarter("/MediaBox [0 0 600 800]", "\n%" + std::string(17 << 20, 'x') + "\n"));
    EXPECT_EQ(look(draw(file), {{1, 1}, {119, 159}}), "120x160 ff0000 ffffff");
    EXPECT_LE(file.most_at_once, 4096U);
}

TEST(PdfPage, TellsWhyThereIsNone) {
    const std::string document = page(some_text);
    EXPECT_EQ(look(draw(document, 160, 0)), "$$-50");
    EXPECT_EQ(look(draw(document, 160, 2)), "$$-50");
    EXPECT_EQ(look(draw(document, 0)), "$$-50");
    EXPECT_EQ(look(draw(document, windows::longest_page_side + 1)), "$$-50");
    EXPECT_EQ(look(draw("no document")), "$$3");
    EXPECT_EQ(look(draw(pdf({"<< /Type /Catalog >>"}))), "$$2");
    EXPECT_EQ(look(draw(pdf({"<< /Type /Catalog /Pages 2 0 R >>", "<< /Kids [] /Count 0 >>"}))),
              "$$2");
    EXPECT_EQ(look(draw(pdf({"<< /Type /Catalog /Pages 2 0 R >>", "<< /Kids [] /Count 0 >>"},
                            " /ID [(a)(b)] /Encrypt << /Filter /Standard /V 1 /R 2 /P -4 /O <" +
                                repeated("4f", 32) + "> /U <" + repeated("55", 32) + "> >>"))),
              "$$4");
}

// Resources 5, 6, … of which each draws with the next one.
std::vector<std::string> chain(int length, const std::string& entries, const std::string& kind,
                               const std::string& content) {
    std::vector<std::string> objects;
    for (int i = 0; i < length; ++i)
        objects.push_back(stream(content, entries + " /Resources << /" + kind + " << /X " +
                                              std::to_string(6 + i) + " 0 R >> >>"));
    return objects;
}

// Each would take ages, all memory, or the host's stack, if everything that it asks for were done.
TEST(PdfPage, EndsForHostileDocuments) {
    const std::string tiles = " /PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 600 800] "
                              "/XStep 601 /YStep 801",
                      group = " /Type /XObject /Subtype /Form /BBox [0 0 600 800] "
                              "/Group << /S /Transparency /I true >>",
                      pattern = "/Pattern << /X 5 0 R >>", x = "/XObject << /X 5 0 R >>";
    const std::string fill = "/Pattern cs /X scn 0 0 600 800 re f ";
    const std::string deep_clips =
        repeated("0 0 m 600 800 l 600 0 l 0 300 400 500 300 10 c W n ", 20'000);
    const struct {
        std::string_view what;
        std::string document;
        std::string_view outcome;
    } cases[] = {
        {"patterns of patterns", page(fill, chain(2000, tiles, "Pattern", fill), pattern),
         "120x160"},
        {"groups in groups", page("/X Do", chain(2000, group, "XObject", "/X Do"), x), "120x160"},
        {"small tiles",
         page(fill,
              {stream("0 0 1 1 re f", " /PatternType 1 /PaintType 1 /TilingType 1 "
                                      "/BBox [0 0 0.00001 0.00001] /XStep 0.00001 /YStep 0.00001")},
              pattern),
         "$$99"},
        {"dashes without end", page("[0.0000001] 0 d 0 0 m 600 800 l S"), "$$99"},
        {"clips upon clips", page(deep_clips + repeated("0 0 600 800 re f ", 20'000)), "$$99"},
        {"a letter beyond all sizes", page("BT /F 9e9 Tf (Some) Tj ET"), "120x160"},
        {"a wide row", pictured(1'000'000'000, 1, "", gray + "8"), "120x160"},
        {"many rows", pictured(100'000, 2'000'000, "", gray + "8"), "$$99"},
        {"pixels from nothing", pictured(30'000, 30'000, "", " /ImageMask true"), "$$99"},
        {"a picture magnified",
         page("90000 0 0 90000 -4000 -4000 cm /X Do",
              {stream("aaaa", " /Subtype /Image /Width 2 /Height 2" + gray + "8")}, x),
         "$$99"},
        {"a large JPEG",
         pictured(32'000, 32'000, test::deflated(white_picture(32'000)),
                  gray + "8 /Filter [/FlateDecode /DCTDecode]"),
         "$$99"},
        {"a large JBIG2 picture",
         pictured(60'000, 60'000, black_jbig2(60'000, 60'000), gray + "1 /Filter /JBIG2Decode"),
         "$$99"},
        {"states that are kept", page(repeated("q ", 1'000'000)), "$$99"},
        {"groups upon groups",
         page(repeated("/X Do ", 100'000), {stream("0 0 600 800 re f", group)}, x), "$$99"},
    };
    for (const auto& [what, document, outcome] : cases)
        EXPECT_EQ(look(draw(document)), outcome) << what;
    EXPECT_EQ(look(draw(page(some_text))), "120x160"); // the next one is drawn as ever
}

TEST(PdfPage, IsTheSameInEightThreads) {
    const std::string document =
        quarter("/MediaBox [0 0 600 800]", repeated("0 0 1 RG 3 w 10 10 m 590 790 l S ", 200));
    const auto alone = draw(document);
    std::array<bool, 8> same{};
    in_threads(same.size(), [&](std::size_t i) {
        const auto picture = draw(document);
        same[i] = picture && picture->pixels == alone->pixels;
    });
    EXPECT_EQ(same, (std::array<bool, 8>{true, true, true, true, true, true, true, true}));
}

} // namespace
} // namespace vell::test
