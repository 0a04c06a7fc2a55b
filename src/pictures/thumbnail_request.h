// What a call asks of a thumbnail.
#pragma once

#include "src/params/call.h"
#include "src/pictures/encoders.h"
#include "src/pictures/geometry.h"

#include <cstdint>
#include <string>

namespace vell::pictures {

enum class PictureType : std::uint8_t { ByContent, Jpeg, Png };

struct ThumbnailRequest {
    ThumbnailShape shape;
    PictureType type = PictureType::ByContent;
    int quality = 85;
    Rgb background;
    std::uint32_t page = 1;
};

// NumberOutOfRange, or BadParameter for a colour that is none.
Result<ThumbnailRequest> thumbnail_request_of(params::Call& call);

// The number of a switch, or what stands for it when it is not there. NumberOutOfRange outside the
// range.
Result<std::uint32_t> number_in_range(const params::SwitchSet& switches, std::string_view name,
                                      std::uint32_t least, std::uint32_t most,
                                      std::uint32_t otherwise);

// The name of a picture made of a file: what the caller gives, with an extension behind it when it
// has none; otherwise the file's with its extension replaced.
std::u16string picture_name(std::u16string_view given, std::u16string_view file,
                            std::u16string_view extension);

} // namespace vell::pictures
