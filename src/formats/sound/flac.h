// The metadata blocks of FLAC files (RFC 9639, section 8), as far as they hold pictures.
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <functional>
#include <tuple>

namespace vell::formats::flac {

enum class BlockType : std::uint8_t { VorbisComment = 4, Picture = 6 };

struct BlockHeader {
    static constexpr std::size_t size = 4;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t bits = 0;

    static constexpr auto fields() { return std::tuple{Field{0, &BlockHeader::bits}}; }
    bool is_last() const { return (bits & 0x80000000U) != 0; }
    BlockType type() const { return BlockType{static_cast<std::uint8_t>(bits >> 24 & 0x7FU)}; }
    std::uint32_t length() const { return bits & 0xFFFFFFU; }
};

// What is done with each block; a fault ends the walk.
using BlockVisitor = std::function<Read<void>(BlockType, const Window&)>;

// Those of the stream that the window begins with. Absent where none begins there.
Read<void> each_block(Window file, const BlockVisitor& visitor);

// 8.8
struct Picture {
    std::uint32_t type = 0; // as in ID3
    Window data;

    static Read<Picture> read(Window block);
};

} // namespace vell::formats::flac
