#include "src/metadata/images/camera_headers.h"

#include "src/formats/camera/ciff.h"
#include "src/formats/camera/cr3.h"
#include "src/formats/camera/mrw.h"
#include "src/formats/camera/raf.h"
#include "src/formats/camera/x3f.h"
#include "src/formats/tiff/numbers.h"
#include "src/metadata/images/tiff_image.h"
#include "src/metadata/images/unsupported.h"

#include <algorithm>
#include <optional>

namespace vell::metadata {
namespace {

using namespace formats;

constexpr std::uint64_t usual_depth = 24;

ImageHeader header_of(std::uint64_t width, std::uint64_t height, std::string_view name,
                      std::string_view type) {
    ImageHeader header;
    header.width = width;
    header.height = height;
    header.depth = usual_depth;
    header.codec_name = name;
    header.codec_type = type;
    return header;
}

Read<ImageHeader> read_raf(Window file) {
    constexpr std::uint32_t most_values = 256;
    file.seek(raf::ListPlace::start);
    const auto place = VELL_TRY(file.read_record<raf::ListPlace>());
    Window list = file.part(place.offset, place.length);
    const auto count = VELL_TRY(list.read_integer<std::uint32_t>(ByteOrder::Big));
    for (std::uint32_t i = 0; i < std::min(count, most_values); ++i) {
        const auto value = VELL_TRY(list.read_record<raf::ValueHeader>());
        if (value.tag == raf::CroppedSize::tag) {
            const auto size = VELL_TRY(list.read_record<raf::CroppedSize>());
            return header_of(size.width, size.height, "Fujifilm raw", "raf ");
        }
        list.skip(value.value_size);
    }
    return fault(Damage::Absent);
}

Read<ImageHeader> read_ciff(const Window& file) {
    const auto read = VELL_TRY(ciff::File::read(file));
    const auto found =
        std::ranges::find(read.records, ciff::RecordType::ImageInformation, &ciff::Record::type);
    if (found == read.records.end())
        return fault(Damage::Absent);
    Window data = found->data;
    const auto image = VELL_TRY(data.read_record<ciff::ImageInformation>(read.order));
    return header_of(image.width, image.height, "Canon raw", "crw ");
}

// The directory of a photograph of Panasonic.
class PanasonicDirectory {
  public:
    static constexpr std::uint16_t number = 85;

    static Read<ImageHeader> read(const Window& file, const tiff::Start& start) {
        const auto directory =
            VELL_TRY(tiff::Directory::at(file, start.first_directory, start.layout));
        const PanasonicDirectory read(file, start.layout.order, VELL_TRY(directory.entries()));
        const std::int64_t width = read.value(right_border) - read.value(left_border);
        const std::int64_t height = read.value(bottom_border) - read.value(top_border);
        if (width <= 0 || height <= 0)
            return fault(Damage::Absent);
        ImageHeader header = header_of(static_cast<std::uint64_t>(width),
                                       static_cast<std::uint64_t>(height), "Panasonic raw", "rw2 ");
        if (const std::int64_t bits = read.value(bits_per_sample); bits > 0)
            header.depth = static_cast<std::uint64_t>(bits);
        return header;
    }

  private:
    static constexpr std::uint16_t top_border = 4;
    static constexpr std::uint16_t left_border = 5;
    static constexpr std::uint16_t bottom_border = 6;
    static constexpr std::uint16_t right_border = 7;
    static constexpr std::uint16_t bits_per_sample = 10;

    PanasonicDirectory(const Window& file, ByteOrder order, std::vector<tiff::Entry> entries)
        : file_(file), order_(order), entries_(std::move(entries)) {}

    // 0 where there is none.
    std::int64_t value(std::uint16_t tag) const {
        const auto found = std::ranges::find(entries_, tag, &tiff::Entry::tag);
        if (found == entries_.end())
            return 0;
        const auto numbers = tiff::read_numbers(file_, *found, order_, 1);
        return numbers && !numbers->empty() ? numbers->front() : 0;
    }

    Window file_;
    ByteOrder order_;
    std::vector<tiff::Entry> entries_;
};

Result<ImageHeader> or_unsupported(Result<ImageHeader> read) {
    const bool is_damage = !read && (read.error() == ErrorCode::CorruptStructure ||
                                     read.error() == ErrorCode::EndOfFile);
    if (is_damage)
        return Failure{ErrorCode::NotSupported};
    return read;
}

// Of tags that stand apart. What they say of samples is of a picture for the screen.
Result<ImageHeader> header_of_tags(const Window& tags, std::string_view name,
                                   std::string_view type) {
    ImageHeader header = VELL_TRY(or_unsupported(read_tiff_header(tags)));
    header.depth = usual_depth;
    header.image_count = 1;
    header.codec_name = name;
    header.codec_type = type;
    return header;
}

} // namespace

Result<ImageHeader> read_raf_header(Window file) {
    return unless_unsupported(read_raf(file));
}

Result<ImageHeader> read_ciff_header(Window file) {
    return unless_unsupported(read_ciff(file));
}

Result<ImageHeader> read_cr3_header(Window file) {
    return header_of_tags(VELL_TRY(unless_unsupported(cr3::find_tags(file))), "Canon raw", "CRAW");
}

Result<ImageHeader> read_mrw_header(Window file) {
    return header_of_tags(VELL_TRY(unless_unsupported(mrw::find_tags(file))), "Minolta raw",
                          "mrw ");
}

Result<ImageHeader> read_x3f_header(Window file) {
    file.seek(0);
    const auto header = VELL_TRY(unless_unsupported(file.read_record<x3f::Header>()));
    if (header.columns == 0 || header.rows == 0)
        return Failure{ErrorCode::NotSupported};
    return header_of(header.columns, header.rows, "Sigma raw", "x3f ");
}

Result<ImageHeader> read_tiff_like_header(Window file) {
    const auto start = VELL_TRY(unless_unsupported(tiff::Start::read(file)));
    if (start.magic == PanasonicDirectory::number)
        return unless_unsupported(PanasonicDirectory::read(file, start));
    ImageHeader header = VELL_TRY(or_unsupported(read_tiff_header(file)));
    if (!start.layout.is_big) {
        header.codec_name = "Camera raw";
        header.codec_type = "raw ";
    }
    return header;
}

} // namespace vell::metadata
