// The chunks of RIFF files, such as WebP (Multimedia Programming Interface and Data Specifications
// 1.0, "Resource Interchange File Format"), and those of AIFF files, which differ in their byte
// order (Audio Interchange File Format 1.3); the one walk over them.
#pragma once

#include "src/formats/window.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>

namespace vell::formats::riff {

// Behind the header of a chunk that holds others: what they are together.
inline constexpr std::uint64_t form_size = 4;

struct ChunkHeader {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::array<char, 4> id{};
    std::uint32_t data_size = 0; // without the byte that pads odd sizes

    static constexpr auto fields() {
        return std::tuple{Field{0, &ChunkHeader::id}, Field{4, &ChunkHeader::data_size}};
    }
};

struct Chunk {
    ChunkHeader header;
    std::uint64_t start; // in the file
    Window data;

    std::string_view type() const { return {header.id.data(), header.id.size()}; }
    bool holds_chunks() const { return type() == "RIFF" || type() == "LIST"; }
};

class ChunkWalk {
  public:
    explicit ChunkWalk(const Window& around, ByteOrder order = ChunkHeader::order)
        : around_(around), order_(order) {
        around_.seek(0);
    }

    // nullopt where no whole header is left.
    Read<std::optional<Chunk>> next();

  private:
    Window around_;
    ByteOrder order_;
};

// The chunks of a WebP file (RFC 9649, section 2). Absent in a file of another form.
Read<Window> find_webp(const Window& file);

} // namespace vell::formats::riff
