#include "src/pictures/inside/maker_notes.h"
#include "src/pictures/inside/raw_pictures.h"
#include "src/pictures/inside/tag_directory.h"

#include <array>
#include <set>
#include <string>
#include <string_view>

namespace vell::pictures {
namespace {

using namespace formats;
using namespace std::string_view_literals;

namespace tag {
constexpr std::uint16_t panasonic_picture = 46;
constexpr std::uint16_t subfile_type = 254;
constexpr std::uint16_t compression = 259;
constexpr std::uint16_t photometric = 262;
constexpr std::uint16_t strip_offsets = 273;
constexpr std::uint16_t orientation = 274;
constexpr std::uint16_t strip_lengths = 279;
constexpr std::uint16_t tile_offsets = 324;
constexpr std::uint16_t tile_lengths = 325;
constexpr std::uint16_t jpeg_tables = 347;
constexpr std::uint16_t jpeg_offset = 513;
constexpr std::uint16_t jpeg_length = 514;
constexpr std::uint16_t pattern_size = 33421; // of the colour filters (TIFF/EP, 7.1)
constexpr std::uint16_t leaf_data = 34310;
constexpr std::uint16_t dng_version = 50706;
} // namespace tag

constexpr std::uint16_t tiff_number = 42;
constexpr std::uint16_t big_tiff_number = 43;
constexpr std::uint16_t panasonic_number = 85;

// What only raw photographs have: compressions of their makers, and samples that are no colours of
// pixels yet (TIFF/EP, 5.2.6; DNG 1.7, "PhotometricInterpretation").
constexpr std::array<std::uint32_t, 8> raw_compressions{262,   32767, 32769, 32770,
                                                        32867, 34713, 65000, 65535};
constexpr std::array<std::uint32_t, 2> raw_photometrics{32803, 34892};
constexpr std::array<std::uint32_t, 2> jpeg_compressions{6, 7};

template <std::size_t count>
bool is_one_of(const std::array<std::uint32_t, count>& numbers, std::optional<std::uint32_t> one) {
    return one && std::ranges::find(numbers, *one) != numbers.end();
}

// Goes over the directories, each of them once.
class RawTiff {
  public:
    RawTiff(const Window& block, const tiff::Header& header)
        : block_(block), header_(header),
          is_raw_(header.magic != tiff_number), pending_{header.first_directory} {}

    Read<void> run(FoundPictures& found) {
        VELL_TRY(note_signature());
        while (!pending_.empty() && seen_.size() < most_directories) {
            const std::uint32_t offset = pending_.back();
            pending_.pop_back();
            if (offset != 0 && seen_.insert(offset).second)
                VELL_TRY(if_sound(read_directory(offset)));
        }
        if (!is_raw_)
            return {};
        for (const Candidate& each : candidates_)
            VELL_TRY(found.add(each.part, EmbeddedPicture::Kind::Preview,
                               of_file_ ? of_file_ : each.orientation));
        for (const TagDirectory& exif : with_notes_)
            VELL_TRY(if_sound(find_in_maker_note(exif, of_file_, found)));
        return {};
    }

  private:
    static constexpr std::size_t most_directories = 256;
    static constexpr std::size_t most_entries = 1U << 17U; // of all directories
    static constexpr std::size_t most_sub_directories = 64;
    static constexpr std::size_t most_notes = 4;

    struct Candidate {
        Window part;
        // Of its directory. The first one's counts more: it is the one that programs change.
        std::optional<Orientation> orientation;
    };

    // Behind the header: Canon's "CR", Phase One's header of its own.
    Read<void> note_signature() {
        Window start = block_.from(tiff::Header::size);
        const std::string bytes = VELL_TRY(start.read_bytes(4));
        is_raw_ |= bytes.starts_with("CR\2\0"sv) || bytes == "IIII" || bytes == "MMMM";
        return {};
    }

    Read<void> read_directory(std::uint32_t offset) {
        const auto directory = VELL_TRY(TagDirectory::at(block_, offset, header_.order));
        entries_ += directory.size();
        if (entries_ > most_entries)
            return {};
        pending_.push_back(directory.next());
        for (const std::uint16_t inner : {tiff::tag::exif_directory, tiff::tag::sub_directories})
            for (const std::uint32_t where :
                 VELL_TRY(directory.numbers(inner, most_sub_directories)))
                pending_.push_back(where);
        VELL_TRY(note_orientation(directory, offset == header_.first_directory));
        VELL_TRY(note_kind(directory));
        return note_pictures(directory);
    }

    Read<void> note_orientation(const TagDirectory& directory, bool is_first) {
        orientation_.reset();
        const auto number = VELL_TRY(directory.number(tag::orientation));
        if (number && *number >= 1 && *number <= 8)
            orientation_ = Orientation{static_cast<std::uint8_t>(*number)};
        if (is_first)
            of_file_ = orientation_;
        return {};
    }

    Read<void> note_kind(const TagDirectory& directory) {
        is_raw_ |= directory.has(tag::dng_version) || directory.has(tag::pattern_size) ||
                   directory.has(tag::leaf_data) ||
                   is_one_of(raw_photometrics, VELL_TRY(directory.number(tag::photometric))) ||
                   is_one_of(raw_compressions, VELL_TRY(directory.number(tag::compression)));
        if (directory.has(tiff::tag::maker_note) && with_notes_.size() < most_notes)
            with_notes_.push_back(directory);
        return {};
    }

    Read<void> note_pictures(const TagDirectory& directory) {
        if (const auto part = VELL_TRY(directory.part(tag::jpeg_offset, tag::jpeg_length)))
            candidates_.push_back({*part, orientation_});
        if (header_.magic == panasonic_number)
            if (const auto value = directory.value(tag::panasonic_picture))
                candidates_.push_back({*value, orientation_});
        // Of a picture that is coded in one piece, with its tables. Pages are not previews.
        constexpr std::uint32_t page = 2;
        const std::uint32_t subfile = VELL_TRY(directory.number(tag::subfile_type)).value_or(0);
        if (!is_one_of(jpeg_compressions, VELL_TRY(directory.number(tag::compression))) ||
            is_one_of(raw_photometrics, VELL_TRY(directory.number(tag::photometric))) ||
            directory.has(tag::jpeg_tables) || (subfile & page) != 0)
            return {};
        if (const auto strip = VELL_TRY(directory.part(tag::strip_offsets, tag::strip_lengths)))
            candidates_.push_back({*strip, orientation_});
        if (const auto tile = VELL_TRY(directory.part(tag::tile_offsets, tag::tile_lengths)))
            candidates_.push_back({*tile, orientation_});
        return {};
    }

    Window block_;
    tiff::Header header_;
    bool is_raw_;
    std::vector<std::uint32_t> pending_;
    std::set<std::uint32_t> seen_;
    std::size_t entries_ = 0;
    std::optional<Orientation> of_file_;
    std::optional<Orientation> orientation_; // of the directory that is read
    std::vector<Candidate> candidates_;
    std::vector<TagDirectory> with_notes_;
};

} // namespace

Read<void> find_in_tiff(const Window& block, FoundPictures& found) {
    Window start = block.from(0);
    const std::string bytes = VELL_TRY(start.read_bytes(tiff::Header::size));
    const auto header = tiff::Header::read(bytes);
    if (!header || header->magic == big_tiff_number)
        return {};
    return RawTiff(block, *header).run(found);
}

} // namespace vell::pictures
