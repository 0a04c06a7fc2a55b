// The first directory of a TIFF file, as far as it describes the image.
#include "src/metadata/ifd.h"
#include "src/metadata/image_headers.h"

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_set>

namespace vell::metadata {
namespace {

enum ImageTag : std::uint16_t {
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    SamplesPerPixel = 277,
    XResolution = 282,
    YResolution = 283,
    ResolutionUnit = 296,
};

// The fields of a directory, with the defaults of the standard.
struct ImageDirectory {
    std::optional<std::uint32_t> width;
    std::optional<std::uint32_t> length;
    std::uint32_t bits_per_sample = 1;
    std::uint32_t samples_per_pixel = 1;
    double x_resolution = 0;
    double y_resolution = 0;
    std::uint32_t resolution_unit = 2;

    Resolution resolution() const {
        switch (resolution_unit) {
        case 2:
            return per_inch(x_resolution, y_resolution, 1);
        case 3:
            return per_inch(x_resolution, y_resolution, centimetres_per_inch);
        default: // no unit: an aspect ratio
            return per_inch(0, 0, 1);
        }
    }
};

class DirectoryReader {
  public:
    DirectoryReader(files::BufferedReader& file, ByteOrder order) : file_(file), order_(order) {}

    Result<ImageDirectory> read(std::uint64_t offset) {
        file_.seek(offset);
        const auto count = VELL_TRY(file_.read_integer<std::uint16_t>(order_));
        ImageDirectory directory;
        for (std::uint64_t i = 0; i < count; ++i) {
            std::array<char, IfdEntry::size> bytes{};
            file_.seek(offset + sizeof count + i * bytes.size());
            if (!file_.read_exactly(bytes))
                break; // a directory that is cut off has what it has
            read_entry(IfdEntry::read({bytes.data(), bytes.size()}, order_), directory);
        }
        return directory;
    }

    // Directories of the chain, up to its end, to damage, or to one that was there before.
    std::uint64_t count_directories(std::uint32_t first) {
        constexpr std::size_t most = 65'535;
        std::unordered_set<std::uint32_t> seen;
        for (std::uint32_t offset = first; offset != 0 && seen.size() < most;) {
            file_.seek(offset);
            const auto count = file_.read_integer<std::uint16_t>(order_);
            if (!count || !seen.insert(offset).second)
                break;
            file_.skip(std::uint64_t{count.value()} * IfdEntry::size);
            const auto next = file_.read_integer<std::uint32_t>(order_);
            offset = next ? next.value() : 0;
        }
        return seen.size();
    }

  private:
    void read_entry(const IfdEntry& entry, ImageDirectory& directory) {
        switch (entry.tag) {
        case ImageWidth:
            directory.width = number(entry);
            break;
        case ImageLength:
            directory.length = number(entry);
            break;
        case BitsPerSample:
            directory.bits_per_sample = number(entry).value_or(1);
            break;
        case SamplesPerPixel:
            directory.samples_per_pixel = number(entry).value_or(1);
            break;
        case XResolution:
            directory.x_resolution = quotient(entry);
            break;
        case YResolution:
            directory.y_resolution = quotient(entry);
            break;
        case ResolutionUnit:
            directory.resolution_unit = number(entry).value_or(0);
            break;
        default:
            break;
        }
    }

    // At most the first eight bytes of the value.
    std::string value(const IfdEntry& entry) {
        if (entry.is_inline())
            return std::string(entry.inline_value());
        file_.seek(entry.offset(order_));
        auto bytes = file_.read_bytes(std::min<std::uint64_t>(entry.value_size(), 8));
        return bytes ? std::move(bytes).value() : std::string();
    }

    std::optional<std::uint32_t> number(const IfdEntry& entry) {
        const std::string bytes = value(entry);
        switch (entry.type) {
        case FieldType::Byte:
            return load<std::uint8_t>(bytes, 0, order_);
        case FieldType::Short:
            return load<std::uint16_t>(bytes, 0, order_);
        case FieldType::Long:
            return load<std::uint32_t>(bytes, 0, order_);
        default:
            return std::nullopt;
        }
    }

    double quotient(const IfdEntry& entry) {
        if (entry.type != FieldType::Rational)
            return number(entry).value_or(0);
        const std::string bytes = value(entry);
        const auto numerator = load<std::uint32_t>(bytes, 0, order_);
        const auto denominator = load<std::uint32_t>(bytes, 4, order_);
        return denominator && *denominator != 0 ? static_cast<double>(*numerator) / *denominator
                                                : 0;
    }

    files::BufferedReader& file_;
    ByteOrder order_;
};

} // namespace

Result<ImageHeader> read_tiff_header(files::BufferedReader& file) {
    file.seek(0);
    std::array<char, TiffHeader::size> bytes{};
    VELL_TRY(file.read_exactly(bytes));
    const auto tiff = TiffHeader::read({bytes.data(), bytes.size()});
    if (!tiff || tiff->first_directory < TiffHeader::size || tiff->first_directory >= file.size())
        return Failure{ErrorCode::CorruptStructure};
    DirectoryReader reader(file, tiff->order);
    const ImageDirectory directory = VELL_TRY(reader.read(tiff->first_directory));
    if (!directory.width || !directory.length)
        return Failure{ErrorCode::CorruptStructure};
    ImageHeader header;
    header.width = *directory.width;
    header.height = *directory.length;
    header.depth = std::uint64_t{directory.bits_per_sample} * directory.samples_per_pixel;
    header.set_resolution(directory.resolution());
    header.image_count = reader.count_directories(tiff->first_directory);
    return header;
}

Resolution resolution_of(std::string_view tags) {
    const auto tiff = TiffHeader::read(tags);
    const auto block = files::memory_file(std::string(tags));
    auto file = files::BufferedReader::over(*block);
    if (!tiff || !file)
        return per_inch(0, 0, 1);
    const auto directory = DirectoryReader(file.value(), tiff->order).read(tiff->first_directory);
    return directory ? directory.value().resolution() : per_inch(0, 0, 1);
}

} // namespace vell::metadata
