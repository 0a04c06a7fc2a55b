// Formats by the bytes that their files begin with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vell::formats {

enum class Format : std::uint8_t {
    Unknown,
    Jpeg,
    Png,
    Gif,
    Bmp,
    Tiff,
    Riff,
    IsoMedia,
    Zip,
    Pdf,
    Photoshop,
    Raf,  // raw photographs of Fujifilm,
    Ciff, // of Canon,
    Mrw,  // of Minolta,
    X3f,  // of Sigma
    Id3,  // a tag, before sound of whatever kind
    Flac,
    Ogg,
    Aiff,
    JpegXl, // in boxes, or a codestream alone
};

// Bytes that are enough to tell.
inline constexpr std::size_t recognizable_size = 8;

Format format_of(std::string_view first_bytes);

// A byte order and all of a header's eight bytes: raw photographs, and blocks of tags in other
// files, have other numbers than 42 behind it.
bool begins_like_tiff(std::string_view first_bytes);

} // namespace vell::formats
