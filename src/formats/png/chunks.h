// The chunks of a PNG file (PNG, third edition, section 5), the one walk over them.
#pragma once

#include "src/formats/window.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace vell::formats::png {

inline constexpr std::uint64_t signature_size = 8;
inline constexpr std::uint64_t checksum_size = 4;

struct ChunkHeader {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t length = 0;
    std::array<char, 4> type{};

    static constexpr auto fields() {
        return std::tuple{Field{0, &ChunkHeader::length}, Field{4, &ChunkHeader::type}};
    }
};

// IHDR (11.2.1), as far as it is used.
struct ImageHeader {
    static constexpr std::size_t size = 13;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint8_t bit_depth = 0;
    std::uint8_t colour_type = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &ImageHeader::width}, Field{4, &ImageHeader::height},
                          Field{8, &ImageHeader::bit_depth}, Field{9, &ImageHeader::colour_type}};
    }
    unsigned channels() const;
};

// pHYs (11.3.4.3).
struct PixelDimensions {
    static constexpr std::size_t size = 9;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t horizontal = 0; // pixels of a unit
    std::uint32_t vertical = 0;
    std::uint8_t unit = 0; // 1: the metre

    static constexpr auto fields() {
        return std::tuple{Field{0, &PixelDimensions::horizontal},
                          Field{4, &PixelDimensions::vertical}, Field{8, &PixelDimensions::unit}};
    }
};

// acTL (11.3.6.1), as far as it is used.
struct AnimationControl {
    static constexpr std::size_t size = 4;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t frames = 0;

    static constexpr auto fields() { return std::tuple{Field{0, &AnimationControl::frames}}; }
};

struct Chunk {
    ChunkHeader header;
    std::uint64_t data_start; // in the file
    Window data;

    std::string_view type() const { return {header.type.data(), header.type.size()}; }
};

class ChunkWalk {
  public:
    explicit ChunkWalk(const Window& file) : file_(file) { file_.seek(signature_size); }

    // nullopt where no whole header of a chunk is left.
    Read<std::optional<Chunk>> next();

  private:
    Window file_;
};

// tEXt (11.3.3.2): nullopt without the zero byte behind the keyword.
struct Text {
    std::string_view keyword;
    std::string_view text;

    static std::optional<Text> read(std::string_view data);
};

// The text of tEXt and zTXt, whose characters have the numbers of their bytes.
std::string utf8_from_latin_1(std::string text);

// iTXt (11.3.3.4).
struct InternationalText {
    std::string_view keyword;
    bool is_compressed;
    std::uint8_t method; // 0: deflate
    std::string_view language;
    std::string_view translated_keyword;
    std::string_view text; // or its compressed bytes

    // CutOff when the data end before the text.
    static Read<InternationalText> read(std::string_view data);
};

} // namespace vell::formats::png
