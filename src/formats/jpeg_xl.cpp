#include "src/formats/jpeg_xl.h"

#include "src/formats/isobmff/boxes.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace vell::formats::jpeg_xl {
namespace {

constexpr std::string_view codestream_start = "\xFF\x0A";

// Bits from the lowest of each byte on. Beyond the end they are 0, which the reader remembers.
class Bits {
  public:
    explicit Bits(std::string_view bytes) : bytes_(bytes) {}

    bool ran_out() const { return at_ > 8 * bytes_.size(); }
    std::uint32_t take(unsigned count) {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < count; ++i, ++at_)
            if (at_ / 8 < bytes_.size())
                value |= (static_cast<unsigned char>(bytes_[at_ / 8]) >> at_ % 8 & 1U) << i;
        return value;
    }
    bool flag() { return take(1) != 0; }
    // One of four ways to write a number, which its first two bits choose (B.2.2).
    struct Way {
        std::uint32_t least;
        unsigned bits;
    };
    std::uint32_t choose(const std::array<Way, 4>& ways) {
        const Way way = ways[take(2)];
        return way.least + take(way.bits);
    }

  private:
    std::string_view bytes_;
    std::size_t at_ = 0;
};

// D.2: a height, and a width or its ratio to it.
struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};
std::uint32_t take_side(Bits& bits, bool is_small) {
    if (is_small)
        return 8 * (bits.take(5) + 1);
    return bits.choose({{{1, 9}, {1, 13}, {1, 18}, {1, 30}}});
}
Size take_size(Bits& bits) {
    struct Ratio {
        std::uint32_t width;
        std::uint32_t height;
    };
    constexpr std::array<Ratio, 8> ratios{
        {{0, 0}, {1, 1}, {12, 10}, {4, 3}, {3, 2}, {16, 9}, {5, 4}, {2, 1}}};
    const bool is_small = bits.flag();
    Size size;
    size.height = take_side(bits, is_small);
    const Ratio ratio = ratios[bits.take(3)];
    size.width =
        ratio.height == 0
            ? take_side(bits, is_small)
            : static_cast<std::uint32_t>(std::uint64_t{size.height} * ratio.width / ratio.height);
    return size;
}

// D.3, as far as the bits of a sample; eight where a preview or an animation comes before.
unsigned take_depth(Bits& bits) {
    constexpr unsigned usual = 8;
    if (bits.flag()) // all as usual
        return usual;
    if (bits.flag()) {
        bits.take(3); // the orientation
        if (bits.flag())
            take_size(bits); // as it is meant to be shown
        if (bits.flag() || bits.flag())
            return usual;
    }
    const bool is_float = bits.flag();
    return is_float ? bits.choose({{{32, 0}, {16, 0}, {24, 0}, {1, 6}}})
                    : bits.choose({{{8, 0}, {10, 0}, {12, 0}, {1, 6}}});
}

// The codestream itself, or the first part of it.
Read<Window> find_codestream(const Window& file) {
    Window start = file;
    start.seek(0);
    if (VELL_TRY(start.read_bytes(codestream_start.size())) == codestream_start)
        return file;
    isobmff::BoxWalk walk(file);
    using isobmff::operator""_4cc;
    while (const auto box = VELL_TRY(walk.next())) {
        if (box->type == "jxlc"_4cc)
            return box->content;
        if (box->type == "jxlp"_4cc)
            return box->content.from(sizeof(std::uint32_t)); // behind its number
    }
    return fault(Damage::Absent);
}

} // namespace

Read<ImageHeader> read_image_header(const Window& file) {
    constexpr std::uint64_t longest_header = 64;
    Window stream = VELL_TRY(find_codestream(file));
    stream.seek(0);
    const std::string bytes = VELL_TRY(stream.read_bytes(longest_header));
    if (!bytes.starts_with(codestream_start))
        return fault(Damage::Absent);
    Bits bits(std::string_view(bytes).substr(codestream_start.size()));
    const Size size = take_size(bits);
    const unsigned depth = take_depth(bits);
    if (bits.ran_out())
        return fault(Damage::CutOff);
    return ImageHeader{size.width, size.height, depth};
}

} // namespace vell::formats::jpeg_xl
