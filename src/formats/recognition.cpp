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
    Signature{"\xFF\xD8"sv, Format::Jpeg},
    Signature{"\x89PNG\r\n\x1A\n"sv, Format::Png},
    Signature{"GIF87a"sv, Format::Gif},
    Signature{"GIF89a"sv, Format::Gif},
    Signature{"BM"sv, Format::Bmp},
    Signature{"II\x2A\0"sv, Format::Tiff},
    Signature{"MM\0\x2A"sv, Format::Tiff},
    Signature{"RIFF"sv, Format::Riff},
    Signature{"PK\3\4"sv, Format::Zip},
    Signature{"PK\5\6"sv, Format::Zip},
    Signature{"%PDF-"sv, Format::Pdf},
    Signature{"8BPS"sv, Format::Photoshop},
    Signature{"FUJIFILM"sv, Format::Raf},
    Signature{"II\x1A\0\0\0HE"sv, Format::Ciff},
    Signature{"\0MRM"sv, Format::Mrw},
    Signature{"FOVb"sv, Format::X3f},
    Signature{"ID3"sv, Format::Id3},
    Signature{"fLaC"sv, Format::Flac},
    Signature{"OggS"sv, Format::Ogg},
    Signature{"FORM"sv, Format::Aiff},
    Signature{"\0\0\0\x0CJXL "sv, Format::JpegXl},
    Signature{"\xFF\x0A"sv, Format::JpegXl},
};

// Boxes that files of ISO media and QuickTime begin with, by the four bytes behind their size.
constexpr std::array first_boxes{"ftyp"sv, "moov"sv, "mdat"sv, "wide"sv, "free"sv, "skip"sv,
                                 "pnot"sv, "styp"sv, "sidx"sv, "moof"sv, "uuid"sv, "meta"sv};

bool begins_like_iso_media(std::string_view first_bytes) {
    return first_bytes.size() >= recognizable_size &&
           std::ranges::find(first_boxes, first_bytes.substr(4, 4)) != first_boxes.end();
}

} // namespace

Format format_of(std::string_view first_bytes) {
    const auto* const found = std::ranges::find_if(signatures, [&](const Signature& candidate) {
        return first_bytes.starts_with(candidate.first_bytes);
    });
    if (found != signatures.end())
        return found->format;
    return begins_like_iso_media(first_bytes) ? Format::IsoMedia : Format::Unknown;
}

bool begins_like_tiff(std::string_view first_bytes) {
    return first_bytes.size() >= recognizable_size &&
           (first_bytes.starts_with("II") || first_bytes.starts_with("MM"));
}

} // namespace vell::formats
