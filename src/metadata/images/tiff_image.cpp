#include "src/metadata/images/tiff_image.h"

#include "src/formats/tiff/directory.h"
#include "src/metadata/faults.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace vell::metadata {
namespace {

namespace tiff = formats::tiff;
using tiff::FieldType;

enum ImageTag : std::uint16_t {
    NewSubfileType = 254,
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    SamplesPerPixel = 277,
    XResolution = 282,
    YResolution = 283,
    ResolutionUnit = 296,
};
constexpr std::array<std::uint16_t, 9> image_tags{
    NewSubfileType, ImageWidth,      ImageLength,
    BitsPerSample,  SamplesPerPixel, XResolution,
    YResolution,    ResolutionUnit,  tiff::tag::sub_directories};

// Directories that are looked at in search of the image; real files have a handful.
constexpr std::size_t most_directories = 100;

struct ResolutionFields {
    double x = 0;
    double y = 0;
    std::uint32_t unit = 2;

    bool is_empty() const { return x == 0 && y == 0; }
    Resolution per_inch() const {
        switch (unit) {
        case 2:
            return metadata::per_inch(x, y, 1);
        case 3:
            return metadata::per_inch(x, y, centimetres_per_inch);
        default: // no unit: an aspect ratio
            return metadata::per_inch(0, 0, 1);
        }
    }
};

// The fields of a directory, with the defaults of the standard.
struct ImageDirectory {
    std::uint32_t subfile_type = 0;
    std::optional<std::uint32_t> width;
    std::optional<std::uint32_t> length;
    std::uint32_t bits_per_sample = 1;
    std::uint32_t samples_per_pixel = 1;
    ResolutionFields resolution;
    std::vector<std::uint64_t> leads_to; // the directories below it, then the one behind it

    bool has_size() const { return width && length; }
    bool is_whole_image() const { return has_size() && subfile_type == 0; }
    // A smaller version of another image of the file.
    bool is_reduced() const { return (subfile_type & 1) != 0; }
};

class DirectoryReader {
  public:
    DirectoryReader(const formats::Window& file, tiff::Layout layout)
        : file_(file), layout_(layout), order_(layout.order) {}

    Result<ImageDirectory> read(std::uint64_t offset) {
        const auto found = VELL_TRY(coded(tiff::Directory::at(file_, offset, layout_)));
        std::map<std::uint16_t, tiff::Entry> entries; // of those with one tag the last counts
        if (const auto all = found.entries())         // a directory that is cut off has what it has
            for (const tiff::Entry& entry : *all)
                if (std::ranges::find(image_tags, entry.tag) != image_tags.end())
                    entries[entry.tag] = entry;
        ImageDirectory directory;
        for (const auto& [tag, entry] : entries)
            read_entry(entry, directory);
        if (const auto next = found.next())
            directory.leads_to.push_back(*next);
        return directory;
    }

    // The first directory, unless it has no size or is a smaller version of another, as in raw
    // photographs, which begin with a thumbnail. Then the first image of full resolution below it
    // or behind it counts, if there is one; its resolution is that of the first directory unless it
    // has its own.
    Result<ImageDirectory> find_image(std::uint64_t first) {
        const ImageDirectory front = VELL_TRY(read(first));
        if (front.has_size() && !front.is_reduced())
            return front;
        std::vector<std::uint64_t> offsets{first}; // each once, so that loops end
        for (std::size_t i = 0; i < offsets.size(); ++i) {
            const Result<ImageDirectory> found = read(offsets[i]);
            if (!found && found.error() == ErrorCode::EndOfFile)
                continue;
            ImageDirectory image = VELL_TRY(found);
            if (image.is_whole_image()) {
                if (image.resolution.is_empty())
                    image.resolution = front.resolution;
                return image;
            }
            for (const std::uint64_t offset : image.leads_to)
                if (offset != 0 && offsets.size() < most_directories &&
                    std::ranges::find(offsets, offset) == offsets.end())
                    offsets.push_back(offset);
        }
        return front;
    }

    // Directories of the chain, up to its end, to damage, or to one that was there before.
    std::uint64_t count_directories(std::uint64_t first) {
        constexpr std::size_t most = 65'535;
        std::unordered_set<std::uint64_t> seen;
        for (std::uint64_t offset = first; offset != 0 && seen.size() < most;) {
            const auto directory = tiff::Directory::at(file_, offset, layout_);
            if (!directory || !seen.insert(offset).second)
                break;
            const auto next = directory->next();
            offset = next ? *next : 0;
        }
        return seen.size();
    }

  private:
    void read_entry(const tiff::Entry& entry, ImageDirectory& directory) {
        switch (entry.tag) {
        case NewSubfileType:
            directory.subfile_type = number(entry).value_or(0);
            break;
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
            directory.resolution.x = quotient(entry);
            break;
        case YResolution:
            directory.resolution.y = quotient(entry);
            break;
        case ResolutionUnit:
            directory.resolution.unit = number(entry).value_or(0);
            break;
        case tiff::tag::sub_directories:
            directory.leads_to = offsets(entry);
            break;
        default:
            break;
        }
    }

    // At most the first `most` bytes of the value.
    std::string value(const tiff::Entry& entry, std::uint64_t most = 8) {
        auto bytes = tiff::read_value(file_, entry, order_, most);
        return bytes ? std::move(bytes).value() : std::string();
    }

    std::optional<std::uint32_t> number(const tiff::Entry& entry) {
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

    double quotient(const tiff::Entry& entry) {
        if (entry.type != FieldType::Rational)
            return number(entry).value_or(0);
        const std::string bytes = value(entry);
        const auto numerator = load<std::uint32_t>(bytes, 0, order_);
        const auto denominator = load<std::uint32_t>(bytes, 4, order_);
        return denominator && *denominator != 0 ? static_cast<double>(*numerator) / *denominator
                                                : 0;
    }

    std::vector<std::uint64_t> offsets(tiff::Entry entry) {
        std::vector<std::uint64_t> numbers;
        if (entry.big_place != 0 && tiff::has_eight_bytes(entry.type)) {
            const std::string bytes = value(entry, most_directories * sizeof(std::uint64_t));
            while (const auto number = load<std::uint64_t>(bytes, numbers.size() * 8, order_))
                numbers.push_back(*number);
            return numbers;
        }
        if (entry.type == tiff::ifd_offset)
            entry.type = FieldType::Long;
        if (entry.type != FieldType::Long)
            return numbers;
        if (entry.big_place != 0 && entry.is_inline())
            return {entry.big_place};
        const std::string bytes = value(entry, most_directories * sizeof(std::uint32_t));
        while (const auto number = load<std::uint32_t>(bytes, numbers.size() * 4, order_))
            numbers.push_back(*number);
        return numbers;
    }

    formats::Window file_;
    tiff::Layout layout_;
    ByteOrder order_;
};

} // namespace

Result<ImageHeader> read_tiff_header(formats::Window file) {
    if (file.size() < tiff::Header::size)
        return Failure{ErrorCode::EndOfFile};
    const auto tags = tiff::Start::read(file);
    if (!tags && tags.error().damage == formats::Damage::Unreadable)
        return Failure{tags.error().of_source};
    if (!tags || tags->first_directory < tiff::Header::size || tags->first_directory >= file.size())
        return Failure{ErrorCode::CorruptStructure};
    DirectoryReader reader(file, tags->layout);
    const ImageDirectory image = VELL_TRY(reader.find_image(tags->first_directory));
    if (!image.has_size())
        return Failure{ErrorCode::CorruptStructure};
    ImageHeader header;
    header.width = *image.width;
    header.height = *image.length;
    header.depth = std::uint64_t{image.bits_per_sample} * image.samples_per_pixel;
    header.set_resolution(image.resolution.per_inch());
    header.image_count = reader.count_directories(tags->first_directory);
    return header;
}

Resolution resolution_of(std::string_view tags) {
    BytesInMemory bytes(tags);
    const auto start = tiff::Start::read(formats::Window(bytes));
    if (!start)
        return ResolutionFields().per_inch();
    const auto front =
        DirectoryReader(formats::Window(bytes), start->layout).read(start->first_directory);
    return front ? front->resolution.per_inch() : ResolutionFields().per_inch();
}

} // namespace vell::metadata
