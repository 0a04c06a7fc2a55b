#include "src/metadata/images/image_description.h"

#include "src/base/number_text.h"
#include "src/formats/recognition.h"
#include "src/metadata/faults.h"
#include "src/metadata/images/camera_headers.h"
#include "src/metadata/images/container_headers.h"
#include "src/metadata/images/heif_image.h"
#include "src/metadata/images/image_headers.h"
#include "src/metadata/images/tiff_image.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace vell::metadata {
namespace {

struct ImageFormat {
    formats::Format format;
    Result<ImageHeader> (*read_header)(formats::Window);
    std::string_view codec_name;
    std::string_view codec_type;
};

// An image in items, or a raw photograph.
Result<ImageHeader> read_iso_header(formats::Window file) {
    Result<ImageHeader> image = read_heif_header(file);
    return !image && image.error() == ErrorCode::NotSupported ? read_cr3_header(file) : image;
}

Result<ImageHeader> read_unknown_header(formats::Window file) {
    std::array<char, formats::recognizable_size> bytes{};
    const std::size_t count = VELL_TRY(coded(file.read(bytes)));
    if (!formats::begins_like_tiff({bytes.data(), count}))
        return Failure{ErrorCode::NotSupported};
    return read_tiff_like_header(file);
}

constexpr std::array image_formats{
    ImageFormat{formats::Format::Jpeg, read_jpeg_header, "Photo - JPEG", "jpeg"},
    ImageFormat{formats::Format::Png, read_png_header, "PNG", "png "},
    ImageFormat{formats::Format::Gif, read_gif_header, "GIF", "gif "},
    ImageFormat{formats::Format::Bmp, read_bmp_header, "BMP", "WRLE"},
    ImageFormat{formats::Format::Tiff, read_tiff_header, "TIFF", "tiff"},
    ImageFormat{formats::Format::IsoMedia, read_iso_header, "", ""},
    ImageFormat{formats::Format::Riff, read_webp_header, "WebP", "webp"},
    ImageFormat{formats::Format::Photoshop, read_photoshop_header, "Photoshop", "8BPS"},
    ImageFormat{formats::Format::JpegXl, read_jpeg_xl_header, "JPEG XL", "jxl "},
    ImageFormat{formats::Format::Raf, read_raf_header, "", ""},
    ImageFormat{formats::Format::Ciff, read_ciff_header, "", ""},
    ImageFormat{formats::Format::Mrw, read_mrw_header, "", ""},
    ImageFormat{formats::Format::X3f, read_x3f_header, "", ""},
    ImageFormat{formats::Format::Unknown, read_unknown_header, "TIFF", "tiff"},
};

} // namespace

Result<ImageHeader> read_image_header(files::BufferedReader& file) {
    file.seek(0);
    const std::string first_bytes = VELL_TRY(file.read_bytes(formats::recognizable_size));
    const auto* const format =
        std::ranges::find(image_formats, formats::format_of(first_bytes), &ImageFormat::format);
    if (format == image_formats.end())
        return Failure{ErrorCode::NotSupported};
    Result<ImageHeader> read = format->read_header(formats::Window(file));
    if (!read)
        return Failure{read.error() == ErrorCode::EndOfFile ? ErrorCode::ShortRead : read.error()};
    if (read->codec_name.empty())
        read->codec_name = format->codec_name;
    if (read->codec_type.empty())
        read->codec_type = format->codec_type;
    return read;
}

Result<void> describe_image(files::BufferedReader& file, MetadataText& text) {
    const ImageHeader header = VELL_TRY(read_image_header(file));
    text.append(
        "Height: " + to_text(header.height) + "\rWidth: " + to_text(header.width) + "\rDepth: " +
        to_text(header.depth) + "\rHorizontal Res: " + to_text(header.horizontal_resolution, 6) +
        "\rVertical Res: " + to_text(header.vertical_resolution, 6) +
        "\rCodec name: " + std::string(header.codec_name) + "\rCodec type: " + header.codec_type +
        "\rImage count: " + to_text(header.image_count) + "\rData size: " + to_text(file.size()));
    return {};
}

} // namespace vell::metadata
