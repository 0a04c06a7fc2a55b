// How pictures are to be turned before they are shown.
#pragma once

#include "src/base/byte_source.h"
#include "src/formats/window.h"

#include <cstdint>
#include <optional>

namespace vell::pictures {

// Where the stored picture's first row and first column belong (TIFF 6.0, section 8; Exif 3.0,
// 4.6.5): LeftBottom has its first row at the left side and its first column at the bottom.
enum class Orientation : std::uint8_t {
    TopLeft = 1,
    TopRight = 2,
    BottomRight = 3,
    BottomLeft = 4,
    LeftTop = 5,
    RightTop = 6,
    RightBottom = 7,
    LeftBottom = 8,
};

// Whether width and height change places.
constexpr bool turns_sideways(Orientation orientation) {
    return orientation >= Orientation::LeftTop;
}

// That of a file's picture, as the tags say that a JPEG, PNG, WebP or TIFF file or a raw photograph
// has. TopLeft for a file that says nothing, or nothing that makes sense, and for HEIF and AVIF
// images, which are turned by what decodes them. A failure is always one of the source.
Result<Orientation> orientation_of(ByteSource& file);

// What a block of tags says in its first directory; nullopt for no such thing.
formats::Read<std::optional<Orientation>> orientation_in_tags(const formats::Window& block);
// The same of the Exif block in the segments before the scan.
formats::Read<std::optional<Orientation>> orientation_in_jpeg(const formats::Window& jpeg);

} // namespace vell::pictures
