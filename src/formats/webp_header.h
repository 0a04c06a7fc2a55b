// What the frames of a WebP file say of their size, and its extended header (WebP Container
// Specification; RFC 6386, section 9.1; WebP Lossless Bitstream Specification, section 3).
#pragma once

#include "src/base/bytes.h"
#include "src/formats/riff.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::formats::webp {

inline constexpr std::string_view form = "WEBP";

// The features that VP8X lists.
enum class Feature : std::uint8_t {
    Animation = 0x02,
    Xmp = 0x04,
    Exif = 0x08,
    Alpha = 0x10,
    Profile = 0x20,
};

struct FrameSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool has_alpha = false;

    // Bytes of a chunk that tell.
    static constexpr std::size_t lossy_size = 10;
    static constexpr std::size_t lossless_size = 5;

    // From the start of a "VP8 " chunk: a key frame; nullopt for anything else.
    static std::optional<FrameSize> of_lossy(std::string_view data);
    // From that of a "VP8L" chunk.
    static std::optional<FrameSize> of_lossless(std::string_view data);
};

// The data of VP8X: flags, three bytes of nothing, width and height less 1 in three bytes each.
inline constexpr std::size_t extended_header_size = 10;
std::string extended_header(const FrameSize& canvas, std::uint8_t features);

} // namespace vell::formats::webp
