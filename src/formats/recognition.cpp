#include "src/formats/recognition.h"

#include <algorithm>
#include <array>

namespace vell::formats {
namespace {

using namespace std::string_view_literals;

struct Signature {
    std::string_view first_bytes;
    Format format;
};
constexpr std::array signatures{
    Signature{"\xFF\xD8"sv, Format::Jpeg}, Signature{"\x89PNG\r\n\x1A\n"sv, Format::Png},
    Signature{"GIF87a"sv, Format::Gif},    Signature{"GIF89a"sv, Format::Gif},
    Signature{"BM"sv, Format::Bmp},        Signature{"II\x2A\0"sv, Format::Tiff},
    Signature{"MM\0\x2A"sv, Format::Tiff},
};

} // namespace

Format format_of(std::string_view first_bytes) {
    const auto* const found = std::ranges::find_if(signatures, [&](const Signature& candidate) {
        return first_bytes.starts_with(candidate.first_bytes);
    });
    return found == signatures.end() ? Format::Unknown : found->format;
}

bool begins_like_tiff(std::string_view first_bytes) {
    return first_bytes.size() >= recognizable_size &&
           (first_bytes.starts_with("II") || first_bytes.starts_with("MM"));
}

} // namespace vell::formats
