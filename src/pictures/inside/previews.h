// Pictures inside other files: previews in raw photographs, HEIF images and Photoshop files, covers
// of music and movies.
#pragma once

#include "src/base/byte_source.h"
#include "src/pictures/inside/orientation.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vell::pictures {

// A JPEG or PNG file in another file.
struct EmbeddedPicture {
    enum class Kind : std::uint8_t { Preview, Cover };

    Kind kind = Kind::Preview;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint32_t width = 0; // as it is stored, before it is turned
    std::uint32_t height = 0;
    // What the picture itself says, else the file around it.
    Orientation orientation = Orientation::TopLeft;
    // The picture, where the file does not have it in one piece; there is no offset then.
    std::string bytes = {};
};

// Beyond these a file has no more of them.
inline constexpr std::size_t most_pictures = 256;
// Of pictures that are not in one piece.
inline constexpr std::uint64_t longest_copy = formats::longest_block;

// Those whose frame can be decoded (baseline or progressive JPEG with 8 bits, PNG), each once,
// covers in the order of preference. None for a TIFF file that is no raw photograph: what it holds
// are its pages. Damage costs what is damaged; a failure is always one of the source.
Result<std::vector<EmbeddedPicture>> find_pictures(ByteSource& file);

// The first cover, where there are covers. Of previews the smallest whose longer side has at least
// `wanted` pixels, else the largest; passed over are those whose shape is not that of the largest,
// for cameras add black bars to small ones. nullptr for none.
const EmbeddedPicture* choose(std::span<const EmbeddedPicture> pictures, std::uint32_t wanted);

} // namespace vell::pictures
