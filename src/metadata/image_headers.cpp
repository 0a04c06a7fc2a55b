#include "src/metadata/image_headers.h"

#include "src/metadata/jpeg_markers.h"

#include <array>
#include <optional>
#include <string>

namespace vell::metadata {
namespace {

constexpr double metres_per_inch = 0.0254;

// What lies outside the bytes reads as 0.
template <typename T>
T field(std::string_view record, std::size_t offset, ByteOrder order) {
    return load<T>(record, offset, order).value_or(0);
}

// Bytes of a fixed length.
template <std::size_t length>
class Record {
  public:
    Result<void> read(files::BufferedReader& file) { return file.read_exactly(bytes_); }
    template <typename T>
    T get(std::size_t offset, ByteOrder order) const {
        return field<T>({bytes_.data(), length}, offset, order);
    }
    std::string_view text(std::size_t offset, std::size_t count) const {
        return std::string_view(bytes_.data(), length).substr(offset, count);
    }

  private:
    std::array<char, length> bytes_{};
};

// JPEG --------------------------------------------------------------------------------------------

// Frame header (B.2.2), without its length and the parameters of the components.
struct FrameHeader {
    static constexpr std::size_t length = 6;

    std::uint8_t sample_precision;
    std::uint16_t lines;
    std::uint16_t samples_per_line;
    std::uint8_t components;

    static Result<FrameHeader> read(files::BufferedReader& file) {
        Record<length> record;
        VELL_TRY(record.read(file));
        return FrameHeader{record.get<std::uint8_t>(0, ByteOrder::Big),
                           record.get<std::uint16_t>(1, ByteOrder::Big),
                           record.get<std::uint16_t>(3, ByteOrder::Big),
                           record.get<std::uint8_t>(5, ByteOrder::Big)};
    }
};

// The JFIF segment (JFIF 1.02): identifier, version, units, densities.
std::optional<Resolution> jfif_resolution(std::string_view segment) {
    if (!segment.starts_with(std::string_view("JFIF\0", 5)) || segment.size() < 12)
        return std::nullopt;
    const auto units = field<std::uint8_t>(segment, 7, ByteOrder::Big);
    if (units != 1 && units != 2)
        return std::nullopt; // an aspect ratio
    return per_inch(field<std::uint16_t>(segment, 8, ByteOrder::Big),
                    field<std::uint16_t>(segment, 10, ByteOrder::Big),
                    units == 1 ? 1 : centimetres_per_inch);
}

// PNG ---------------------------------------------------------------------------------------------

struct ImageHeaderChunk {
    static constexpr std::size_t length = 13;

    std::uint32_t width;
    std::uint32_t height;
    std::uint8_t bit_depth;
    std::uint8_t colour_type;

    static Result<ImageHeaderChunk> read(files::BufferedReader& file) {
        Record<length> data;
        VELL_TRY(data.read(file));
        return ImageHeaderChunk{
            data.get<std::uint32_t>(0, ByteOrder::Big), data.get<std::uint32_t>(4, ByteOrder::Big),
            data.get<std::uint8_t>(8, ByteOrder::Big), data.get<std::uint8_t>(9, ByteOrder::Big)};
    }
    unsigned channels() const {
        constexpr unsigned palette = 1, colour = 2, alpha = 4;
        const unsigned colours =
            (colour_type & colour) != 0 && (colour_type & palette) == 0 ? 3 : 1;
        return colours + ((colour_type & alpha) != 0 ? 1 : 0);
    }
};

// GIF ---------------------------------------------------------------------------------------------

// The length of the colour table that a packed field announces.
std::uint64_t colour_table_length(std::uint8_t packed) {
    return (packed & 0x80) != 0 ? std::uint64_t{3} << ((packed & 7) + 1) : 0;
}

Result<void> skip_sub_blocks(files::BufferedReader& file) {
    while (const std::uint8_t length = VELL_TRY(file.read_byte()))
        file.skip(length);
    return {};
}

// Adds the images up to the trailer; a file that ends before it has those that began.
Result<void> count_gif_images(files::BufferedReader& file, std::uint64_t& count) {
    constexpr std::uint8_t image_separator = 0x2C, extension = 0x21;
    for (;;) {
        const std::uint8_t introducer = VELL_TRY(file.read_byte());
        if (introducer == image_separator) {
            Record<9> descriptor;
            VELL_TRY(descriptor.read(file));
            ++count;
            file.skip(colour_table_length(descriptor.get<std::uint8_t>(8, ByteOrder::Little)));
            file.skip(1); // LZW minimum code size
        } else if (introducer == extension) {
            file.skip(1); // label
        } else {
            return {};
        }
        VELL_TRY(skip_sub_blocks(file));
    }
}

} // namespace

Resolution per_inch(double horizontal, double vertical, double units_per_inch) {
    const auto convert = [&](double value) {
        return value > 0 ? value * units_per_inch : ImageHeader::default_resolution;
    };
    return {convert(horizontal), convert(vertical)};
}

Result<ImageHeader> read_jpeg_header(files::BufferedReader& file) {
    constexpr std::string_view exif("Exif\0\0", 6);
    std::optional<Resolution> jfif;
    std::optional<Resolution> from_tags;
    file.seek(2); // behind SOI
    for (;;) {
        const SegmentMarker marker = VELL_TRY(next_marker(file)).code;
        if (marker == SegmentMarker::Eoi || marker == SegmentMarker::Sos)
            return Failure{ErrorCode::WrongImageKind};
        if (stands_alone(marker) || marker == SegmentMarker{0})
            continue;
        const auto length = VELL_TRY(file.read_integer<std::uint16_t>(ByteOrder::Big));
        if (length < sizeof length)
            return Failure{ErrorCode::SegmentTooShort};
        if (is_start_of_frame(marker)) {
            const FrameHeader frame = VELL_TRY(FrameHeader::read(file));
            ImageHeader header;
            header.width = frame.samples_per_line;
            header.height = frame.lines;
            header.depth = std::uint64_t{frame.sample_precision} * frame.components;
            if (jfif || from_tags)
                header.set_resolution(jfif ? *jfif : *from_tags);
            return header;
        }
        const std::uint64_t end = file.position() + length - sizeof length;
        if (marker == SegmentMarker::App0 || marker == SegmentMarker::App1) {
            const std::string segment = VELL_TRY(file.read_bytes(length - sizeof length));
            if (marker == SegmentMarker::App0 && !jfif)
                jfif = jfif_resolution(segment);
            if (marker == SegmentMarker::App1 && !from_tags && segment.starts_with(exif))
                from_tags = resolution_of(std::string_view(segment).substr(exif.size()));
        }
        file.seek(end);
    }
}

Result<ImageHeader> read_png_header(files::BufferedReader& file) {
    constexpr std::size_t checksum_length = 4;
    std::optional<ImageHeader> header;
    file.seek(8); // behind the signature
    for (;;) {
        Record<8> chunk;
        const Result<void> read = chunk.read(file);
        if (!read && header)
            return *header;
        VELL_TRY(read);
        const std::string_view type = chunk.text(4, 4);
        const std::uint64_t next =
            file.position() + chunk.get<std::uint32_t>(0, ByteOrder::Big) + checksum_length;
        if (!header && type == "IHDR") {
            const ImageHeaderChunk fields = VELL_TRY(ImageHeaderChunk::read(file));
            header.emplace();
            header->width = fields.width;
            header->height = fields.height;
            header->depth = std::uint64_t{fields.bit_depth} * fields.channels();
        } else if (!header && type != "CgBI") {
            return Failure{ErrorCode::WrongImageKind};
        } else if (header && type == "pHYs") {
            Record<9> data;
            VELL_TRY(data.read(file));
            const bool in_metres = data.get<std::uint8_t>(8, ByteOrder::Big) == 1;
            const double horizontal = data.get<std::uint32_t>(0, ByteOrder::Big);
            const double vertical = data.get<std::uint32_t>(4, ByteOrder::Big);
            header->set_resolution(in_metres ? per_inch(horizontal, vertical, metres_per_inch)
                                             : per_inch(0, 0, 1));
        } else if (header && type == "acTL") {
            header->image_count = VELL_TRY(file.read_integer<std::uint32_t>(ByteOrder::Big));
        } else if (header && (type == "IDAT" || type == "IEND")) {
            return *header;
        }
        file.seek(next);
    }
}

Result<ImageHeader> read_gif_header(files::BufferedReader& file) {
    file.seek(6); // behind signature and version
    Record<7> screen;
    VELL_TRY(screen.read(file));
    const auto packed = screen.get<std::uint8_t>(4, ByteOrder::Little);
    ImageHeader header;
    header.width = screen.get<std::uint16_t>(0, ByteOrder::Little);
    header.height = screen.get<std::uint16_t>(2, ByteOrder::Little);
    header.depth = (packed & 7u) + 1;
    header.image_count = 0;
    file.skip(colour_table_length(packed));
    const Result<void> counted = count_gif_images(file, header.image_count);
    if (!counted && counted.error() != ErrorCode::EndOfFile)
        return Failure{counted.error()};
    return header;
}

Result<ImageHeader> read_bmp_header(files::BufferedReader& file) {
    constexpr std::uint32_t core_header = 12, shortest_header = 16, with_resolution = 40,
                            longest_header = 124;
    constexpr ByteOrder order = ByteOrder::Little;
    file.seek(14); // behind BITMAPFILEHEADER
    const auto size = VELL_TRY(file.read_integer<std::uint32_t>(order));
    ImageHeader header;
    if (size == core_header) {
        Record<8> core;
        VELL_TRY(core.read(file));
        header.width = core.get<std::uint16_t>(0, order);
        header.height = core.get<std::uint16_t>(2, order);
        header.depth = core.get<std::uint16_t>(6, order);
        return header;
    }
    if (size < shortest_header || size > longest_header)
        return Failure{ErrorCode::WrongImageKind};
    Record<12> info;
    VELL_TRY(info.read(file));
    // A negative height tells that the rows stand from top to bottom.
    const std::int64_t height = info.get<std::int32_t>(4, order);
    header.width = info.get<std::uint32_t>(0, order);
    header.height = static_cast<std::uint64_t>(height < 0 ? -height : height);
    header.depth = info.get<std::uint16_t>(10, order);
    if (size >= with_resolution) {
        Record<16> rest;
        VELL_TRY(rest.read(file));
        header.set_resolution(per_inch(rest.get<std::int32_t>(8, order),
                                       rest.get<std::int32_t>(12, order), metres_per_inch));
    }
    return header;
}

} // namespace vell::metadata
