// What the chunks of a WebP file say of its size and features (RFC 9649, sections 2.5 to 2.7; RFC
// 6386, section 9.1, for lossy frames).
#pragma once

#include "src/formats/riff.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vell::formats::webp {

inline constexpr std::string_view form = "WEBP";

namespace chunk_type {
inline constexpr std::string_view extended = "VP8X";
inline constexpr std::string_view profile = "ICCP";
inline constexpr std::string_view frame = "ANMF"; // of an animation
inline constexpr std::string_view exif = "EXIF";
inline constexpr std::string_view xmp = "XMP ";
} // namespace chunk_type

// What VP8X lists.
enum class Feature : std::uint8_t {
    Animation = 0x02,
    Xmp = 0x04,
    Exif = 0x08,
    Alpha = 0x10,
    Profile = 0x20,
};
constexpr std::uint8_t bit(Feature feature) {
    return static_cast<std::uint8_t>(feature);
}

struct Canvas {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool has_alpha = false;
    std::uint64_t frames = 1;
};

// Of the file's extended header, or of its only frame. Absent for a file that is none, CutOff or
// Corrupt where it has neither.
Read<Canvas> read_canvas(const Window& file);
// Of the frame in a "VP8 " or "VP8L" chunk; Absent for another chunk, CutOff or Corrupt for a frame
// that is none.
Read<Canvas> frame_canvas(const riff::Chunk& chunk);

// The data of VP8X: the features, three bytes of nothing, each size less 1 in three bytes.
inline constexpr std::size_t extended_header_size = 10;
std::string extended_header(const Canvas& canvas, std::uint8_t features);

} // namespace vell::formats::webp
