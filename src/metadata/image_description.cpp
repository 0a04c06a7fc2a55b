#include "src/metadata/image_description.h"

#include "src/base/number_text.h"
#include "src/metadata/image_headers.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace vell::metadata {
namespace {

// A format, known by the bytes that its files begin with.
struct ImageFormat {
    std::string_view first_bytes;
    Result<ImageHeader> (*read_header)(files::BufferedReader&);
    std::string_view codec_name;
    std::string_view codec_type;
};

using namespace std::string_view_literals;

constexpr std::array formats{
    ImageFormat{"\xFF\xD8"sv, read_jpeg_header, "Photo - JPEG", "jpeg"},
    ImageFormat{"\x89PNG\r\n\x1A\n"sv, read_png_header, "PNG", "png "},
    ImageFormat{"GIF87a"sv, read_gif_header, "GIF", "gif "},
    ImageFormat{"GIF89a"sv, read_gif_header, "GIF", "gif "},
    ImageFormat{"BM"sv, read_bmp_header, "BMP", "WRLE"},
    ImageFormat{"II\x2A\0"sv, read_tiff_header, "TIFF", "tiff"},
    ImageFormat{"MM\0\x2A"sv, read_tiff_header, "TIFF", "tiff"},
};

} // namespace

Result<void> describe_image(files::BufferedReader& file, MetadataText& text) {
    file.seek(0);
    const std::string first_bytes = VELL_TRY(file.read_bytes(8));
    const auto* const format = std::ranges::find_if(formats, [&](const ImageFormat& candidate) {
        return first_bytes.starts_with(candidate.first_bytes);
    });
    if (format == formats.end())
        return Failure{ErrorCode::NotSupported};
    const Result<ImageHeader> read = format->read_header(file);
    if (!read)
        return Failure{read.error() == ErrorCode::EndOfFile ? ErrorCode::ShortRead : read.error()};
    const ImageHeader& header = read.value();
    text.append("Height: " + to_text(header.height) + "\rWidth: " + to_text(header.width) +
                "\rDepth: " + to_text(header.depth) +
                "\rHorizontal Res: " + to_text(header.horizontal_resolution, 6) +
                "\rVertical Res: " + to_text(header.vertical_resolution, 6) +
                "\rCodec name: " + std::string(format->codec_name) + "\rCodec type: " +
                std::string(format->codec_type) + "\rImage count: " + to_text(header.image_count) +
                "\rData size: " + to_text(file.size()));
    return {};
}

} // namespace vell::metadata
